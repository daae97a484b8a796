#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korsys/tests/support/Threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#ifdef __linux__
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

namespace {

/// Takes its time when it is asked, and tells when it was destroyed meanwhile. Its memory stays.
class MortalLogger : public TLog::NullLogger
{
public:
    ~MortalLogger() override { m_isAlive = false; }

    static void* operator new(std::size_t bytes)
    {
        static std::vector<std::unique_ptr<char[]>> s_all;
        return s_all.emplace_back(new char[bytes]).get();
    }
    static void operator delete(void* /*logger*/) {}

    bool AcceptsSeverity(TLog::Severity) const override
    {
        for (int i = 0; i != 100; ++i) {
            if (!m_isAlive.load(std::memory_order_relaxed)) {
                ++s_killed;
                return false;
            }
        }
        return false;
    }

    static std::atomic<int> s_killed;

private:
    std::atomic<bool> m_isAlive{true};
};

std::atomic<int> MortalLogger::s_killed{0};

/// How often a logger was destroyed below a call that had it.
int Replace(int times)
{
    std::atomic<int> isAsking{0};
    std::atomic<bool> isOver{false};
    auto const ask = [&] {
        // Stores that miss the caches keep what the call writes from being seen for a while.
        std::vector<char> memory(1 << 25);
        ++isAsking;
        for (std::size_t at = 0; !isOver;) {
            for (int i = 0; i != 10; ++i) {
                at = (at + 4099 * 64) % memory.size();
                memory[at] = 1;
            }
            LoggerAcceptsSeverity(TLog::Severity::Info, LogDetail::Count);
        }
    };
    OnThreads(3, [&](unsigned thread) {
        if (thread != 0) {
            ask();
            return;
        }
        while (isAsking != 2) {
            std::this_thread::yield();
        }
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        for (int i = 0; i != times && std::chrono::steady_clock::now() < deadline; ++i) {
            TLog::Logger::Set(std::make_unique<MortalLogger>());
        }
        isOver = true;
    });
    TLog::Logger::Set(nullptr);
    return std::min(MortalLogger::s_killed.load(), 100);
}

int ReplaceLoggers(std::string const& /*folder*/)
{
    return Replace(2000);
}

#ifdef __linux__

/// From now on, and in programs that take the place of this one, the system refuses process-wide
/// barriers.
bool ForbidBarriers()
{
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_membarrier, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog const program = {4, rules};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0 &&
           ::syscall(SYS_membarrier, 0, 0) == -1 && errno == EPERM;
}

constexpr int kCannotForbid = 101;

int ForbidAtLoad(std::string const& folder)
{
    return ForbidBarriers() ? ChildProcess("ReplaceLoggers", folder).End() : kCannotForbid;
}

int ForbidLater(std::string const& /*folder*/)
{
    return ForbidBarriers() ? Replace(50) : kCannotForbid;
}

#endif

TEST(LoggerReplacementProcessTest, NoLoggerIsDestroyedBelowACall)
{
    EXPECT_EQ(ChildProcess("ReplaceLoggers", "").End(), 0);
}

#ifdef __linux__

TEST(LoggerReplacementProcessTest, NorWhereTheSystemHasNoBarrierForAllThreads)
{
    for (char const* const role : {"ForbidAtLoad", "ForbidLater"}) {
        int const killed = ChildProcess(role, "").End();
        if (killed == kCannotForbid) {
            GTEST_SKIP() << "the system does not filter calls";
        }
        EXPECT_EQ(killed, 0) << role;
    }
}

#endif

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild({{"ReplaceLoggers", ReplaceLoggers},
#ifdef __linux__
                            {"ForbidAtLoad", ForbidAtLoad},
                            {"ForbidLater", ForbidLater}
#endif
                           },
                           argc, argv);
}
