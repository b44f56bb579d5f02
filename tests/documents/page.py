"""The blocks of a document that a reader types or saves: see "Documents that run" in
tests/README.md."""
import re
from dataclasses import dataclass, field

COMMENT = re.compile(r"<!-- (not run|typed|second terminal): (.*) -->")
MESSAGE = re.compile(r"### `(.*)`")
FILE_NAME = re.compile(r"`([\w./-]+\.(?:cpp|c|html|js|vbs|xml|txt|conf|module))`[^`]*:$")
EXIT_CODE = re.compile(r"\(exit code (\d+)\)")


@dataclass
class Command:
    line: int
    text: str
    shown: list = field(default_factory=list)  # the lines of output
    exit_code: int | None = None  # when the document shows it


@dataclass
class Block:
    line: int
    lines: list
    before: str  # the last line of text before it
    comments: dict
    message: str | None  # the one in the heading of the section

    @property
    def not_run(self):
        return self.comments.get("not run")

    @property
    def typed(self):
        """What is typed at the prompts of the block."""
        answers = self.comments.get("typed")
        return answers.split(", ") if answers else []

    @property
    def file_name(self):
        match = FILE_NAME.search(self.before)
        return match[1] if match and not self.is_shell and not self.is_windows else None

    @property
    def is_shell(self):
        return self.lines[0].startswith("$ ")

    @property
    def is_windows(self):
        """Whether the lines are typed at the command prompt of Windows."""
        return self.lines[0].startswith("> ")

    def commands(self):
        found = []
        prompt = self.lines[0][:2]
        for number, text in enumerate(self.lines, self.line):
            if text.startswith(prompt):
                found.append(Command(number, text[2:]))
            elif text.startswith("> ") and not found[-1].shown:
                found[-1].text += "\n" + text[2:]
            elif match := EXIT_CODE.fullmatch(text):
                found[-1].exit_code = int(match[1])
            else:
                found[-1].shown.append(text)
        for command in found:
            while command.shown and not command.shown[-1]:
                command.shown.pop()
        return found


def blocks(text):
    """The indented and fenced blocks of a page, in their order."""
    found = []
    before, comments, message = "", {}, None
    current, fenced = None, False

    def block(number):
        nonlocal comments
        found.append(Block(number, [], before, comments, message))
        comments = {}
        return found[-1]

    for number, line in enumerate(text.splitlines(), 1):
        indented = line.startswith("    ")
        if line.startswith("```"):
            fenced = not fenced
            current = block(number + 1) if fenced else None
        elif fenced:
            current.lines.append(line)
        elif indented:
            current = current or block(number)
            current.lines.append(line[4:])
        elif not line.strip():
            if current:
                current.lines.append("")
        elif match := COMMENT.fullmatch(line):
            current = None
            comments[match[1]] = match[2]
        else:
            current = None
            before = line
            if line.startswith("#"):
                heading = MESSAGE.fullmatch(line)
                message = heading[1] if heading else None
    for one in found:
        while one.lines and not one.lines[-1]:
            one.lines.pop()
    return [one for one in found if one.lines]
