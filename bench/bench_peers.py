"""Runs the libraries of script languages on the modules that the rows were measured with."""
import json
import subprocess
import sys
from pathlib import Path

PEERS = Path(__file__).resolve().parent / "peers"
# A row, the module it is measured with, and what the peer programs call the work.
WORKS = [
    ("token/sign", "SignData, SoftHSM2", "token", "sign"),
    ("token/verify", "VerifyData, SoftHSM2", "token", "verify"),
    ("token/enumerate", "EnumContainer, SoftHSM2, 32 certificates", "token", "enumerate"),
    ("instant/sign", "SignData, instant module", "instant1", "sign"),
    ("instant/verify", "VerifyData, instant module", "instant1", "verify"),
    ("instant/enumerate", "EnumContainer, instant module, 2,048 certificates", "instant2048",
     "enumerate"),
]
NEEDED_ROWS = [row for row, *_ in WORKS]


def soft_module():
    found = sorted(Path("/usr/lib").rglob("libsofthsm2.so"))
    return str(found[0]) if found else sys.exit("SoftHSM2 is not installed: scripts/setup")


def commands(folder):
    """The peers: a name, and the program with its arguments."""
    # Debian's own Python has Debian's PyKCS11.
    modules = {"NODE_PATH": str(folder.parent / "peers/node_modules")}
    return [("PyKCS11", ["/usr/bin/python3", str(PEERS / "pykcs11_peer.py")], {}),
            ("pkcs11js", ["node", str(PEERS / "pkcs11js_peer.cjs")], modules)]


def times_of(command, extra, environment, module, certificates, folder):
    """The processor time of each work in ns; nothing when the peer is not installed."""
    run = subprocess.run([*command, module], text=True, stdout=subprocess.PIPE, cwd=folder,
                         env={**environment, **extra,
                              "ZRKEY_INSTANT_CERTIFICATES": str(certificates)})
    if run.returncode == 77:
        return {}
    run.check_returncode()
    return json.loads(run.stdout)


def measure(results, environment, folder, instant):
    peers = commands(folder)
    modules = {"token": (environment["ZRKEY_MODULE"], 0), "instant1": (str(instant), 1),
               "instant2048": (str(instant), 2048)}
    times = {(name, key): times_of(command, extra, environment, module, count, folder)
             for name, command, extra in peers for key, (module, count) in modules.items()}
    rows = [(title, [results[row]["floor_ns"], results[row]["library_ns"],
                     *(times[name, key].get(work) for name, *_ in peers)])
            for row, title, key, work in WORKS]
    return {"names": [name for name, *_ in peers], "rows": rows}
