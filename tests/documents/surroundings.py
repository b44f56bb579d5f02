"""What a reader of a document has before the first line, and how the values of this machine are shown
in it."""
import os
import re
import shutil
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
NOT_RUN = Path(__file__).resolve().parent / "not_run.txt"
MODULES = ("opensc-pkcs11", "p11-kit-trust", "softhsm2")
FOLDED = 80  # the documents fold lines that are longer
# The programs of the documents have no warnings, whatever options a document shows.
WARNINGS = "-Wall -Wextra -Wpedantic -Werror"


def first_line(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.split("\n")[0]


class Surroundings:
    """What a reader has after scripts/demo, in a home of our own: the software token and its variables.
    With ZRKEY_INSTALLED also the archive of that folder, unpacked nowhere, and the folder as ~/.local."""

    def __init__(self, zrkey, folder):
        self.folder = folder
        self.home = folder / "home"
        programs = folder / "programs"
        for made in (self.home, programs):
            shutil.rmtree(made, ignore_errors=True)
            made.mkdir(parents=True)
        (programs / "zrkey").symlink_to(zrkey)
        (self.home / "zrkey").symlink_to(ROOT)
        self._hide_modules()
        for compiler in ("g++", "c++", "gcc", "cc"):
            self._wrap_compiler(programs / compiler)
        if installed := os.environ.get("ZRKEY_INSTALLED"):
            (self.home / ".local").symlink_to(installed)
            archive = Path(f"{installed}.tar.gz")
            (self.home / archive.name).symlink_to(archive)
        if instant := os.environ.get("ZRKEY_INSTANT_MODULE"):
            shutil.copy(instant, self.home / "instant_module.so")
        kept = {name: value for name, value in os.environ.items()
                if name == "SOFTHSM2_CONF" or "SAN_OPTIONS" in name}
        self.module = first_line("find", "/usr/lib", "-name", "libsofthsm2.so", "-print", "-quit")
        self.environment = {
            **kept, "PATH": f"{programs}:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin",
            "HOME": str(self.home), "USER": "me", "LANG": "C.UTF-8", "TERM": "dumb",
            "ZRKEY_MODULE": self.module,
            # No reader of this machine is used.
            "PCSCLITE_CSOCK_NAME": str(folder / "missing")}
        self._shown_instead = [(str(self.home), "/home/me"), (str(ROOT), "/home/me/zrkey"),
                               (self.module, "/usr/lib/softhsm/libsofthsm2.so"),
                               *values_of_token(folder)]

    def _hide_modules(self):
        """Of p11-kit's modules the command sees those that the packages of scripts/demo bring."""
        folder = self.home / ".config" / "pkcs11" / "modules"
        folder.mkdir(parents=True)
        for module in Path("/usr/share/p11-kit/modules").glob("*.module"):
            if module.stem not in MODULES:
                (folder / module.name).write_text("disable-in: zrkey\n", encoding="utf-8")

    @staticmethod
    def _wrap_compiler(program):
        """A compiler that refuses warnings and, where the library is built so, adds sanitizers."""
        options = os.environ.get("ZRKEY_COMPILER_OPTIONS", "")
        program.write_text(f'#!/bin/sh\nexec /usr/bin/{program.name} {WARNINGS} {options} "$@"\n')
        program.chmod(0o755)

    def show(self, real, documented):
        """From now on, shows a value of this machine as the documents do."""
        self._shown_instead.insert(0, (real, documented))

    def as_documented(self, text):
        # A document may make a token of its own.
        for real, documented in [*self._shown_instead, *values_of_token(self.home)]:
            text = text.replace(real, documented)
        return text


def values_of_token(folder):
    """The numbers of the tokens in a folder, and what is by chance in its certificate, each with what
    the documents show instead."""
    for token in (folder / "tokens").glob("*-*-*-*-*"):
        serial = token.name.replace("-", "")[-16:]
        yield serial, "a18c6cdfa9df94ba"
        yield f"slot {int(serial[-8:], 16) & 0x7FFFFFFF}", "slot 702518458"
    certificate = folder / "certificate.pem"
    if certificate.exists():
        facts = subprocess.run(["openssl", "x509", "-in", certificate, "-noout", "-serial",
                                "-dates", "-dateopt", "iso_8601"],
                               capture_output=True, text=True, check=True).stdout
        serial = re.search(r"serial=(\w+)", facts)[1]
        yield serial, "59D5E8A1C3B4F6072918"
        yield serial.lower(), "59d5e8a1c3b4f6072918"
        yield "T".join(re.search(r"notBefore=(\S+) (\S+)Z", facts).groups()), "2025-05-04T12:00:00"
        day, clock = re.search(r"notAfter=(\S+) (\S+)Z", facts).groups()
        yield f"{day}T{clock}", "2035-05-04T12:00:00"
        yield f"{day} {clock}", "2035-05-04 12:00:00"
        yield day, "2035-05-04"


def is_as_shown(lines, shown):
    """Whether the lines of an output are those that the document shows, where a long line is folded
    at a blank."""
    rest = [line.rstrip() for line in shown]
    for line in (line.rstrip() for line in lines):
        if not rest:
            return False
        joined = rest.pop(0)
        while len(line) > FOLDED and joined != line and rest:
            joined += " " + rest.pop(0)
        if joined != line:
            return False
    return not rest


class Report:
    """The problems of one document."""

    def __init__(self, document):
        self.document = document
        self.problems = 0
        self.commands = 0

    def complain(self, line, text):
        self.problems += 1
        print(f"{self.document}:{line}: {text}")

    def compare(self, command, output, status):
        """Whether a command shows and ends with what the document says."""
        self.commands += 1
        lines = output.split("\n")
        while lines and not lines[-1]:
            lines.pop()
        if not is_as_shown(lines, command.shown):
            self.complain(command.line, f"{command.text}\n--- the document shows\n"
                          + "\n".join(command.shown) + "\n--- the terminal shows\n" + output)
        expected = command.exit_code
        if expected is None and not command.shown:
            expected = 0
        if expected not in (None, status):
            self.complain(command.line, f"{command.text}\nends with {status}, not {expected}")
