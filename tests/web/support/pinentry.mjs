// The person at the prompts: tests/host/browser/linux/scripted_pinentry.cpp, which says what its files
// mean.
import fs from "node:fs";

export class Pinentry {
  /// @param program  the program
  /// @param path     where a link to it is made, with its files beside it
  constructor(program, path) {
    this.path = path;
    fs.symlinkSync(program, path);
    this.reset();
  }

  /// Forgets the questions; further prompts have no display.
  reset() {
    fs.rmSync(`${this.path}.asked`, { force: true });
    this.answer();
  }

  /// What the next prompts are answered: {pin: "1234"}, "yes", "cancel", or "wait" for a person who
  /// does nothing.
  answer(...answers) {
    const lines = answers.map((answer) => (answer.pin ? `pin ${answer.pin}` : answer));
    fs.rmSync(`${this.path}.next`, { force: true });
    fs.writeFileSync(`${this.path}.script`, [...lines, "no-display", ""].join("\n"));
  }

  /// The text of each prompt so far.
  questions() {
    const questions = [];
    let text = "";
    for (const line of this.#asked()) {
      const [command, ...rest] = line.split(" ");
      if (command === "SETDESC") text = decodeURIComponent(rest.join(" "));
      if (command === "GETPIN" || command === "CONFIRM") questions.push(text);
    }
    return questions;
  }

  /// Whether a prompt is shown now.
  isOpen() {
    const lines = this.#asked();
    const last = lines.at(-1)?.split(" ")[0];
    const process = lines.filter((line) => line.startsWith("START ")).at(-1)?.slice(6);
    return (last === "GETPIN" || last === "CONFIRM") && isAlive(process);
  }

  #asked() {
    const file = `${this.path}.asked`;
    return fs.existsSync(file) ? fs.readFileSync(file, "utf8").split("\n").filter(Boolean) : [];
  }
}

/// Whether a process runs; one that only waits for its parent does not.
export function isAlive(process) {
  try {
    return !/^State:\s+[ZX]/m.test(fs.readFileSync(`/proc/${process}/status`, "utf8"));
  } catch {
    return false;
  }
}
