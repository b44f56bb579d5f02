"""The rows of the table in their order: what they are called, and which result is wanted. What the
floor of a row does stands beside its code, in the programs that measure it."""
from typing import NamedTuple, Optional


class Row(NamedTuple):
    id: str  # "instant/sign"; a row of Windows begins with "windows/"
    title: str
    wanted: Optional[float] = None


SECTIONS = [
    ("A real token: SoftHSM2, RSA of 2,048 bits, 32 certificates", [
        Row("token/sign", "SoftHSM2: SignData"),
        Row("token/verify", "SoftHSM2: VerifyData"),
        Row("token/enumerate", "SoftHSM2: EnumContainer"),
        Row("token/file", "SoftHSM2: OpenFile and Read"),
        Row("token/load", "SoftHSM2: Load and Unload"),
    ]),
    ("A module that answers at once", [
        Row("instant/sign", "SignData, added", 120),
        Row("instant/verify", "VerifyData, added", 80),
        Row("instant/enumerate", "EnumContainer, 2,048 certificates", 1.35),
        Row("instant/growth", "EnumContainer, 16,384 certificates to 2,048", 8.1),
        Row("instant/growth-floor", "the same growth of the bare calls"),
        Row("instant/memory", "EnumContainer, 16,385, peak memory", 1.3),
        Row("instant/file", "OpenFile and Read, added"),
        Row("instant/load", "Load and Unload"),
    ]),
    ("MD5", [
        Row("digest/md5-1MiB", "MD5, 1 MiB", 1.0),
        Row("digest/md5-64", "MD5, 64 bytes", 1.0),
        Row("digest/md5-64-evp", "MD5, 64 bytes, to EVP"),
        Row("digest/data-64", "DigestData, 64 bytes", 1.15),
    ]),
    ("Text", [
        Row("text/ascii", "UTF-8 to UTF-16, 4,096 ASCII characters", 483),
        Row("text/ascii-utfcpp", "UTF-8 to UTF-16, the same, to utfcpp"),
        Row("text/cjk", "UTF-16 to UTF-8, 4,096 CJK characters", 1.0),
        Row("text/bstr-cjk", "ZSysAllocUTF8String, 4,096 CJK characters", 1.1),
        Row("text/bstr-label", "ZSysAllocUTF8String, 32 ASCII characters"),
    ]),
    ("Log lines", [
        Row("log/off", "a log line, logging off"),
        Row("log/on", "a log line, logging on"),
    ]),
    ("Calls by name, console lines to a file", [
        Row("dispatch/name", "GetIDsOfNames", 1.15),
        Row("dispatch/missing-name", "GetIDsOfNames, a name that is missing"),
        Row("dispatch/call", "Invoke, a member with a text as result", 1.30),
        Row("dispatch/call-texts", "Invoke, a member with two texts"),
    ]),
    ("The command, on SoftHSM2", [
        Row("command/sign-32", "`zrkey sign`, 32 certificates"),
        Row("command/sign-256", "`zrkey sign`, 256 certificates", 1.0),
        Row("command/sign-2048", "`zrkey sign`, 2,048 certificates", 1.0),
        Row("command/digest", "`zrkey digest`, 256 MiB", 1.1),
        Row("command/digest-memory", "`zrkey digest`, 256 MiB, peak memory", 8),
        Row("command/help", "`zrkey --help`", 1e6),
        Row("command/help-libraries", "`zrkey --help`, to loading its libraries"),
    ]),
    ("Windows programs under Wine", [
        Row("windows/instant/sign", "SignData, added"),
        Row("windows/instant/enumerate-lookups", "EnumContainer, 2,048 certificates", 1.05),
        Row("windows/dispatch/name-and-call", "GetIDsOfNames and Invoke"),
        Row("windows/dispatch/name-and-call-without-lines", "GetIDsOfNames and Invoke, lines left out", 0.15),
    ]),
    ("A web page", [
        Row("web/message", "a message from page to host and back", 1.2),
    ]),
]
