#include "korcoreplatform/main/core/system/TProcess.h"

#include "korcoreplatform/main/core/system/TEnvironment.h"
#include "korcoreplatform/main/core/system/TProcessLaunch.h"
#include "korcoreplatform/main/core/system/TSystem.h"
#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"
#include "korsys/tests/support/Threads.h"

#include <QProcess>
#include <QStringList>

#include <sys/resource.h>
#include <sys/time.h>

namespace {

using Texts = std::vector<TString>;

TPath const kShell(u"/bin/sh");

int ExitCodeOf(int pid)
{
    int status = 0;
    return ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What the process gives on its current read channel.
std::string Output(TProcess& process, TString const& script)
{
    process.Start(kShell, {u"-c", script});
    EXPECT_TRUE(process.WaitUntilExited(kLongMs));
    std::vector<char> const bytes = process.ReadAll();
    return std::string(bytes.begin(), bytes.end());
}

/// Leaves children behind: two that nobody asked for, or one that was asked for and a failure.
/// Signals keep coming that interrupt what waits.
[[noreturn]] void Leave(bool isAsked)
{
    // Registered first, so it runs after what waits, and may still spawn.
    std::atexit([] {
        TProcess::Spawn(kShell, {u"-c", u":"}, nullptr, nullptr);
        std::fputs(IsChildless() ? "no child" : "a child is left", stderr);
    });
    Texts const slow = {u"-c", u"sleep 0.3; printf 'slow, ' >&2"};
    int pid = 0;
    TProcess::Spawn(kShell, slow, isAsked ? &pid : nullptr, nullptr);
    TProcess::Spawn(isAsked ? TPath(u"/none") : kShell, {u"-c", u"exit"}, nullptr, nullptr);
    struct ::sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);
    ::itimerval const often = {{0, 2000}, {0, 2000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    std::exit(0);
}

TEST(TProcessDeathTest, ExitWaitsForWhoeverNobodyElseWaitsFor)
{
    EXPECT_EXIT(Leave(false), testing::ExitedWithCode(0), "^slow, no child$");
    EXPECT_EXIT(Leave(true), testing::ExitedWithCode(0), "^slow, no child$");
}

TEST(TProcessTest, RunWithOutputTellsEveryEndAndLeavesNothingBehind)
{
    TString const odd(u"\u00e9\ufffd\0z\n", 5);
    TString const megabyte(u'a', 1 << 20);
    std::tuple<char16_t const*, char16_t const*, TProcess::ProcessError, TString, int> const
        cases[] = {
            {u"/bin/sh", u"printf text; echo err >&2", TProcess::NoError, u"text", 0},
            {u"sh", u":", TProcess::NoError, u"before", 0},
            {u"sh", u"exit 3", TProcess::UnknownError, u"before", 3},
            {u"sh", u"printf x; exit 255", TProcess::UnknownError, u"x", 255},
            {u"sh", u"printf x; kill -9 $$", TProcess::Crashed, u"before", -7},
            {u"sh", u"printf x; exec sleep 60", TProcess::TimedOut, u"before", -7},
            {u"sh", u"printf '\\303\\251\\377\\000z\\n'", TProcess::NoError, odd, 0},
            {u"sh", u"head -c 1048576 /dev/zero | tr '\\0' a", TProcess::NoError, megabyte, 0},
            {u"/none", u"", TProcess::TimedOut, u"before", -7},
        };
    long descriptors = 0;
    for (auto const& [program, script, result, expected, expectedCode] : cases) {
        SCOPED_TRACE(TString(script));
        TString output(u"before");
        int exitCode = -7;
        int const timeoutMs = result == TProcess::TimedOut ? 300 : kLongMs;
        Texts const arguments = {u"-c", script};
        EXPECT_EQ(TProcess::RunWithOutput(TPath(program), arguments, output, exitCode, timeoutMs),
                  result);
        EXPECT_TRUE(output == expected && exitCode == expectedCode && IsChildless()) << exitCode;
        descriptors = descriptors == 0 ? CountOpenDescriptors() : descriptors;
        EXPECT_EQ(CountOpenDescriptors(), descriptors); // what the first run opened stays
    }
}

TEST(TProcessTest, EveryWayToStartPassesArgumentsUnchanged)
{
    // The file gets its name when it is complete, for who does not wait.
    TString const script =
        u"for a; do printf '[%s]' \"$a\"; done > \"$0.part\"; mv \"$0.part\" \"$0\"";
    Texts const arguments = {u"a b",     u"'x' \\ \"", u"line\nbreak",           u"",
                             u"$HOME *", u"\u00e9",    TString(u'x', 100 * 1024)};
    TString const expected = u"[" + TString::join(arguments, u"][") + u"]";
    Texts all;
    TString output;
    int code = 0, pid = 0;
    unsigned int detached = 0;
    std::function<bool()> const launchers[] = {
        [&] { return TProcess::Execute(kShell, all) == 0; },
        [&] { return TProcessLaunch(kShell, all).Run().Succeeded(); },
        [&] { return TProcess::RunWithOutput(kShell, all, output, code, -1) == TProcess::NoError; },
        [&] { return TProcess::StartDetached(kShell, all); },
        [&] { return TProcess::StartDetached(kShell, all, TPath(), &detached) && detached > 1; },
        [&] { return TProcess::Spawn(kShell, all, &pid, nullptr) && ExitCodeOf(pid) == 0; },
    };
    for (auto const& launch : launchers) {
        SCOPED_TRACE(&launch - launchers);
        TemporaryFolder const folder;
        all = {u"-c", script, TString(folder / u"file")};
        all.insert(all.end(), arguments.begin(), arguments.end());
        ASSERT_TRUE(launch());
        for (int ms = 0; ms != kLongMs && folder.Read("file") == "(missing)"; ++ms) {
            ::usleep(1000);
        }
        EXPECT_TRUE(folder.Read("file") == expected.toStdString());
    }
}

TEST(TProcessTest, IsAStreamOfTheChildsStandardStreams)
{
    TProcess process;
    process.Start(TPath(u"cat"), {});
    EXPECT_TRUE(process.WaitUntilStarted() && process.IsOpen());
    EXPECT_EQ(process.Write("abcdef", 3), 3);
    process.CloseWriteChannel();
    EXPECT_TRUE(process.WaitUntilExited(kLongMs));
    char bytes[9] = {};
    EXPECT_TRUE(process.Size() == 3 && !process.AtEnd() && process.Read(bytes, 9) == 3);
    EXPECT_STREQ(bytes, "abc");
    EXPECT_TRUE(process.AtEnd() && process.ExitStatus() == TProcess::NormalExit);

    for (int const signal : {SIGKILL, SIGTERM}) {
        process.Start(TPath(u"sleep"), {u"60"});
        EXPECT_TRUE(process.WaitUntilStarted());
        auto const pid = static_cast<unsigned int>(process.PID());
        EXPECT_TRUE(TProcess::IsProcessRunning(pid) && !process.WaitUntilExited(0));
        signal == SIGKILL ? process.Kill() : process.Terminate();
        EXPECT_TRUE(process.WaitUntilExited(kLongMs) && !TProcess::IsProcessRunning(pid));
        EXPECT_TRUE(process.ExitStatus() == TProcess::CrashExit && process.ExitCode() == signal);
        EXPECT_EQ(process.Error(), TProcess::Crashed);
    }
    process.Start(TPath(u"sleep"), {u"60"});
    process.Close();
    EXPECT_TRUE(!process.IsOpen() && IsChildless());
}

TEST(TProcessTest, StreamsDirectoryAndVariablesAreChosen)
{
    TString const script = u"printf out; printf err >&2";
    TProcess chosen;
    chosen.ReadChannel(TProcess::StandardError);
    EXPECT_EQ(Output(chosen, script), "err");
    EXPECT_EQ(chosen.ReadChannel(), TProcess::StandardError);
    TProcess merged;
    merged.ProcessChannelMode(TProcess::MergedChannels);
    EXPECT_EQ(Output(merged, script), "outerr");
    EXPECT_EQ(merged.ProcessChannelMode(), TProcess::MergedChannels);

    TemporaryFolder const folder;
    folder.Write("in", "input ");
    folder.Write("out", "replaced");
    folder.Write("err", "kept ");
    TProcess process;
    process.StdInFile(folder / u"in");
    process.StdOutFile(folder / u"out");
    process.StdErrFile(folder / u"err", TIO::Append);
    process.WorkingDirectory(folder.Path());
    TEnvironment environment;
    environment.insert(u"EMPTY", u"");
    process.Environment(environment);
    EXPECT_TRUE(process.WorkingDirectory() == folder.Path() &&
                process.Environment() == environment);
    EXPECT_EQ(Output(process, u"cat; cat in; printf \"${EMPTY-no}${HOME-no}\"; printf e >&2"), "");
    EXPECT_EQ(folder.Read("out") + folder.Read("err"), "input input nokept e");

    TProcess source, sink;
    source.StdOutProcess(sink);
    source.Start(kShell, {u"-c", u"printf piped"});
    EXPECT_EQ(Output(sink, u"tr a-z A-Z"), "PIPED");
}

TEST(TProcessTest, FailuresToStartAreReported)
{
    constexpr char kNotOpened[] = "TIOException_AutoGen_0xC3D29B3D";
    TProcess process;
    EXPECT_KOR_ERROR_TEXT(process.Open(TIO::ReadWrite), TIO::Exception, kNotOpened,
                          TString(process.GetQProcess()->errorString()));
    process.GetQProcess()->setProgram("cat");
    EXPECT_TRUE(process.Open(TIO::ReadOnly));
    EXPECT_KOR_ERROR(process.Open(TIO::ReadWrite), TIO::Exception, kNotOpened);
    EXPECT_EQ(process.GetQIODevice()->openMode(), QIODevice::ReadOnly);
    process.Close();

    for (TPath const& program : {TPath(u"/none"), TPath(u"/etc/passwd"), TPath(u"/"), TPath()}) {
        SCOPED_TRACE(TString(program));
        process.Start(program, {});
        EXPECT_TRUE(!process.WaitUntilStarted() && process.Error() == TProcess::FailedToStart);
        EXPECT_EQ(TProcess::Execute(program, {}), -2);
        EXPECT_FALSE(TProcess::StartDetached(program, {}, TPath(), nullptr));
        int pid = 7;
        EXPECT_TRUE(!TProcess::Spawn(program, Texts(), &pid, nullptr) && pid == -1);
    }
    EXPECT_EQ(TProcess::Execute(kShell, {u"-c", u"kill -9 $$"}), -1);
    EXPECT_TRUE(IsChildless());
}

TEST(TProcessTest, ASpawnedChildHasThreeStreamsAndTheGivenVariables)
{
    int const high = ::fcntl(STDIN_FILENO, F_DUPFD, 300);
    int const low = ::fcntl(STDIN_FILENO, F_DUPFD, 3);
    QString const script = "for d; do [ ! -e /dev/fd/$d ] || exit 1; done; "
                           "for d in 0 1 2; do [ -e /dev/fd/$d ] || exit 2; done; "
                           "exit ${OWN-0}${KOR_TEST_INHERITED-0}";
    QStringList const list = {"-c", script, "sh", QString::number(low), QString::number(high)};
    TSystem::SetEnvironmentString(u"KOR_TEST_INHERITED", u"3");
    std::string own = "OWN=4";
    char* ownOnly[] = {own.data(), nullptr};
    int pid = 0;
    EXPECT_TRUE(TProcess::Spawn(kShell, Texts(list.begin(), list.end()), &pid, ownOnly));
    EXPECT_EQ(ExitCodeOf(pid), 40);
    EXPECT_TRUE(TProcess::Spawn(kShell, list, &pid));
    EXPECT_EQ(ExitCodeOf(pid), 3);
    ::close(low);
    ::close(high);
}

/// Ends with 0 when every descriptor is marked although none is left to list them with.
[[noreturn]] void MarkWithoutDescriptors()
{
    ::rlimit const few = {32, 32};
    ::setrlimit(RLIMIT_NOFILE, &few);
    while (::dup(STDIN_FILENO) >= 0) {}
    TProcess::Set_FD_CLOEXEC_BeforeSpawn();
    bool isMarked = true;
    for (int descriptor = 3; descriptor != 32; ++descriptor) {
        isMarked = isMarked && ::fcntl(descriptor, F_GETFD) == FD_CLOEXEC;
    }
    std::_Exit(isMarked ? 0 : 1);
}

TEST(TProcessTest, DescriptorsAreMarkedEvenWhenNoneIsLeft)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "this build's checks of types need descriptors themselves";
#endif
    EXPECT_EXIT(MarkWithoutDescriptors(), testing::ExitedWithCode(0), "");
}

TEST(TProcessTest, VariablesChangeWhileProcessesAreStarted)
{
    std::atomic<bool> isOver{false};
    OnThreads(2, [&isOver](unsigned thread) {
        for (int i = 0; thread == 0 && !isOver; ++i) {
            TSystem::SetEnvironmentBool(u"KOR_TEST_" + TString::number(i % 3000), true);
        }
        for (int i = 0; thread != 0 && i != 50; ++i) {
            int pid = 0;
            EXPECT_TRUE(TProcess::Spawn(kShell, {u"-c", u":"}, &pid, nullptr) &&
                        ExitCodeOf(pid) == 0);
            EXPECT_FALSE(TEnvironment::myEnvironment().isEmpty());
            EXPECT_TRUE(TProcessLaunch(TPath(u"true")).Run().Succeeded());
        }
        isOver = true;
    });
}

TEST(TProcessTest, ErrorsAreWrittenByName)
{
    std::ostringstream out;
    for (int const value : {0, 1, 2, 3, 4, 5, 6, 7, 1000, -1}) {
        out << static_cast<TProcess::ProcessError>(value) << '|';
    }
    EXPECT_EQ(out.str(), "FailedToStart|Crashed|TimedOut|ReadError|WriteError|UnknownError|"
                         "Unknown (6)|Unknown (7)|NoError|Unknown (-1)|");
}

} // namespace
