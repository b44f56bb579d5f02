// A screen without a monitor, and hands at its keyboard.
import { execFileSync, spawn } from "node:child_process";
import { createHash } from "node:crypto";
import fs from "node:fs";
import { until } from "./wait.mjs";

export class Screen {
  #server;
  #picture;

  /// @param folder  where the picture on the screen is kept
  static async open(folder) {
    const screen = new Screen();
    fs.mkdirSync(folder);
    screen.#picture = `${folder}/Xvfb_screen0`;
    screen.#server = spawn("Xvfb",
      ["-displayfd", "3", "-screen", "0", "1280x900x24", "-nolisten", "tcp", "-noreset", "-fbdir", folder],
      { stdio: ["ignore", "ignore", "ignore", "pipe"] });
    process.once("exit", () => screen.#server.kill("SIGKILL"));
    const number = await new Promise((resolve, reject) => {
      screen.#server.once("exit", () => reject(new Error("Xvfb has ended")));
      screen.#server.stdio[3].once("data", resolve);
    });
    screen.display = `:${String(number).trim()}`;
    return screen;
  }

  /// Presses keys, by their names for xdotool.
  press(...keys) {
    execFileSync("xdotool", ["key", ...keys], { env: { ...process.env, DISPLAY: this.display } });
  }

  /// Something that is different when the picture on the screen is.
  look() {
    return createHash("sha1").update(fs.readFileSync(this.#picture)).digest("hex");
  }

  /// Waits until the screen shows something else than before, and has stayed as it is for a while.
  async settle(before) {
    let [seen, since] = [before, Date.now()];
    await until("a screen that has settled", () => {
      const now = this.look();
      if (now !== seen) [seen, since] = [now, Date.now()];
      return seen !== before && Date.now() - since > 700;
    });
  }

  close() {
    this.#server.kill();
  }
}
