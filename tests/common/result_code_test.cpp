#include "common/result_code.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace {

TEST(ResultCode, EveryNameHasItsNumberIn32Bits) {
    static_assert(std::is_same_v<std::underlying_type_t<ResultCode>, std::int32_t>);
    EXPECT_EQ(static_cast<int>(RESULT_FAILURE), -1);
    EXPECT_EQ(static_cast<int>(RESULT_OK), 0);
    EXPECT_EQ(static_cast<int>(RESULT_BAD_ARGUMENT), 2);
    EXPECT_EQ(static_cast<int>(RESULT_INVALID), 3);
    EXPECT_EQ(static_cast<int>(RESULT_NOT_INITIALISED), 4);
    EXPECT_EQ(static_cast<int>(RESULT_NEEDS_RESAMPLING), 9);
    EXPECT_EQ(static_cast<int>(RESULT_UNSUPPORTED_FORMAT), 11);
    EXPECT_EQ(static_cast<int>(RESULT_PASSED_THROUGH), 12);
    EXPECT_EQ(static_cast<int>(RESULT_RESAMPLED), 12);
}

}  // namespace
