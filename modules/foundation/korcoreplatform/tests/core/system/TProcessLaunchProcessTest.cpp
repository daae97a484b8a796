#include "korcoreplatform/main/core/system/TProcessLaunch.h"

#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"
#include "korsys/tests/support/Threads.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using End = TProcessLaunch::End;
using Failure = TProcessLaunch::Failure;
using Result = TProcessLaunch::Result;

constexpr int kEnoughMs = 700; ///< For a script to reach its wait, and to end.

TProcessLaunch Shell(TString const& script)
{
    return TProcessLaunch(u"/bin/sh", {u"-c", script});
}

/// Nothing is left behind by any test.
class TProcessLaunchTest : public testing::Test
{
protected:
    ~TProcessLaunchTest() override { EXPECT_TRUE(IsChildless()); }

    TidyFolder const m_folder;
};

TEST_F(TProcessLaunchTest, GivesItsInputAndTellsTheEndAndWhatWasWritten)
{
    std::string large; // far more than a pipe holds
    for (int i = 0; i != 500000; ++i) {
        large += std::to_string(i);
    }
    std::string const part = large.substr(0, 50000);
    m_folder.Write("file", "from a file");
    TProcessLaunch const cat(u"cat");
    // A code below zero is a signal's number.
    std::tuple<int, TProcessLaunch, int, std::string, std::string> const cases[] = {
        {__LINE__, Shell(u"echo out; echo err >&2; exit 255"), 255, "out\n", "err\n"},
        {__LINE__, Shell(u"echo out; kill -KILL $$"), -SIGKILL, "out\n", ""},
        {__LINE__, Shell(u"echo out; exec >&-; echo err >&2; exec 2>&-; sleep 0.1; exit 5"), 5,
         "out\n", "err\n"},
        {__LINE__, Shell(u"tee /dev/stderr").InputBytes(large), 0, large, large}, // at once
        // Who still has the pipes is not waited for.
        {__LINE__, Shell(u"sleep 600 <&0 & head -c 50000").InputBytes(large), 0, part, ""},
        {__LINE__, Shell(u"sleep 600 <&0 & head -c 50000 >&2").InputBytes(large), 0, "", part},
        {__LINE__, cat, 0, "", ""},
        {__LINE__, TProcessLaunch(cat).InputBytes(""), 0, "", ""},
        {__LINE__, TProcessLaunch(cat).InputText(u"\xE4"), 0, "\xC3\xA4", ""},
        {__LINE__, TProcessLaunch(cat).InputBytes("x").InputFile(m_folder / u"file"), 0,
         "from a file", ""},
        {__LINE__, TProcessLaunch(u"true").InputBytes(large), 0, "", ""},
        {__LINE__, Shell(u"exec <&-; echo on; sleep 0.1; echo end").InputBytes(large), 0,
         "on\nend\n", ""},
    };
    for (auto const& [line, launch, code, output, errorOutput] : cases) {
        SCOPED_TRACE(line);
        for (int run = 0; run != 2; ++run) {
            Result const result = launch.Run();
            EXPECT_EQ(result.end, code < 0 ? End::Signaled : End::Exited);
            EXPECT_EQ(result.exitCode, std::max(code, -1));
            EXPECT_EQ(result.signal, std::max(-code, 0));
            EXPECT_EQ(result.Succeeded(), code == 0);
            EXPECT_TRUE(result.output == output) << result.output.size();
            EXPECT_TRUE(result.errorOutput == errorOutput) << result.errorOutput.size();
            EXPECT_EQ(result.failure, Failure::None);
            EXPECT_EQ(result.error, 0);
            EXPECT_FALSE(result.isOutputCut || result.isErrorCut);
            ::kill(-result.pid, SIGKILL);
        }
    }
    Result const merged = Shell(u"echo a; echo b >&2; echo \xE4").MergeErrorIntoOutput().Run();
    EXPECT_EQ(merged.OutputText(), u"a\nb\n\xE4\n");
    EXPECT_EQ(merged.ErrorText(), u"");
}

