"""The other machine of docs/tokens.md: a token, and a server of ssh on this machine's loopback address
with keys, configuration and port of its own. In the page it is token-host, and its user's home folder
is /home/holder."""
import contextlib
import os
import pty
import re
import select
import signal
import socket
import subprocess
import time
from pathlib import Path

from surroundings import values_of_token

ROOT = Path(__file__).resolve().parent.parent.parent
SHOWN_HOME = "/home/holder"
SERVER_ID = re.compile(r"(P11_KIT_SERVER_PID=)\d+")
SECONDS = 20  # until something is taken for hanging


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def write(path, *lines):
    path.write_text("".join(f"{line}\n" for line in lines), encoding="utf-8")


class SecondTerminal:
    """A command on a terminal of its own."""

    def __init__(self, command, folder, environment):
        self.process, self._terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execve("/bin/bash", ["bash", "--norc", "-c", "exec " + command], environment)
        self._is_over = False

    def read(self, count):
        """Its first lines."""
        shown, end = b"", time.monotonic() + SECONDS
        while shown.count(b"\n") < count:
            if not select.select([self._terminal], [], [], max(0, end - time.monotonic()))[0]:
                break
            try:
                shown += os.read(self._terminal, 4096)
            except OSError:  # the command is over
                break
        return shown.decode(errors="replace").replace("\r\n", "\n")

    def interrupt(self):
        os.write(self._terminal, b"\x03")
        return self._ends()

    def kill(self):
        if not self._is_over:
            os.kill(self.process, signal.SIGKILL)
            self._ends()

    def _ends(self):
        end = time.monotonic() + SECONDS
        while time.monotonic() < end and not self._is_over:
            self._is_over = os.waitpid(self.process, os.WNOHANG)[0] != 0
            time.sleep(0.02)
        return self._is_over


