/// Benchmarks in rows: one task done by this library and by its peers, with the ratio to reach.

#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <regex>
#include <string>
#include <vector>

namespace PeerTable {

using Task = std::function<void(benchmark::State&)>;

constexpr double kNoMark = std::numeric_limits<double>::infinity();

/// One row of the table. `mark` is the greatest ratio of our time to the best peer's time that
/// counts as reached.
///
///     Row("find a unit", 1.0).Ours(...).Peer("QString", ...).Peer("std", ...);
///
/// A round runs all rows. The tasks of a row take turns in short runs, so that they meet the
/// machine in the same state; what counts is processor time.
class Row
{
public:
    explicit Row(std::string const& name, double mark = kNoMark);

    Row& Ours(Task task);
    Row& Peer(std::string const& peer, Task task);

    /// What the machine, or a rule that binds us, takes for what cannot be avoided: not a peer. At
    /// most one.
    Row& Limit(std::string const& name, Task task);

    /// So many runs of each task make a round, each with a ratio of its own: for tasks whose time
    /// varies.
    Row& Runs(int perRound);

    /// Where the row stands in a plot: on the curve of that name, at `x`.
    Row& At(std::string const& plot, std::string const& curve, double x);

private:
    std::size_t m_index; ///< Among all rows.
};

/// Takes the arguments, which are those of the benchmark library. Returns whether that knows them.
bool TakeArguments(std::string program, std::vector<std::string> const& arguments);

/// Runs the rows that the filter finds by their names and adds them to the report.
void RunAll(std::regex const& filter, int rounds);

/// Runs `once` for as long as the benchmark wants; what it returns is kept from the optimiser.
template <class Once>
Task Repeat(Once once)
{
    return [once](benchmark::State& state) mutable {
        for (auto _ : state) {
            auto result = once();
            benchmark::DoNotOptimize(result);
            benchmark::ClobberMemory();
        }
    };
}

/// As `Repeat` for something that gives nothing back.
template <class Once>
Task RepeatAction(Once once)
{
    return [once](benchmark::State& state) mutable {
        for (auto _ : state) {
            once();
            benchmark::ClobberMemory();
        }
    };
}

} // namespace PeerTable
