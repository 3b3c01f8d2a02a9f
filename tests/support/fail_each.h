#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <string>

#include "support/allocations.h"

/// Recorded as the code of an operation that threw std::bad_alloc.
constexpr int kThrew = -1000;

/// Makes the 1st, 2nd, 3rd .. allocation of an operation fail, each alone and each with all later
/// ones, until the operation makes no further allocation. Each run has a new subject, which must
/// not leak.
/// @param make makes a subject, without failures
/// @param act the operation on a subject, with failures; returns a code
/// @param check checks the subject and the code, without failures; also after a run without one
/// @return the number of failures
template <typename Make, typename Act, typename Check>
int FailEach(const Make& make, const Act& act, const Check& check) {
    const auto run = [&act](auto& subject) {
        try {
            return act(subject);
        } catch (const std::bad_alloc&) {
            return kThrew;
        }
    };
    {
        auto subject = make();  // memory that is allocated once and kept is no leak
        check(*subject, run(*subject));
    }
    int failures = 0;
    for (const bool onwards : {false, true}) {
        bool failed = true;
        for (std::size_t n = 1; failed && !testing::Test::HasFatalFailure(); ++n) {
            Allocations allocations;
            {
                auto subject = make();
                allocations.Fail(n, onwards);
                const int code = run(*subject);
                failed = allocations.FailNoMore();
                check(*subject, code);
            }
            EXPECT_EQ(allocations.Held(), 0)
                << "allocation " << n << (onwards ? " onwards" : " alone");
            failures += failed ? 1 : 0;
        }
    }
    return failures;
}

/// Prints the number of failures of an operation. None would mean that nothing was tested.
inline void Report(const std::string& operation, int failures) {
    EXPECT_GT(failures, 0) << operation;
    std::cout << operation << ": " << failures << " failures of an allocation\n";
}
