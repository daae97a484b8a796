#include "korcoreplatform/main/core/runtime/GlobalThreadExit.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/error/LogicException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace {

// Registered functions stay for the whole process: they only note that they ran.
thread_local std::string t_ran;

TEST(GlobalThreadExitTest, EveryCallRunsAllInTheOrderOfTheirRegistration)
{
    auto* const twice = +[] { t_ran += 'b'; };
    AddGlobalThreadExitFunc([] { t_ran += 'a'; });
    AddGlobalThreadExitFunc(twice);
    AddGlobalThreadExitFunc([] { t_ran += 'c'; });
    AddGlobalThreadExitFunc(twice);
    EXPECT_KOR_ERROR(AddGlobalThreadExitFunc(nullptr), LogicException,
                     "LogicException_LogicAssert_0x9B334DB6");
    CallGlobalThreadExitFuncs();
    CallGlobalThreadExitFuncs();
    EXPECT_EQ(t_ran, "abcbabcb");
}

TEST(GlobalThreadExitTest, ThreadsRegisterWhileOthersEnd)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 1; i <= 500; ++i) {
                AddGlobalThreadExitFunc([] { t_ran += '.'; });
                if (i % 50 == 0) {
                    t_ran.clear();
                    CallGlobalThreadExitFuncs();
                    EXPECT_GE(std::count(t_ran.begin(), t_ran.end(), '.'), i); // its own at least
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    t_ran.clear();
    CallGlobalThreadExitFuncs();
    EXPECT_EQ(std::count(t_ran.begin(), t_ran.end(), '.'), 2'000);
}

} // namespace
