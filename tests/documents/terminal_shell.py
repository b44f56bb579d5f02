"""A shell on a terminal of its own, which runs one command after the other."""
import os
import pty
import select
import signal
import sys
import time

# The commands come through a descriptor of their own, so that the terminal carries only what a
# person types at prompts and sees.
LOOP = r"""
trap : INT
status=0
while IFS= read -r -d '' command <&9; do
    (exit $status)
    eval "$command" 9<&-
    status=$?
    printf '\001%d\002' $status
done
"""
PROMPT_ENDS = (": ", "? ", "] ")
CONTROL_KEYS = {"^C": b"\x03", "^D": b"\x04"}


class NoEnd(Exception):
    """A command does not end; its text is what it has written."""


class TerminalShell:
    def __init__(self, folder, environment, seconds=120):
        self._seconds = seconds
        reading, self._commands = os.pipe()
        try:
            self._process, self._terminal = pty.fork()
        except OSError:
            # As in a bare root folder; ctest reports the test as skipped.
            sys.exit("no pseudo-terminals here")
        if self._process == 0:
            os.dup2(reading, 9)
            os.chdir(folder)
            os.execve("/bin/bash", ["bash", "--norc", "-c", LOOP], environment)
        os.close(reading)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self._commands)
        os.close(self._terminal)
        # Also what the commands left running: they hang on this terminal.
        try:
            os.killpg(self._process, signal.SIGHUP)
        except ProcessLookupError:
            pass
        os.waitpid(self._process, 0)

    def run(self, command, answers):
        """Runs a command and types an answer, the first of the list, at each prompt.
        @return what the terminal shows, and the exit code."""
        os.write(self._commands, command.encode() + b"\0")
        shown = b""
        end = time.monotonic() + self._seconds
        while not shown.endswith(b"\2"):
            if not select.select([self._terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise NoEnd(self._text(shown))
            shown += os.read(self._terminal, 65536)
            if answers and shown.decode(errors="replace").endswith(PROMPT_ENDS):
                answer = answers.pop(0)
                os.write(self._terminal, CONTROL_KEYS.get(answer, answer.encode() + b"\n"))
        text, status = shown[:-1].rsplit(b"\1", 1)
        return self._text(text), int(status)

    @staticmethod
    def _text(shown):
        return shown.decode(errors="replace").replace("\r\n", "\n")
