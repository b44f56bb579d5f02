// Comparing result codes: a failure prints name and hexadecimal value.
//
//     EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
#pragma once

#include <gtest/gtest.h>
#include <zrkey/automation.h>

namespace zr::test {

testing::AssertionResult isResult(const char* expectedText, const char* callText, HRESULT expected,
                                  HRESULT actual);

}  // namespace zr::test

#define EXPECT_HR(expected, call) EXPECT_PRED_FORMAT2(zr::test::isResult, expected, call)
#define ASSERT_HR(expected, call) ASSERT_PRED_FORMAT2(zr::test::isResult, expected, call)
