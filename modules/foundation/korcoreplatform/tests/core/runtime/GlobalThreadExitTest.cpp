#include "korcoreplatform/main/core/runtime/GlobalThreadExit.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

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
    auto const countOfRun = [] {
        t_ran.clear();
        CallGlobalThreadExitFuncs();
        return std::count(t_ran.begin(), t_ran.end(), '.');
    };
    OnThreads(4, [&](unsigned) {
        for (int i = 1; i <= 500; ++i) {
            AddGlobalThreadExitFunc([] { t_ran += '.'; });
            EXPECT_TRUE(i % 50 != 0 || countOfRun() >= i); // its own at least
        }
    });
    EXPECT_EQ(countOfRun(), 2'000);
}

} // namespace
