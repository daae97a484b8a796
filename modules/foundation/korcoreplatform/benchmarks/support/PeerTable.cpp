#include "korcoreplatform/benchmarks/support/PeerTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

namespace PeerTable {
namespace {

constexpr char kOurs[] = "ours";

struct Entry
{
    std::string name;
    double mark;
};

/// The rows in the order of their registration.
std::vector<Entry>& Rows()
{
    static std::vector<Entry> s_rows;
    return s_rows;
}

void Register(std::string const& row, std::string const& who, Task task)
{
    benchmark::RegisterBenchmark((row + "|" + who).c_str(), std::move(task));
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t const half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// Collects the times of all runs and prints the table when all are over.
class TableReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(Context const& context) override
    {
        PrintBasicContext(&GetErrorStream(), context);
        return true;
    }

    void ReportRuns(std::vector<Run> const& runs) override
    {
        for (Run const& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                // Registered as "row|who"; the library adds "/..." for its own settings.
                std::string name = run.run_name.function_name;
                std::size_t const bar = name.rfind('|');
                m_times[name.substr(0, bar)][name.substr(bar + 1)].push_back(
                    run.GetAdjustedCPUTime());
            }
        }
    }

    void Finalize() override
    {
        std::printf("%-44s %10s %10s  %-14s %6s %6s\n", "row", "ours ns", "best ns", "best peer",
                    "ratio", "mark");
        for (Entry const& row : Rows()) {
            auto const found = m_times.find(row.name);
            if (found != m_times.end()) {
                PrintRow(row, found->second);
            }
        }
    }

private:
    using Times = std::map<std::string, std::vector<double>>;

    static void PrintRow(Entry const& row, Times const& times)
    {
        double ours = 0;
        double best = 0;
        std::string bestPeer;
        std::string others;
        for (auto const& [who, values] : times) {
            double const median = Median(values);
            if (who == kOurs) {
                ours = median;
                continue;
            }
            char text[80];
            std::snprintf(text, sizeof(text), "  %s %.1f", who.c_str(), median);
            others += text;
            if (bestPeer.empty() || median < best) {
                best = median;
                bestPeer = who;
            }
        }
        double const ratio = ours / best;
        std::printf("%-44s %10.1f %10.1f  %-14s %6.2f %6.2f %s %s\n", row.name.c_str(), ours, best,
                    bestPeer.c_str(), ratio, row.mark,
                    !std::isfinite(row.mark) ? "no mark"
                    : ratio <= row.mark      ? "reached"
                                             : "  NOT  ",
                    others.c_str());
    }

    std::map<std::string, Times> m_times;
};

} // namespace

Row::Row(std::string name, double mark) : m_name(std::move(name))
{
    Rows().push_back({m_name, mark});
}

Row& Row::Ours(Task task)
{
    Register(m_name, kOurs, std::move(task));
    return *this;
}

Row& Row::Peer(std::string peer, Task task)
{
    Register(m_name, peer, std::move(task));
    return *this;
}

int Main(int argc, char** argv)
{
    // Interleaved rounds, so that a machine whose speed drifts is equally unfair to all.
    std::vector<std::string> arguments = {argv[0], "--benchmark_repetitions=5",
                                          "--benchmark_enable_random_interleaving=true",
                                          "--benchmark_min_time=0.03"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) {
        return 2;
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

} // namespace PeerTable
