// Programs run to their end with their output collected, by wall time: the most of it is spent
// waiting for the child. A run's figure is the median of many launches.

#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/system/TProcessLaunch.h"

#include <QProcess>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kGiB = std::size_t(1) << 30;
constexpr std::size_t kMiB = std::size_t(1) << 20;
constexpr int kLaunches = 100;
constexpr std::size_t kPieceBytes = 64 * 1024;

/// Runs a program that says "hello" when it gets that as its argument, and returns what it said.
using Launch = std::function<std::string(std::string const& program, bool isToSpeak)>;

std::string Ours(std::string const& program, bool isToSpeak)
{
    std::vector<TString> arguments;
    if (isToSpeak) {
        arguments.emplace_back(u"hello");
    }
    TProcessLaunch::Result result =
        TProcessLaunch(TString::fromStdString(program), arguments).Run();
    if (!result.Succeeded()) {
        throw std::runtime_error("cannot run " + program);
    }
    return std::move(result.output);
}

std::string Qt(std::string const& program, bool isToSpeak)
{
    QProcess process;
    process.start(QString::fromStdString(program),
                  isToSpeak ? QStringList{QStringLiteral("hello")} : QStringList());
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        throw std::runtime_error("cannot run " + program);
    }
    return process.readAllStandardOutput().toStdString();
}

void ReadAll(int descriptor, std::string& bytes)
{
    static char s_piece[kPieceBytes];
    for (::ssize_t n; (n = ::read(descriptor, s_piece, sizeof(s_piece))) > 0;) {
        bytes.append(s_piece, static_cast<std::size_t>(n));
    }
}

/// The least that a program needs for it: one pipe, no care for anything.
std::string Bare(std::string const& program, bool isToSpeak)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    ::posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    char hello[] = "hello";
    std::string name = program;
    char* const arguments[] = {name.data(), isToSpeak ? hello : nullptr, nullptr};
    ::pid_t id = 0;
    int const error = ::posix_spawn(&id, name.c_str(), &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::string bytes;
    ReadAll(ends[0], bytes);
    ::close(ends[0]);
    int status = 0;
    if (error != 0 || ::waitpid(id, &status, 0) != id || status != 0) {
        throw std::runtime_error("cannot run " + program);
    }
    return bytes;
}

double Seconds(Clock::time_point from)
{
    return std::chrono::duration<double>(Clock::now() - from).count();
}

Rounds::Task Launches(Launch const& launch, std::string const& program)
{
    return [=](Run const& run) {
        bool const isToSpeak = program == "/bin/echo";
        std::vector<double> times;
        for (int i = 0; i != run.records; ++i) {
            Clock::time_point const start = Clock::now();
            std::string const output = launch(program, isToSpeak);
            times.push_back(Seconds(start) * 1e6);
            if (output != (isToSpeak ? "hello\n" : "")) {
                throw std::runtime_error("wrong output of " + program);
            }
        }
        return Measures{{"us", Rounds::Median(times)}};
    };
}

/// How long it takes to collect what "dd" prints in blocks of a MiB. Both sides end with all of it
/// in one string.
template <class Collect>
Rounds::Task Collects(Collect collect)
{
    return [=](Run const& run) {
        auto const mib = static_cast<std::size_t>(run.records);
        Clock::time_point const start = Clock::now();
        std::string const output = collect(std::to_string(mib));
        double const seconds = Seconds(start);
        if (output.size() != mib * kMiB) {
            throw std::runtime_error("some output is missing");
        }
        return Measures{{"s", seconds}};
    };
}

std::string CollectByOurs(std::string const& mib)
{
    TString const count = u"count=" + TString::fromStdString(mib);
    return TProcessLaunch(u"/bin/dd", {u"if=/dev/zero", u"bs=1M", count, u"status=none"})
        .Run()
        .output;
}

std::string CollectByPopen(std::string const& mib)
{
    std::string const command = "exec /bin/dd if=/dev/zero bs=1M status=none count=" + mib;
    std::FILE* const stream = ::popen(command.c_str(), "r");
    if (stream == nullptr) {
        throw std::system_error(errno, std::generic_category());
    }
    std::string bytes;
    ReadAll(::fileno(stream), bytes);
    ::pclose(stream);
    return bytes;
}

/// A launch is nearly all the system's work, so that the bare calls are what there is to reach.
bool const s_areRegistered = [] {
    struct Parent
    {
        std::string text;
        std::size_t heldBytes;
        double qtMark;
    };
    for (Parent const& parent :
         {Parent{"small parent", 0, 0.75}, Parent{"parent of 1 GiB", kGiB, 0.1}}) {
        for (std::string const program : {"/bin/true", "/bin/echo"}) {
            std::string const name = "launch " + program + ", " + parent.text;
            auto const by = [&](Launch const& launch) { return Launches(launch, program); };
            Scenario(name + ", beside QProcess", kLaunches)
                .Holding(parent.heldBytes)
                .Contender("ours", by(Ours))
                .Contender("QProcess", by(Qt))
                .AtMost("us", parent.qtMark);
            Scenario(name + ", beside bare calls", kLaunches)
                .Holding(parent.heldBytes)
                .Runs(4) // the mark is near, and a run is over soon
                .Contender("ours", by(Ours))
                .Contender("posix_spawn", by(Bare))
                .AtMost("us", 1.15);
        }
    }
    Scenario("1 GiB of output into memory", static_cast<int>(kGiB / kMiB))
        .Contender("ours", Collects(CollectByOurs))
        .Contender("popen", Collects(CollectByPopen))
        .AtMost("s", 1.0);
    return true;
}();

} // namespace