class OtherMachine:
    def __init__(self, folder, surroundings):
        self.home = folder / "there"
        self.home.mkdir()
        self.surroundings = surroundings
        token = subprocess.run([ROOT / "scripts/softtoken", folder / "token"], check=True,
                               capture_output=True, text=True).stdout.strip()
        for real, documented in values_of_token(folder / "token"):
            surroundings.show(real, documented)
        surroundings.show(str(self.home), SHOWN_HOME)
        self._terminal = None
        self._command = None
        self._server = self._start_server(folder / "ssh", token)
        # The one place that knows which host token-host is.
        program = folder / "programs" / "ssh"
        write(program, "#!/bin/sh", f"exec /usr/bin/ssh -F '{folder}/ssh/config' \"$@\"")
        program.chmod(0o755)

    def _start_server(self, folder, token):
        folder.mkdir(mode=0o700)
        port = free_port()
        for name in ("host", "user"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / name],
                           check=True)
        write(folder / "known_hosts",
              f"[127.0.0.1]:{port} " + (folder / "host.pub").read_text(encoding="utf-8").strip())
        write(folder / "config", "Host token-host", "HostName 127.0.0.1", f"Port {port}",
              f"IdentityFile {folder}/user", "IdentitiesOnly yes", "BatchMode yes",
              f"UserKnownHostsFile {folder}/known_hosts", "LogLevel ERROR")
        write(folder / "server", "ListenAddress 127.0.0.1", f"Port {port}",
              f"HostKey {folder}/host", f"AuthorizedKeysFile {folder}/user.pub", "PidFile none",
              "UsePAM no", "StrictModes no", "PasswordAuthentication no",
              f"SetEnv HOME={self.home} SOFTHSM2_CONF={token}")
        log = (folder / "log").open("w", encoding="utf-8")
        server = subprocess.Popen(["/usr/sbin/sshd", "-D", "-e", "-f", folder / "server"],
                                  stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        end = time.monotonic() + SECONDS
        while time.monotonic() < end and server.poll() is None:
            try:
                socket.create_connection(("127.0.0.1", port), 1).close()
                return server
            except OSError:
                time.sleep(0.02)
        raise SystemExit("sshd does not start: " + (folder / "log").read_text(encoding="utf-8"))

    def stop(self):
        if self._terminal:
            self._terminal.kill()
        self._server.terminate()
        self._server.wait()

    def follow(self, block, follower):
        role = block.comments.get("second terminal")
        block.lines = [line.replace(SHOWN_HOME, str(self.home)) if line.startswith(("$ ", "> ")) else line
                       for line in block.lines]
        if role == "^C":
            if not self._terminal.interrupt():
                follower.complain(block.line, "Ctrl-C does not end the command")
        elif role:
            command = block.commands()[0]
            follower.commands += 1
            self._command = command.text
            shown = self.surroundings.as_documented(self.connect(len(command.shown)))
            shown = SERVER_ID.sub(r"\g<1>4711", shown).split("\n")
            if shown[:len(command.shown)] != command.shown:
                follower.complain(block.line, f"the second terminal shows\n{shown}")
            return
        follower.follow(block)

    def connect(self, lines=2):
        self._terminal = SecondTerminal(self._command, self.surroundings.home,
                                        self.surroundings.environment)
        return self._terminal.read(lines)

    def cut(self):
        """Ends the connection without a word to the programs at its ends."""
        self._terminal.kill()

    def is_server_gone(self):
        """Whether the server of the token ends, as after a broken connection it should."""
        end = time.monotonic() + SECONDS
        while time.monotonic() < end:
            with socket.socket(socket.AF_UNIX) as probe:
                if probe.connect_ex(str(self.home / "token.sock")) != 0:
                    return True
            time.sleep(0.02)
        return False


def start(program, *arguments, environment):
    return subprocess.Popen([str(program), *arguments], env=environment, text=True,
                            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def end_of(process, last_words):
    """The exit code and all output; a process that hangs gives none."""
    try:
        output, errors = process.communicate(last_words, timeout=SECONDS)
    except subprocess.TimeoutExpired:
        process.kill()
        process.communicate()
        return None, "it does not end"
    return process.returncode, output + errors


def break_connection(other, follower, text, try_module):
    """The connection breaks in the middle of a signature, and before the call of a host."""
    home = other.surroundings.home
    environment = {**other.surroundings.environment, "PIN": "1234",
                   "P11_KIT_SERVER_ADDRESS": f"unix:path={home}/token.sock"}
    client = "/usr/lib/x86_64-linux-gnu/pkcs11/p11-kit-client.so"
    os.chdir(home)

    other.connect()
    signing = start(home.parent / "programs" / "zrkey", "sign", "--algorithm", "rsa-sha256", "-o",
                    "cut.sig", "--pin", "env:PIN", "--module", client, environment=environment)
    with contextlib.suppress(BrokenPipeError):
        signing.stdin.write("a letter" * 200000)  # more than a pipe holds: it is being signed
    other.cut()
    status, message = end_of(signing, "a letter" * 20000)
    if status != 1 or " ".join(message.split()) not in " ".join(text.split()):
        follower.complain(0, f"zrkey sign ends with {status} and the page lacks: {message}")
    if Path("cut.sig").exists():
        follower.complain(0, "a signature is written")
    if not other.is_server_gone():
        follower.complain(0, "the server on the other machine goes on")

    for options, expected in ((["ignore-sigpipe"], (0, "E_FAIL (0x80004005)\n")),
                              ([], (-signal.SIGPIPE, ""))):
        other.connect()
        host = start(try_module, client, "wait", *options, environment=environment)
        if host.stdout.readline() != "ready\n":
            follower.complain(0, f"the host does not start: {end_of(host, '')}")
            continue
        other.cut()
        found = end_of(host, "go on\n")
        if found != expected:
            follower.complain(0, f"a host {options} gets {found}, not {expected}")