TEST_F(TProcessLaunchTest, TellsWhyNothingWasStarted)
{
    m_folder.Write("plain", "echo ran");
    m_folder.Write("text", "echo ran");
    m_folder.Write("orphan", "#!/no/such/interpreter\n");
    for (char const* const name : {"text", "orphan"}) {
        ::chmod(m_folder.Native(name).c_str(), 0755);
    }
    TString const zero(u"a\0b", 3);
    TProcessLaunch const touch(u"/bin/touch", {m_folder / u"started"});
    std::tuple<int, TProcessLaunch, Failure, int> const cases[] = {
        {__LINE__, TProcessLaunch(m_folder / u"none"), Failure::Program, ENOENT},
        {__LINE__, TProcessLaunch(u"no-such-program-anywhere"), Failure::Program, ENOENT},
        {__LINE__, TProcessLaunch(u""), Failure::Program, ENOENT},
        {__LINE__, TProcessLaunch(m_folder / u"plain"), Failure::Program, EACCES},
        {__LINE__, TProcessLaunch(m_folder.Path()), Failure::Program, EACCES},
        {__LINE__, TProcessLaunch(m_folder / u"orphan"), Failure::Program, ENOENT},
        {__LINE__, TProcessLaunch(m_folder / u"text"), Failure::Program, ENOEXEC},
        {__LINE__, TProcessLaunch(u"/bin/true", {TString(u'x', 4 << 20)}), Failure::Program, E2BIG},
        {__LINE__, TProcessLaunch(m_folder / u"none").WorkingDirectory(u"/"), Failure::Program,
         ENOENT},
        {__LINE__, TProcessLaunch(touch).WorkingDirectory(m_folder / u"none"),
         Failure::WorkingDirectory, ENOENT},
        {__LINE__, TProcessLaunch(touch).WorkingDirectory(m_folder / u"plain"),
         Failure::WorkingDirectory, ENOTDIR},
        {__LINE__, TProcessLaunch(touch).InputFile(m_folder / u"none"), Failure::InputFile, ENOENT},
        {__LINE__, TProcessLaunch(zero), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(u"/bin/true", {u"good", zero}), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).WorkingDirectory(zero), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).InputFile(zero), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Environment({u"A=" + zero}), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Environment({u"A=1", u"B"}), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Environment({u"=A"}), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Environment({u""}), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Variable(u"", u"1"), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Variable(u"A=B", u"1"), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Variable(zero, u"1"), Failure::Request, EINVAL},
        {__LINE__, TProcessLaunch(touch).Variable(u"A", zero), Failure::Request, EINVAL},
    };
    for (auto const& [line, launch, failure, error] : cases) {
        SCOPED_TRACE(line);
        Result const result = launch.Run();
        EXPECT_EQ(result.end, End::NotStarted);
        EXPECT_EQ(result.failure, failure);
        EXPECT_EQ(result.error, error);
        EXPECT_EQ(result.pid, -1);
        EXPECT_TRUE(IsChildless());
        EXPECT_FALSE(std::filesystem::exists(m_folder.Native("started")));
    }
    EXPECT_EQ(TProcessLaunch(u"").Run().Description(),
              u"could not be started: No such file or directory");
    EXPECT_EQ(TProcessLaunch(zero).Run().Description(),
              u"was given a text that is not allowed: Invalid argument");
    EXPECT_TRUE(touch.Run().Succeeded());
}

TEST_F(TProcessLaunchTest, EnvironmentAndDirectoryArriveAsTheyAre)
{
    EXPECT_EQ(TProcessLaunch(u"pwd").WorkingDirectory(m_folder.Path()).Run().output,
              m_folder.Path().NativeString().toStdString() + "\n");

    ::setenv("KOR_LAUNCH_RAW", "\xFF=", 1);
    ::setenv("KOR_LAUNCH", "old", 1);
    TProcessLaunch env(u"env");
    EXPECT_NE(env.Run().output.find("KOR_LAUNCH_RAW=\xFF=\n"), std::string::npos);
    std::string const changed =
        env.Variable(u"KOR_LAUNCH", u"1").Variable(u"KOR_LAUNCH", u"a=b").Run().output;
    EXPECT_NE(changed.find("KOR_LAUNCH_RAW=\xFF=\n"), std::string::npos);
    EXPECT_NE(changed.find("KOR_LAUNCH=a=b\n"), std::string::npos);
    EXPECT_EQ(changed.find("KOR_LAUNCH=old"), std::string::npos);
    EXPECT_EQ(env.Environment({u"A=1", u"KOR_LAUNCH=", u"B==\xE4"}).Run().output,
              "A=1\nB==\xC3\xA4\nKOR_LAUNCH=a=b\n");
    EXPECT_EQ(TProcessLaunch(u"env").Environment({}).Run().output, "");
}

