// The bytes that an operation of the library handed out.
#include "host/commands/byte_arrays.h"

#include <gtest/gtest.h>

#include <new>

namespace zr::host {
namespace {

TEST(TakeBytesTest, BytesOfTheArrayAreReturned) {
    EXPECT_EQ("a", takeBytes(zrkey::ByteArray("a")));
    EXPECT_EQ("", takeBytes(zrkey::ByteArray("")));
}

TEST(TakeBytesTest, ResultWithoutAnArrayThrowsOutOfMemory) {
    EXPECT_THROW(takeBytes(zrkey::ByteArray()), std::bad_alloc);
}

}  // namespace
}  // namespace zr::host
