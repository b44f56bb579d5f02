// Layout of Cryptoki structures: packed on bytes, as PKCS #11 v2.40 has it on Windows.
#pragma pack(push, 1)