TEST_F(TProcessLaunchTest, WhatIsOverTheLimitIsReadAndDropped)
{
    for (std::size_t const limit : {0u, 1u, 65536u, 199999u, 200000u, 200001u}) {
        SCOPED_TRACE(limit);
        bool const isCut = limit < 200000;
        TProcessLaunch launch = Shell(u"head -c 200000 /dev/zero; head -c 200000 /dev/zero >&2");
        Result const output = launch.OutputLimit(limit).Run();
        EXPECT_TRUE(output.Succeeded());
        EXPECT_EQ(output.output.size(), isCut ? limit : 200000);
        EXPECT_EQ(output.isOutputCut, isCut);
        EXPECT_EQ(output.errorOutput.size(), 200000u);
        EXPECT_FALSE(output.isErrorCut);
        Result const both = launch.ErrorLimit(limit).Run();
        EXPECT_EQ(both.errorOutput.size(), isCut ? limit : 200000);
        EXPECT_EQ(both.isErrorCut, isCut);
    }
    // Far enough for all kinds of growth, and in the middle of a block.
    Result const large = Shell(u"yes 1234567 | head -c 40000000").OutputLimit(33333333).Run();
    ASSERT_EQ(large.output.size(), 33333333u);
    std::size_t wrong = 0;
    for (std::size_t i = 0; i != large.output.size(); ++i) {
        wrong += large.output[i] != "1234567\n"[i % 8];
    }
    EXPECT_EQ(wrong, 0u);
}

TEST_F(TProcessLaunchTest, TheDeadlineEndsTheWholeGroup)
{
    std::tuple<char16_t const*, int, char const*, bool> const cases[] = {
        {u"echo on; exec sleep 600", -SIGTERM, "on\n", true},
        {u"trap 'echo bye; exit 7' TERM; sleep 600 & wait", 7, "bye\n", true},
        {u"trap '' TERM; echo on; while :; do sleep 600; done", -SIGKILL, "on\n", true},
        {u"kill -STOP $$", -SIGTERM, "", true},
        {u"exec >&- 2>&-; exec sleep 600", -SIGTERM, "", true},
        {u"trap '' TERM; sleep 600 & trap - TERM; wait", -SIGTERM, "", true},
        // What the child has started has the grace too.
        {u"(trap 'sleep 0.05; echo bye; exit' TERM; sleep 600 & wait) & wait", -SIGTERM, "bye\n",
         true},
        {u"sleep 20 & wait", -SIGTERM, "", false},
    };
    std::string const fifo = m_folder.Native("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (auto const& [script, code, output, isOwnGroup] : cases) {
        SCOPED_TRACE(TString(script));
        // Whoever the script has started has this open for writing.
        ::pollfd writers = {::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), POLLIN, 0};
        Result const result = Shell(u"exec 4>fifo; " + TString(script))
                                  .WorkingDirectory(m_folder.Path())
                                  .OwnProcessGroup(isOwnGroup)
                                  .Deadline(kEnoughMs)
                                  .TerminationGrace(kEnoughMs)
                                  .Run();
        EXPECT_EQ(result.end, End::TimedOut);
        EXPECT_EQ(result.exitCode, std::max(code, -1));
        EXPECT_EQ(result.signal, std::max(-code, 0));
        EXPECT_EQ(result.output, output);
        EXPECT_EQ(::poll(&writers, 1, isOwnGroup ? kLongMs : 0), isOwnGroup ? 1 : 0);
        ::close(writers.fd);
    }
    EXPECT_TRUE(TProcessLaunch(u"true").Deadline(kLongMs).Run().Succeeded());
    EXPECT_EQ(TProcessLaunch(u"sleep", {u"600"}).Deadline(0).Run().Description(),
              u"did not end before its deadline");
    EXPECT_EQ(Shell(u"exit 3").Run().Description(), u"exited with code 3");
    EXPECT_EQ(Shell(u"kill -9 $$").Run().Description(), u"was ended by signal 9");
}

/// The descriptors of a child that is launched by other means.
std::string ListOtherwise()
{
    char text[1000];
    std::FILE* const stream = ::popen("ls /dev/fd", "r");
    std::size_t const n = std::fread(text, 1, sizeof(text), stream);
    ::pclose(stream);
    return std::string(text, n);
}

