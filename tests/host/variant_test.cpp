// Variants and byte arrays of the command.
#include "variant.h"

#include <gtest/gtest.h>

#include <new>

namespace zr::host {
namespace {

TEST(VariantTest, BytesThatAreNotThereAreMissingMemory) {
    EXPECT_THROW(Variant().bytes(), std::bad_alloc);
    Variant empty;
    EXPECT_TRUE(makeByteArray("", *empty.receive()));
    EXPECT_EQ("", empty.bytes());
}

TEST(VariantTest, BytesAreThoseOfTheArray) {
    Variant variant;
    EXPECT_TRUE(makeByteArray("a", *variant.receive()));
    EXPECT_EQ("a", variant.bytes());
    EXPECT_TRUE(variant.texts().empty());
}

}  // namespace
}  // namespace zr::host
