// Certificates, keys and signatures that openssl made, in base64. The signatures are of "abc".
#pragma once

#include <string>

#include "host/output/encoding.h"

namespace zr::test {

inline std::string sample(const char* base64) {
    return host::decode(base64, host::ByteFormat::kBase64).value();
}

/// RSA, 2048 bits; C=DE, O=Example Ltd, CN=Erika Mustermann; 2025 to 2099; key usage.
inline constexpr const char* kRsaCertificate =
    "MIIDKzCCAhOgAwIBAgICAaswDQYJKoZIhvcNAQELBQAwPjELMAkGA1UEBhMCREUxFDASBgNVBAoMC0V4YW1wbGUgTH"
    "RkMRkwFwYDVQQDDBBFcmlrYSBNdXN0ZXJtYW5uMCAXDTI1MDEwMTAwMDAwMFoYDzIwOTkxMjMxMjM1OTU5WjA+MQsw"
    "CQYDVQQGEwJERTEUMBIGA1UECgwLRXhhbXBsZSBMdGQxGTAXBgNVBAMMEEVyaWthIE11c3Rlcm1hbm4wggEiMA0GCS"
    "qGSIb3DQEBAQUAA4IBDwAwggEKAoIBAQDVfreykx3yEhodG+Ci6QzBVpQn8ndV+tk8dGBBugk2g0ODyRBz4Gk/+R5e"
    "xez59qP98zvzqyFQYwFLQqIb5LJVTOmuFa1cglA4b80qvG7+1UfSPdHegmC121Ei6ZzVmPk9ACkC6WV+xvoLveERJn"
    "9hss25t/DIoAQjQkYze5o7bXdPgnnX0GKtRHaDOf7IRIF0/aLHJezaS7QJ4hBGn/GdhTQGtdLJl2oF6LHuJAV6Yvca"
    "b4seXDF29CO0D363Ea1sdH/oPj7Z/JpFsKYBv1DKhHe3wGE1mSw/yRCAno5Sst1z0Hb5lFzYlfs4QtJNOjRJBIHTQY"
    "6UcOwFF6e7cmIBAgMBAAGjMTAvMA4GA1UdDwEB/wQEAwIGwDAdBgNVHQ4EFgQUtBDCeRP7pkbsPGu4q85x4sCyVVsw"
    "DQYJKoZIhvcNAQELBQADggEBAEqFBqzeElEI0EneV5knxCd+SY8vJS1cs6i6uwmfEa7AHSxvby81TD5Qb2ZKJ28rQ/"
    "YJBTadq5I9fe/lsbqRlsSi113ilr/NgfdX0YJdU8jZbG8Ew96bD9F7y8n3qH7r2EIhK73W51tIR63nnAboCR7bPNJz"
    "iD/Hk0lcx5FlwXdHvo1klvfKZPhry2jsUMx6hqkfPr4SuJ/VHiIq7u5CzrQZwzyFir6QeQs1VQF5Z/mXpD7hXCuCKV"
    "wvRkeefF2wT2BfTgRy/hiuaiHBktrG/ioDOtzgHPjt6eMtiKubiFDIjrRBqvYnmKADSsShOv5QWt027AOR1zBhwW/b"
    "lzFFtM0=";

/// P-256; C=CH, O=Example, CN=p256; its serial number has 16 bytes and the highest bit.
inline constexpr const char* kP256Certificate =
    "MIIBizCCATKgAwIBAgIRAOHyo7TF1uf4CRorPE1eb3AwCgYIKoZIzj0EAwIwLjELMAkGA1UEBhMCQ0gxEDAOBgNVBA"
    "oMB0V4YW1wbGUxDTALBgNVBAMMBHAyNTYwIBcNMjUwMjAzMDQwNTA2WhgPMjA5OTEyMzEyMzU5NTlaMC4xCzAJBgNV"
    "BAYTAkNIMRAwDgYDVQQKDAdFeGFtcGxlMQ0wCwYDVQQDDARwMjU2MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAEbb"
    "jtm6Jdqnpa4PF6j0t9LbLiJt4+7tLtgGeuNzG7PZ0HS44YJyuNATGkeXMIwg53TOu6QjwU2lp7S4DeETgpTaMvMC0w"
    "DAYDVR0PBAUDAwcIgDAdBgNVHQ4EFgQU8dNSH7zAvclt+jvPTB5FKkvTL34wCgYIKoZIzj0EAwIDRwAwRAIgVpmDb7"
    "dPKVrj3ZZ8ljTbIQf5j+yKswezcH/fAzbHdrcCIAeLeBWGZ4aowucMhgdjwApzdr+HJUi/1jiXEYyHvWQN";

/// P-384; CN=p384; no key usage.
inline constexpr const char* kP384Certificate =
    "MIIBRDCBywIBfzAKBggqhkjOPQQDAjAPMQ0wCwYDVQQDDARwMzg0MCAXDTI1MDEwMTAwMDAwMFoYDzIwOTkxMjMxMj"
    "M1OTU5WjAPMQ0wCwYDVQQDDARwMzg0MHYwEAYHKoZIzj0CAQYFK4EEACIDYgAEp09phfRPXCaQTVt1DYco/0s7WZOI"
    "Rs0cW6DwXEctP/z0IFR+Q1dgAzlkypfHF38e4aqrmZVvemjKBz9ddWOhj30uWt05kkWNdlgibe3P5ijFNCKTtBuhIE"
    "xhdZBt6i+gMAoGCCqGSM49BAMCA2gAMGUCMQCbyz7i5oIbZUpcWGv5bS2o6Y/Qrx4VRClDMb1u8a0Z+v3nAbPHIydA"
    "cTke8ju5TggCMFwGKs4Kk/YGyO9A2EdXh3fqv8I9/6EoJdJ/dbNfcViJLxZmS9htoRBEurtdn4k8ug==";

/// RSA, 1024 bits; the year 2020.
inline constexpr const char* kExpiredCertificate =
    "MIIBkjCB/AIBAjANBgkqhkiG9w0BAQsFADASMRAwDgYDVQQDDAdleHBpcmVkMB4XDTIwMDEwMTAwMDAwMFoXDTIxMD"
    "EwMTAwMDAwMFowEjEQMA4GA1UEAwwHZXhwaXJlZDCBnzANBgkqhkiG9w0BAQEFAAOBjQAwgYkCgYEAz3rMRfk4irAa"
    "9jrQKbmyOd6q2owtfHjzG3VTU0+43xEBZvbZ+rozcMrV30od8Bd0yb1ncxbHcCYfDCnykkdjyDSjryL9OqbZuBh38r"
    "84LLfqYWYTQKB1MCxgjf5XdCAwvPKVf8eULDtBDxefwqpEBpdubpfJh7ZlfYuxI1bwJ/8CAwEAATANBgkqhkiG9w0B"
    "AQsFAAOBgQBGcK03VOBSVuzjyuPitahzhHeYTm3WvUs9X1Xcs2BdvsI7o99d6S02vpuUO8qayO5m0FOQJBaaZ73HT7"
    "rxGBaqGE/I4l6j8er2KUnFJmLQ8d2RJMFMnqGDKPmB2yCmpzbRq+IIjuVqttt1Ol8l1IMRsRmpMmAgB4BuwjfU94Pw"
    "xg==";

/// Separators, quotes, edges, a line end, characters outside ASCII and two attributes side by side.
inline constexpr const char* kOddCertificate =
    "MIICCTCCAbACAQMwCgYIKoZIzj0EAwIwgY8xCzAJBgNVBAYTAkRFMSMwIQYDVQQKDBpFeGFtcGxlICJUZXN0cyIsIE"
    "dtYkggKyBDbzEVMBMGA1UECwwMIGE9YjxjPjtkXGUgMTAwCgYDVQQFEwMwMDcwIgYDVQQDDBsjxb1vZmllIE3DvGxs"
    "ZXIg5YyX5LqsIPCfmIAxEjAQBgNVBAMMCXR3bwpsaW5lczAgFw0yNjExMjIxMTM2MzVaGA8yMTAwMTAyNTExMzYzNV"
    "owgY8xCzAJBgNVBAYTAkRFMSMwIQYDVQQKDBpFeGFtcGxlICJUZXN0cyIsIEdtYkggKyBDbzEVMBMGA1UECwwMIGE9"
    "YjxjPjtkXGUgMTAwCgYDVQQFEwMwMDcwIgYDVQQDDBsjxb1vZmllIE3DvGxsZXIg5YyX5LqsIPCfmIAxEjAQBgNVBA"
    "MMCXR3bwpsaW5lczBZMBMGByqGSM49AgEGCCqGSM49AwEHA0IABC9S3YRbPLBgLkxQymN4uvL4PCdFV5oL2qXxtnxC"
    "L41vVsYkWmXOEPEDbvp7VPx/s4DzC55U+HiJF8pJSjSXPB8wCgYIKoZIzj0EAwIDRwAwRAIgfkTYQ/lfbvifJu+NCC"
    "O5aEOCBuK7ox7/FzdJ7tQ6g8kCIDw4laSAuL0/xcQl2eVJC9pFOSCxVs1mL9/B8IvTZAqp";

/// A name in UTF-16 (BMPString): CN=Bär.
inline constexpr const char* kBmpCertificate =
    "MIIBDDCBsgIBBDAKBggqhkjOPQQDAjARMQ8wDQYDVQQDHgYAQgDkAHIwIBcNMjUwMTAxMDAwMDAwWhgPMjA5OTEyMz"
    "EyMzU5NTlaMBExDzANBgNVBAMeBgBCAOQAcjBZMBMGByqGSM49AgEGCCqGSM49AwEHA0IABB1Lg6/XK1SLrtmTt11U"
    "hX1TnJdv1tg21QhS+0FLC33FV7D2F9ur1ftrGzb2D/1K5kxNJLB+WcBjavfpVKzjnH4wCgYIKoZIzj0EAwIDSQAwRg"
    "IhAJc+n08oEkAt1O6eW1FsBngsXE3ebjX9/1pd23apaekzAiEAs8iFKD+JeHUi6ZlCQX3qgQr1Uv3tsPP5juv4JlKV"
    "aGk=";

/// A key without RSA or EC.
inline constexpr const char* kEd25519Certificate =
    "MIHCMHYCAQUwBQYDK2VwMA0xCzAJBgNVBAMMAmVkMCAXDTI1MDEwMTAwMDAwMFoYDzIwOTkxMjMxMjM1OTU5WjANMQ"
    "swCQYDVQQDDAJlZDAqMAUGAytlcAMhAK9gA0Vkg2Z6cd5ynkmDzrY166w5ZgHfRXd8O17nPlwIMAUGAytlcANBAAt0"
    "w8czPohAlD0KoMhRnJXtUx9IXpQKnUJhLhA536D/IXGcx9j49dRlthcKf7zaj1DXELd8GJQiqixV/nA+xAk=";

/// The SubjectPublicKeyInfo of kRsaCertificate.
inline constexpr const char* kRsaKeyInfo =
    "MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEA1X63spMd8hIaHRvgoukMwVaUJ/J3VfrZPHRgQboJNoNDg8"
    "kQc+BpP/keXsXs+faj/fM786shUGMBS0KiG+SyVUzprhWtXIJQOG/NKrxu/tVH0j3R3oJgtdtRIumc1Zj5PQApAull"
    "fsb6C73hESZ/YbLNubfwyKAEI0JGM3uaO213T4J519BirUR2gzn+yESBdP2ixyXs2ku0CeIQRp/xnYU0BrXSyZdqBe"
    "ix7iQFemL3Gm+LHlwxdvQjtA9+txGtbHR/6D4+2fyaRbCmAb9QyoR3t8BhNZksP8kQgJ6OUrLdc9B2+ZRc2JX7OELS"
    "TTo0SQSB00GOlHDsBRenu3JiAQIDAQAB";

/// The SubjectPublicKeyInfo of kP256Certificate.
inline constexpr const char* kP256KeyInfo =
    "MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAEbbjtm6Jdqnpa4PF6j0t9LbLiJt4+7tLtgGeuNzG7PZ0HS44YJyuNAT"
    "GkeXMIwg53TOu6QjwU2lp7S4DeETgpTQ==";

/// By the key of kRsaCertificate.
inline constexpr const char* kRsaSha1 =
    "ALHOcdcOtyl+1tRmROhe9hGEbKSGKmQ4GrU5gi2UHtlna7paoJHp4RX+Fg3j+YP4p+LMlFIlHOOwt6qqr2t/6sTnJf"
    "58/041/6Ugsre1CjKi+ihXrr/p+rT1HBGJ+NVr2Fuy4OG0OmMPvLbedMZrxrem/cv9jJThhqxlKDvrgzYdgN976Rz5"
    "W+R0qHlTj2BvDI2pK+UXRiDxUOB4Q9A0FNs1RqvEVslMVx3yVHsiTgrCgC0sQBT44aVFHlPwYpK43qLJ8/oQUO2CEn"
    "BVA7Q7zZaH6ta/t3/Oioyz80Tyfu5n03WVEcMej47kEuIxxy9Bc179YFJOTNbtpf414p0Gww==";

/// The same.
inline constexpr const char* kRsaSha256 =
    "ZvUoYR2V1BxW87X6Oi39O0ZViccQ/do04fzrXDO3yiZHFsFsCl7jmXSP9PisZd/o+eVFnKzLoGPyJkFO99zz2MSwCh"
    "3MNuVSYGPPmsoLW1+Yae+a9yG3U5Fol6uurqaOXo3QWetSO3nY3SFXizobLsEwkuK0iiFy6RrKbIcf8a4ZUb1f7h7z"
    "RljvdgFtYxYW1uKALuf2r2Wu2DbuqZXVCJ/v2qio+G2fVHa23qWv8IFzM7cErkgz4n4mGXL5d/Qbjt/9TUewkolh/H"
    "9618YWXH/aXDssfdOo6Ns0EOwppbZ7yOTYmrttEqD37bC2do2GpE9AfsZuVrUSh2TeIY7LUw==";

/// The same.
inline constexpr const char* kRsaSha384 =
    "YUee6dBSnw5AWiy8octrzjcY03T/dRxAbK4vTkeyTC9DCqb2dxYcD5mJk9WGYn/obTZ2pRJP9sISRMmzGKhl294w5f"
    "W3ZocvcS+QFlhxAR9x8DEGQvduZkfSiJlp+D4SKf4J4IlhM2UP1t3p1SKh6uw4iNWzbfj2J0epZAJpcwyxzNCTa/AB"
    "EOWb/2/0o8qDOIRZ+j/1XNuEm3ier8rGyLWdfjFKLdbaTClMCi6qoxQP6waHpwWdZigBpYwq9Gel1aKPSJOWxgvjoq"
    "bm+XRSy0nhd+Eguj5Klv2QUef45uIr3N/6qhDeZGCQX4V2qjiCfEhI218wVrQ+IJMhNtIAjQ==";

/// The same.
inline constexpr const char* kRsaSha512 =
    "pdDQa+WTX6ksGrj0Jin+YKKV21fG0cSaQlR1St7rUIIQy/cWb2Le1n9uKA2g55nQyGEGLSpyFlR62dh2Nf48lfyAEk"
    "il/0YL2LyT29O0TXki5e6/fJLVcorLz0TUdxu4GGqIrh2QOZQzGtqfuj8DZlgrwdmDlxf00RAVN0M03ZRnOwq/pvsx"
    "J5X9pmAxVHf0W3+fq9gw7jDqzOk585G8Th8NCEUa2NX+IDlm0wqG3kzGrlU/jdyFAY2y7ARNY1hxcPsyvnTZYMvCQf"
    "cx8OEg5uKjtt736wj2XiWXK1POY8Bcf0etLAT2SqEDVWuU3Tb4Y5oAvXJjPdU+E4+VUDTKQw==";

/// The same, with a salt of 32 bytes.
inline constexpr const char* kRsaPssSha256 =
    "Yx+tLv8+a5N2X1Li9+Lh9n3WMlMBRlIP+IvH1Chun2qAUoViQSYI5yW/01sDQ46ig/einQ2b3/E0KDRdn7IDtEQX7r"
    "dQuwzmcZfghQMVJWjR0KM/Xdi9guDj7yjRBDtra0iXyxRhdHAT6sBb3R6yINRjUmoEKTWqgHQl6XEdFGc/zN6ovFS/"
    "Qo/xEEhdRR5WZxnUconL6Jl+HldGx4A0x6gmDhbiNHWh/65wJb4cIh8rnjlkz3PudpvNQeVr0L2xaTfd4d+zatkkwn"
    "DjHl/F3EQJ5i2wV01TVju79OjE7kIB3SZJFkKdG2o/dpTSgydm5xPwtng88zDchqpcKOkNxA==";

/// By the key of kP256Certificate.
inline constexpr const char* kP256Sha256 =
    "MEUCIQCeKoDVuoIHW2iWN6w4EN9iF9eHXDdkZHi5mCfEm8WQCwIgZfDI56RcINw4y4Bj4ZqiX6U9lmtuY8f2yMTurB"
    "qVG0M=";

/// The same.
inline constexpr const char* kP256Sha384 =
    "MEUCIHM5ucBszTpzz6EQOISwlxIMngZgJ5WXrFYJJptg9Sr/AiEAvieH8dfJaUpOsnE2dYg4mwqmUMpfJBMOgbsM1k"
    "8xAVw=";

/// By the key of kP384Certificate.
inline constexpr const char* kP384Sha256 =
    "MGUCMEoWv89zmnBBhmSU2bolXAEPer1QZDw1+KUZ5sC1bpQfn2f5arWqYMQXi7tvL2UAswIxANB09cnbx1VXCQV9pj"
    "uj8eLEt5Fg7A5XKuu/8RIb9sYBP2a5HPN+U4wotwKHu9toXA==";

/// The same.
inline constexpr const char* kP384Sha384 =
    "MGQCMFWJ3jxAUmf5haIbFpqMjYj9phAbkpM2ocsrbL8yjrMNSXuqMXnJ2kXDgZkFoAnMUQIwIXFajIVV21PB9LW08G"
    "GUnu1oY4RiqmPBj/xLCmegnDsa+UBQAWEXK2CkV87Iwv/e";

}  // namespace zr::test
