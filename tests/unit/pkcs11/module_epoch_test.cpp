// ModuleEpoch: epochs of one module advance together, those of others stay.
#include "pkcs11/module_epoch.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

CK_RV finalizeOne(void*) {
    return CKR_OK;
}

CK_RV finalizeOther(void*) {
    return CKR_GENERAL_ERROR;
}

TEST(ModuleEpochTest, AdvanceChangesEveryEpochOfTheModule) {
    ModuleEpoch first;
    ModuleEpoch second;
    first.identify(finalizeOne);
    second.identify(finalizeOne);
    const std::uint64_t before = second.value();
    first.advance();
    EXPECT_NE(before, second.value());
    EXPECT_EQ(first.value(), second.value());
}

TEST(ModuleEpochTest, AdvanceLeavesTheEpochsOfOtherModules) {
    ModuleEpoch first;
    ModuleEpoch other;
    ModuleEpoch unidentified;
    first.identify(finalizeOne);
    other.identify(finalizeOther);
    const std::uint64_t before = other.value();
    const std::uint64_t unidentifiedBefore = unidentified.value();
    first.advance();
    EXPECT_EQ(before, other.value());
    EXPECT_EQ(unidentifiedBefore, unidentified.value());
}

TEST(ModuleEpochTest, AdvanceOfAModuleWithoutAFinalizeFunctionChangesItsOwnEpochAlone) {
    ModuleEpoch first;
    ModuleEpoch second;
    const std::uint64_t firstBefore = first.value();
    const std::uint64_t secondBefore = second.value();
    first.advance();
    EXPECT_NE(firstBefore, first.value());
    EXPECT_EQ(secondBefore, second.value());
}

TEST(ModuleEpochTest, NewEpochAfterDestructionHasANewValue) {
    auto first = std::make_unique<ModuleEpoch>();
    const std::uint64_t ended = first->value();
    first = nullptr;
    ModuleEpoch second;
    EXPECT_LT(ended, second.value());
    const std::uint64_t before = second.value();
    second.advance();
    EXPECT_LT(before, second.value());
}

TEST(ModuleEpochTest, DestructionInAnyOrderKeepsTheOtherEpochs) {
    auto first = std::make_unique<ModuleEpoch>();
    auto second = std::make_unique<ModuleEpoch>();
    auto third = std::make_unique<ModuleEpoch>();
    first->identify(finalizeOne);
    third->identify(finalizeOne);
    second = nullptr;
    const std::uint64_t before = first->value();
    third->advance();
    EXPECT_NE(before, first->value());
    third = nullptr;
    first->advance();
}

}  // namespace
