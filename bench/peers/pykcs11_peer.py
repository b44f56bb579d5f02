"""Times the works of bench_peers.py with PyKCS11. Prints nanoseconds as JSON; ends with 77 when it is not
installed.
usage: pykcs11_peer.py MODULE"""
import json
import statistics
import sys
import time

try:
    import PyKCS11
except ImportError:
    sys.exit(77)

DATA = b"x" * 32
MECHANISM = PyKCS11.Mechanism(PyKCS11.CKM_SHA1_RSA_PKCS, None)
ROUNDS = 31
SECONDS = 0.02


def median_time(work):
    """The processor time of one call in ns: the median of rounds that take a while each."""
    times = 1
    while True:
        begin = time.process_time()
        for _ in range(times):
            work()
        if time.process_time() - begin > SECONDS:
            break
        times *= 2
    rounds = []
    for _ in range(ROUNDS):
        begin = time.process_time()
        for _ in range(times):
            work()
        rounds.append((time.process_time() - begin) / times)
    return statistics.median(rounds) * 1e9


def find(session, kind):
    return session.findObjects([(PyKCS11.CKA_CLASS, kind), (PyKCS11.CKA_TOKEN, True),
                                (PyKCS11.CKA_KEY_TYPE, PyKCS11.CKK_RSA)])[0]


def find_with_id(session, kind):
    key = find(session, kind)
    session.getAttributeValue(key, [PyKCS11.CKA_ID])
    return key


def enumerate_certificates(session):
    certificates = session.findObjects([(PyKCS11.CKA_CLASS, PyKCS11.CKO_CERTIFICATE),
                                        (PyKCS11.CKA_TOKEN, True)])
    return [bytes(session.getAttributeValue(one, [PyKCS11.CKA_ID])[0]).decode()
            for one in certificates]


def main():
    library = PyKCS11.PyKCS11Lib()
    library.load(sys.argv[1])
    session = library.openSession(library.getSlotList(tokenPresent=True)[0],
                                  PyKCS11.CKF_SERIAL_SESSION | PyKCS11.CKF_RW_SESSION)
    session.login("1234")
    signature = session.sign(find(session, PyKCS11.CKO_PRIVATE_KEY), DATA, MECHANISM)
    print(json.dumps({
        "sign": median_time(lambda: session.sign(find_with_id(session, PyKCS11.CKO_PRIVATE_KEY),
                                                 DATA, MECHANISM)),
        "verify": median_time(lambda: session.verify(find_with_id(session, PyKCS11.CKO_PUBLIC_KEY),
                                                     DATA, signature, MECHANISM)),
        "enumerate": median_time(lambda: enumerate_certificates(session)),
    }))


main()
