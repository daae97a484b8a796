/// Benchmarks in rounds: a whole scenario is run by each contender in turn, again and again, and
/// what each run measured becomes rows of a table.

#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Rounds {

/// What one run gets.
struct Run
{
    int records;                  ///< How much there is to do.
    std::filesystem::path folder; ///< An empty one, removed behind the run.
};

/// Numbers by the name of what they measure.
using Measures = std::map<std::string, double>;

using Task = std::function<Measures(Run const&)>;

/// One scenario of the program; its contenders, at least two; and the measures that are shown, each
/// a row.
///
///     Scenario("1 million records", 1000000)
///         .Contender("ours", ...).Contender("peer", ...)
///         .AtLeast("records/s", 2.4).AtMost("CPU s", 0.6).Shown("bytes/line");
///
/// A task measures what all rows of the scenario show, and may measure more. Marks are about the
/// ratio of the first contender's median to the second's. Every run is a process of its own, so
/// that none inherits memory or threads, and `Usage` is of that run alone.
class Scenario
{
public:
    Scenario(std::string name, int records);

    Scenario& Contender(std::string name, Task task);
    Scenario& AtLeast(std::string measure, double mark);
    Scenario& AtMost(std::string measure, double mark);
    Scenario& Shown(std::string measure);
};

/// What the process has used so far.
struct Usage
{
    Usage();

    double cpuSeconds; ///< User and system time of all threads.
    double peakMemory; ///< The largest resident size, KiB on Linux.
};

double Median(std::vector<double> values);

/// Runs what the arguments choose and prints the table; returns the exit code of the program:
/// `--benchmark_filter=REGEX` of the scenarios' names, `--benchmark_repetitions=N` rounds,
/// `--records=N` at most in each run, for a quick look.
int Main(int argc, char** argv);

bool HasScenarios();

} // namespace Rounds
