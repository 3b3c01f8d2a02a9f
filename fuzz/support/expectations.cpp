/// Turns a failed GoogleTest expectation into a crash, which the fuzzer reports.

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class AbortAtTheFirstFailure : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.failed()) {
            std::abort();
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    testing::UnitTest::GetInstance()->listeners().Append(new AbortAtTheFirstFailure);
    return 0;
}