TEST_F(TProcessLaunchTest, DescriptorsStayOutOfTheChildrenOfOtherThreads)
{
    std::atomic<bool> isOver = false;
    OnThreads(3, [&isOver, usual = ListOtherwise()](unsigned thread) {
        for (int i = 0; thread != 0 && i != 50; ++i) {
            EXPECT_EQ(TProcessLaunch(u"ls", {u"/dev/fd"}).Run().output, "0\n1\n2\n3\n");
        }
        while (thread == 0 && !isOver) {
            EXPECT_EQ(ListOtherwise(), usual);
            for (int i = 0; i != 1000; ++i) {
                ::close(::open("/dev/null", O_RDONLY)); // inherited where nobody takes care
            }
        }
        isOver = true;
    });
}

// Each case is a role of this program, launched with signals blocked and ignored: 0 is what is
// right.
TEST_F(TProcessLaunchTest, StartsCleanProcessesInAnyProcess)
{
    ::sigset_t signals;
    ::sigset_t before;
    ::sigfillset(&signals);
    ::pthread_sigmask(SIG_BLOCK, &signals, &before);
    auto* const handler = std::signal(SIGPIPE, SIG_IGN);
    TPath const self(TSystemCore::ExecutableFilename());
    for (char16_t const* const role :
         {u"signals", u"no-streams", u"no-descriptors", u"no-processes", u"no-status"}) {
        Result const result = TProcessLaunch(self, {u"--child", role, u"/"}).Run();
        EXPECT_EQ(result.exitCode, 0) << TString(role) << result.output << result.errorOutput;
    }
    std::signal(SIGPIPE, handler);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

int SeeSignals()
{
    ::sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    bool isClean = ::getpgrp() == ::getpid();
    for (int const signal : {SIGPIPE, SIGTERM, SIGUSR1}) {
        isClean =
            isClean && !::sigismember(&blocked, signal) && std::signal(signal, SIG_DFL) == SIG_DFL;
    }
    return isClean ? 0 : 1;
}

/// The pipes lie where the standard streams belong.
int RunWithoutStreams()
{
    for (int i = 0; i != 3; ++i) {
        ::close(i);
    }
    Result const result = Shell(u"cat; echo err >&2").InputText(u"in").Run();
    bool const isRight = result.output == "in" && result.errorOutput == "err\n";
    return isRight && ::fcntl(0, F_GETFD) == -1 ? 0 : 1;
}

int RunWithFewDescriptors()
{
    auto const takeAll = [] {
        std::vector<int> taken;
        for (int next; (next = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) {
            taken.push_back(next);
        }
        return taken;
    };
    std::vector<int> taken = takeAll();
    for (std::size_t left = 0; left != 7; ++left, taken.pop_back()) {
        Result const result = TProcessLaunch(u"true").Run();
        bool const isShort = result.failure == Failure::Streams && result.error == EMFILE;
        std::vector<int> const again = takeAll();
        if (!(left < 5 ? isShort : result.Succeeded()) || again.size() != left || !IsChildless()) {
            return static_cast<int>(left) + 1;
        }
        for (int const descriptor : again) {
            ::close(descriptor);
        }
        ::close(taken.back());
    }
    return 0;
}

int RunWithoutProcesses()
{
    ::rlimit const none = {0, 0};
    ::setrlimit(RLIMIT_NPROC, &none);
    if (::getuid() == 0 && ::setuid(65534) != 0) { // no limit binds root
        return 1;
    }
    Result const result = TProcessLaunch(u"/bin/true").Run();
    // Not `exit`: a leak check at that point would want another process.
    ::_exit(result.failure == Failure::Program && result.error == EAGAIN && IsChildless() ? 0 : 2);
}

int RunWithoutStatus()
{
    std::signal(SIGCHLD, SIG_IGN);
    Result const result = TProcessLaunch(u"echo", {u"x"}).Run();
    return result.end == End::Unknown && result.output == "x\n" ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    auto const role = [](int (*run)()) { return [run](auto const& /*folder*/) { return run(); }; };
    return RunTestsOrChild({{"signals", role(SeeSignals)},
                            {"no-streams", role(RunWithoutStreams)},
                            {"no-descriptors", role(RunWithFewDescriptors)},
                            {"no-processes", role(RunWithoutProcesses)},
                            {"no-status", role(RunWithoutStatus)}},
                           argc, argv);
}
