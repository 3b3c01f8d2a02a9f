#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <string>

#include "support/allocations.h"

/// What an operation has answered when it has thrown std::bad_alloc instead.
constexpr int kThrew = -1000;

/// Lets the 1st, 2nd, 3rd .. allocation of an operation fail, each alone and each with all later
/// ones, until it gets by without a failure; each time on a new subject, of which nothing may be
/// left in the end.
/// @param make makes a subject, undisturbed
/// @param act the operation on a subject that is disturbed; answers a code
/// @param check what has to hold of the subject and the answer, undisturbed; also where nothing has
///        failed
/// @return how many failures there were
template <typename Make, typename Act, typename Check>
int FailEach(const Make& make, const Act& act, const Check& check) {
    const auto answer = [&act](auto& subject) {
        try {
            return act(subject);
        } catch (const std::bad_alloc&) {
            return kThrew;
        }
    };
    {
        auto subject = make();  // what is made once and kept is no leak
        check(*subject, answer(*subject));
    }
    int failures = 0;
    for (const bool onwards : {false, true}) {
        bool failed = true;
        for (std::size_t n = 1; failed && !testing::Test::HasFatalFailure(); ++n) {
            Allocations allocations;
            {
                auto subject = make();
                allocations.Fail(n, onwards);
                const int code = answer(*subject);
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

/// Prints how many failures an operation has gone through; none would mean that none was tried.
inline void Report(const std::string& operation, int failures) {
    EXPECT_GT(failures, 0) << operation;
    std::cout << operation << ": " << failures << " failures of an allocation\n";
}
