#include "korcoreplatform/benchmarks/support/Rounds.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <regex>
#include <stdexcept>
#include <utility>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Rounds {
namespace {

constexpr int kNameColumns = 34;
constexpr int kNumberColumns = 12;

struct Row
{
    std::string measure;
    char const* relation; ///< ">=", "<=", or empty: there is no mark.
    double mark;
};

struct Entry
{
    std::string name;
    int records;
    std::vector<std::pair<std::string, Task>> contenders;
    std::vector<Row> rows;
};

/// In the order of their registration. A scenario that is being described is the last one.
std::deque<Entry>& Entries()
{
    static std::deque<Entry> s_entries;
    return s_entries;
}

struct Settings
{
    std::regex filter{""}; ///< Finds itself in every name.
    int rounds = 5;
    int records = std::numeric_limits<int>::max();
};

/// The value of an argument "name=value"; nothing when it is another one.
std::optional<std::string> ValueOf(std::string const& argument, std::string const& name)
{
    std::string const start = name + "=";
    if (argument.compare(0, start.size(), start) != 0) {
        return std::nullopt;
    }
    return argument.substr(start.size());
}

int PositiveNumber(std::string const& text)
{
    int const number = std::stoi(text);
    if (number < 1) {
        throw std::invalid_argument(text);
    }
    return number;
}

/// Throws an exception of the standard library for an argument that cannot be understood.
Settings ReadArguments(int argc, char** argv)
{
    Settings settings;
    for (int i = 1; i < argc; ++i) {
        std::string const argument = argv[i];
        if (auto const filter = ValueOf(argument, "--benchmark_filter")) {
            settings.filter = *filter;
        } else if (auto const rounds = ValueOf(argument, "--benchmark_repetitions")) {
            settings.rounds = PositiveNumber(*rounds);
        } else if (auto const records = ValueOf(argument, "--records")) {
            settings.records = PositiveNumber(*records);
        } else {
            throw std::invalid_argument(argument);
        }
    }
    return settings;
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

/// By measure, then by contender, one number a round.
using Results = std::map<std::string, std::map<std::string, std::vector<double>>>;

Results RunRounds(Entry const& entry, Settings const& settings)
{
    Results results;
    int const records = std::min(entry.records, settings.records);
    for (int round = 0; round != settings.rounds; ++round) {
        for (auto const& [contender, task] : entry.contenders) {
            for (auto const& [measure, value] : RunInChild(task, records)) {
                results[measure][contender].push_back(value);
            }
        }
    }
    return results;
}

void PrintHead(Entry const& entry)
{
    std::printf("%-*s", kNameColumns, entry.name.c_str());
    for (auto const& [contender, task] : entry.contenders) {
        std::printf(" %*s", kNumberColumns, contender.c_str());
    }
    std::printf("\n");
}

void PrintRatio(Row const& row, std::vector<double> const& ours, std::vector<double> const& peers)
{
    double const ratio = Median(ours) / Median(peers);
    std::vector<double> ratios;
    std::transform(ours.begin(), ours.end(), peers.begin(), std::back_inserter(ratios),
                   std::divides<>());
    auto const [low, high] = std::minmax_element(ratios.begin(), ratios.end());
    std::printf("   %.2f (%.2f to %.2f)", ratio, *low, *high);
    if (row.relation[0] != '\0') {
        bool const isReached = row.relation[0] == '<' ? ratio <= row.mark : ratio >= row.mark;
        std::printf(" %s %.2f: %s", row.relation, row.mark, isReached ? "reached" : "NOT reached");
    }
}

/// The medians of all, the ratio of the first two, and the lowest and highest that it had in a
/// round.
void PrintRow(Entry const& entry, Row const& row, Results& results)
{
    std::printf("  %-*s", kNameColumns - 2, row.measure.c_str());
    for (auto const& [contender, task] : entry.contenders) {
        double const median = Median(results[row.measure].at(contender));
        std::printf(" %*.*f", kNumberColumns, median < 100 ? 3 : 0, median);
    }
    PrintRatio(row, results[row.measure].at(entry.contenders[0].first),
               results[row.measure].at(entry.contenders[1].first));
    std::printf("\n");
}

} // namespace

Scenario::Scenario(std::string name, int records)
{
    Entries().push_back({std::move(name), records, {}, {}});
}

Scenario& Scenario::Contender(std::string name, Task task)
{
    Entries().back().contenders.emplace_back(std::move(name), std::move(task));
    return *this;
}

Scenario& Scenario::AtLeast(std::string measure, double mark)
{
    Entries().back().rows.push_back({std::move(measure), ">=", mark});
    return *this;
}

Scenario& Scenario::AtMost(std::string measure, double mark)
{
    Entries().back().rows.push_back({std::move(measure), "<=", mark});
    return *this;
}

Scenario& Scenario::Shown(std::string measure)
{
    Entries().back().rows.push_back({std::move(measure), "", 0});
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

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t const half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

bool HasScenarios()
{
    return !Entries().empty();
}

int Main(int argc, char** argv)
{
    Settings settings;
    try {
        settings = ReadArguments(argc, argv);
    } catch (std::exception const& e) {
        std::fprintf(stderr,
                     "cannot understand %s\n"
                     "arguments: [--benchmark_filter=REGEX] [--benchmark_repetitions=ROUNDS] "
                     "[--records=N]\n",
                     e.what());
        return 2;
    }
    std::printf("medians of %d rounds; ratio of the first two (lowest to highest of a round)\n",
                settings.rounds);
    try {
        for (Entry const& entry : Entries()) {
            if (std::regex_search(entry.name, settings.filter)) {
                Results results = RunRounds(entry, settings);
                PrintHead(entry);
                for (Row const& row : entry.rows) {
                    PrintRow(entry, row, results);
                }
            }
        }
    } catch (std::exception const& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}

} // namespace Rounds
