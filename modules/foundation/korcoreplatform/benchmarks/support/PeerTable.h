/// Benchmarks in rows: one task done by this library and by its peers, with the ratio to reach.

#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace PeerTable {

using Task = std::function<void(benchmark::State&)>;

/// One row of the table. `mark` is the greatest ratio of our time to the best peer's time that
/// counts as reached.
///
///     Row("find a unit", 1.0).Ours(...).Peer("QString", ...).Peer("std", ...);
///
/// The tasks of all rows run interleaved; each ratio is made of medians.
class Row
{
public:
    Row(std::string name, double mark);

    Row& Ours(Task task);
    Row& Peer(std::string peer, Task task);

private:
    std::string m_name;
};

/// Runs the rows and prints the table; the arguments are those of the benchmark library. Returns
/// the exit code of the program.
int Main(int argc, char** argv);

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
