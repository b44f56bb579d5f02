// Hashes: the values that openssl computes, names, data in pieces.
#include "host/crypto/hash.h"

#include <gtest/gtest.h>

#include "host/output/encoding.h"

namespace zr::host {
namespace {

TEST(HashTest, EveryKindGivesTheKnownValue) {
    EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", toHex(hashOf(HashKind::kMd5, "abc")));
    EXPECT_EQ("a9993e364706816aba3e25717850c26c9cd0d89d", toHex(hashOf(HashKind::kSha1, "abc")));
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
              toHex(hashOf(HashKind::kSha256, "abc")));
    EXPECT_EQ(
        "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca1"
        "34c825a7",
        toHex(hashOf(HashKind::kSha384, "abc")));
    EXPECT_EQ(
        "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23"
        "a3feebbd454d4423643ce80e2a9ac94fa54ca49f",
        toHex(hashOf(HashKind::kSha512, "abc")));
}

TEST(HashTest, NoDataGivesTheKnownValue) {
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", toHex(hashOf(HashKind::kMd5, "")));
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", toHex(Hash(HashKind::kMd5).finish()));
}

TEST(HashTest, PiecesGiveTheValueOfTheWhole) {
    const std::string data(200'000, 'x');
    Hash hash(HashKind::kSha256);
    for (std::size_t i = 0; i < data.size(); i += 777) {
        hash.add(std::string_view(data).substr(i, 777));
    }
    EXPECT_EQ(hashOf(HashKind::kSha256, data), hash.finish());
}

TEST(HashNameTest, NamesAreFoundInUpperAndLowerCase) {
    EXPECT_EQ(HashKind::kMd5, hashNamed("MD5"));
    EXPECT_EQ(HashKind::kMd5, hashNamed("md5"));
    EXPECT_EQ(HashKind::kSha512, hashNamed("Sha512"));
    EXPECT_EQ("SHA384", nameOf(HashKind::kSha384));
}

TEST(HashNameTest, OtherNamesAreNotFound) {
    for (const char* name : {"", "MD", "MD55", "SHA-1", "SHA2"}) {
        EXPECT_EQ(std::nullopt, hashNamed(name)) << name;
    }
}

}  // namespace
}  // namespace zr::host
