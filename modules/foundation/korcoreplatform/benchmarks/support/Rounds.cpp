#include "korcoreplatform/benchmarks/support/Rounds.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Rounds {
namespace {

constexpr double kNoMark = std::numeric_limits<double>::infinity();

struct Shown
{
    std::string measure;
    char const* better; ///< "less", "more", or empty: there is no mark.
    double mark;
    Report::Point point;
};

struct Entry
{
    std::string name;
    int records;
    std::vector<std::pair<std::string, Task>> contenders;
    std::vector<std::pair<std::string, Task>> limit; ///< One or none.
    std::vector<Shown> shown;
    int runsPerRound = 1;
    std::size_t heldBytes = 0;
};

/// In the order of their registration. A scenario that is being described is the last one.
std::deque<Entry>& Entries()
{
    static std::deque<Entry> s_entries;
    return s_entries;
}

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kor-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot create " + name);
        }
        m_path = name;
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::filesystem::path const& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// The child's side: the measures go into the pipe, one a line.
[[noreturn]] void RunTask(Task const& task, Run const& run, int pipe)
{
    int exitCode = EXIT_FAILURE;
    try {
        for (auto const& [name, value] : task(run)) {
            ::dprintf(pipe, "%.17g %s\n", value, name.c_str());
        }
        exitCode = EXIT_SUCCESS;
    } catch (std::exception const& e) {
        std::fprintf(stderr, "%s\n", e.what());
    }
    ::_exit(exitCode);
}

Measures ReadMeasures(int pipe)
{
    Measures measures;
    std::FILE* const stream = ::fdopen(pipe, "r");
    double value = 0;
    char name[100];
    while (stream != nullptr && std::fscanf(stream, "%lf %99[^\n]", &value, name) == 2) {
        measures[name] = value;
    }
    if (stream != nullptr) {
        std::fclose(stream);
    }
    return measures;
}

Measures RunInChild(Task const& task, int records)
{
    TemporaryFolder const folder;
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("cannot create a pipe");
    }
    std::fflush(stdout);
    ::pid_t const child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        RunTask(task, {records, folder.Path()}, ends[1]);
    }
    ::close(ends[1]);
    Measures measures = ReadMeasures(ends[0]);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a run failed");
    }
    return measures;
}

/// By measure, then by who, one number a run.
using Results = std::map<std::string, std::map<std::string, std::vector<double>>>;

Results RunRounds(Entry const& entry, Settings const& settings)
{
    std::vector<char> held(entry.heldBytes, 'x');
    benchmark::DoNotOptimize(held.data());
    Results results;
    int const records = std::min(entry.records, settings.records);
    for (int run = 0; run < settings.rounds * entry.runsPerRound; ++run) {
        for (auto const* all : {&entry.contenders, &entry.limit}) {
            for (auto const& [who, task] : *all) {
                for (auto const& [measure, value] : RunInChild(task, records)) {
                    results[measure][who].push_back(value);
                }
            }
        }
    }
    return results;
}

std::string NameOf(Entry const& entry, Shown const& shown)
{
    return entry.name + ": " + shown.measure;
}

Report::Row MakeRow(Entry const& entry, Shown const& shown,
                    std::map<std::string, std::vector<double>> const& figures)
{
    bool const hasPeer = entry.contenders.size() > 1;
    std::string const peer = hasPeer ? entry.contenders[1].first : "";
    Report::Row row = {NameOf(entry, shown), "", shown.better, shown.mark, peer};
    row.point = shown.point;
    for (auto const& [who, task] : entry.contenders) {
        row.contenders.push_back({who, figures.at(who)});
    }
    for (auto const& [who, task] : entry.limit) {
        if (auto const found = figures.find(who); found != figures.end()) {
            row.limit.push_back({who, found->second});
        }
    }
    return row;
}

} // namespace

Scenario::Scenario(std::string name, int records)
{
    Entries().push_back({std::move(name), records, {}, {}, {}});
}

Scenario& Scenario::Contender(std::string name, Task task)
{
    Entries().back().contenders.emplace_back(std::move(name), std::move(task));
    return *this;
}

Scenario& Scenario::Limit(std::string name, Task task)
{
    Entries().back().limit.emplace_back(std::move(name), std::move(task));
    return *this;
}

Scenario& Scenario::Runs(int perRound)
{
    Entries().back().runsPerRound = perRound;
    return *this;
}

Scenario& Scenario::Holding(std::size_t bytes)
{
    Entries().back().heldBytes = bytes;
    return *this;
}

Scenario& Scenario::AtLeast(std::string measure, double mark)
{
    Entries().back().shown.push_back({std::move(measure), "more", mark, {}});
    return *this;
}

Scenario& Scenario::AtMost(std::string measure, double mark)
{
    Entries().back().shown.push_back({std::move(measure), "less", mark, {}});
    return *this;
}

Scenario& Scenario::Shown(std::string measure)
{
    Entries().back().shown.push_back({std::move(measure), "", kNoMark, {}});
    return *this;
}

Scenario& Scenario::At(std::string plot, std::string curve, double x)
{
    Entries().back().shown.back().point = {std::move(plot), std::move(curve), x};
    return *this;
}

Usage::Usage()
{
    struct rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    auto const seconds = [](struct timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    peakMemory = static_cast<double>(usage.ru_maxrss);
}

void RunAll(Settings const& settings)
{
    for (Entry const& entry : Entries()) {
        bool const isChosen =
            std::any_of(entry.shown.begin(), entry.shown.end(), [&](Shown const& shown) {
                return std::regex_search(NameOf(entry, shown), settings.filter);
            });
        if (isChosen) {
            Results const results = RunRounds(entry, settings);
            for (Shown const& shown : entry.shown) {
                Report::Add(MakeRow(entry, shown, results.at(shown.measure)));
            }
        }
    }
}

} // namespace Rounds
