// Makes every allocation and every call of the system that something makes fail: each in its turn, once and with all
// that follow it, by a count of those of a good run.
#pragma once
#include "platform/faults.h"
#include "support/AllocationFault.h"
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace pixkit::test {

// One try at something, what has to be there before it, and a look at what it left, given whether it said that it was a
// success, and whether something was made to fail. Whatever is done can be done again.
struct Sweep {
    std::function<void()> prepare;
    std::function<bool()> attempt;
    std::function<void(bool isDone, bool isFaulty)> check;
    bool mayLose = false; // memory, of somebody else's

    // Runs the attempt while `Fault` is in force, then once more without.
    template <class Fault, class... Plan>
    void meet(Plan... plan) const {
        bool isDone = false;
        prepare();
        {
            const Fault fault(plan...);
            isDone = attempt();
        }
        check(isDone, true); // a success too: some things can be done without, such as a question about the old file
        if (isDone) prepare();
        EXPECT_TRUE(attempt()) << "not usable after a failure";
        check(true, false);
    }

    void run(std::initializer_list<int> lengths = {1, -1}) const {
        using platform::SeamCall;
        constexpr auto kinds = static_cast<std::size_t>(SeamCall::count);
        std::vector<long> calls(kinds);
        prepare();
        ASSERT_TRUE(attempt()) << "without any failure";
        check(true, false);
        const std::size_t handles = platform::openHandles();
        prepare(); // what is made for good is there now
        for (std::size_t i = 0; i < kinds; ++i)
            calls[i] = platform::callsMade(static_cast<SeamCall>(i));
        const AllocationWatch watch;
        const bool isDone = attempt();
        const long allocations = watch.count();
        ASSERT_TRUE(isDone) << "a second time";
        for (std::size_t i = 0; i < kinds; ++i)
            calls[i] = platform::callsMade(static_cast<SeamCall>(i)) - calls[i];
        const auto row = [this](const std::string& what, long after, int times, auto&& fail) {
            SCOPED_TRACE(what + " " + std::to_string(after) + (times < 0 ? " and all that follow" : ""));
            const auto before = liveAllocations();
            fail();
            const auto live = liveAllocations();
            if (live == before || mayLose) return !testing::Test::HasFailure();
            fail(); // what it leaves for good, such as a borrowed library's message, it leaves once
            EXPECT_EQ(liveAllocations(), live) << "lost each time";
            return !testing::Test::HasFailure();
        };
        for (const int times : lengths) {
            for (long after = 0; after < allocations; ++after)
                if (!row("allocation", after, times, [&] { meet<AllocationFault>(after, times); })) return;
            for (std::size_t i = 0; i < kinds; ++i)
                for (int after = 0; after < calls[i]; ++after)
                    if (!row("call " + std::to_string(i), after, times,
                             [&] { meet<platform::ScopedFault>(static_cast<SeamCall>(i), after, times); }))
                        return;
        }
        EXPECT_EQ(platform::openHandles(), handles) << "objects of the system lost";
    }
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
