/// Benchmarks in rounds: a whole scenario is run by each contender in turn, again and again, and
/// what each run measured becomes rows of a table.

#pragma once

#include "korcoreplatform/benchmarks/support/Report.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <regex>
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

/// One scenario of the program; its contenders, ours first; and the measures that are shown, each a
/// row.
///
///     Scenario("1 million records", 1000000)
///         .Contender("ours", ...).Contender("peer", ...)
///         .AtLeast("records/s", 2.4).AtMost("CPU s", 0.6).Shown("bytes/line");
///
/// A task measures what all rows of the scenario show, and may measure more. Marks are about the
/// ratio of the first contender to the second. Every run is a process of its own, so that none
/// inherits memory (but that of `Holding`) or threads, and `Usage` is of that run alone.
class Scenario
{
public:
    Scenario(std::string name, int records);

    Scenario& Contender(std::string name, Task task);

    /// What the machine needs at the least, whoever asks it: not a contender. At most one; it need
    /// not measure everything.
    Scenario& Limit(std::string name, Task task);

    /// So many runs of each task make a round, each with a ratio of its own: for tasks that are
    /// over soon, or whose time varies.
    Scenario& Runs(int perRound);

    /// So many bytes are there, touched before the first run and part of each.
    Scenario& Holding(std::size_t bytes);

    Scenario& AtLeast(std::string measure, double mark);
    Scenario& AtMost(std::string measure, double mark);
    Scenario& Shown(std::string measure);

    /// Where the row of the measure shown last stands in a plot: on the curve of that name, at `x`.
    Scenario& At(std::string plot, std::string curve, double x);
};

/// What the process has used so far.
struct Usage
{
    Usage();

    double cpuSeconds; ///< User and system time of all threads.
    double peakMemory; ///< The largest resident size, KiB on Linux.
};

using Report::Median;

struct Settings
{
    std::regex filter{""}; ///< Of the rows' names; this one finds itself in all.
    int rounds = 5;
    int records = std::numeric_limits<int>::max(); ///< At most so many in each run.
};

/// Runs the scenarios that the settings choose and adds their rows to the report.
/// Throws: an exception of the standard library when a run fails.
void RunAll(Settings const& settings);

} // namespace Rounds
