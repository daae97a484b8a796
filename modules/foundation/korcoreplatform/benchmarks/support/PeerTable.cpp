#include "korcoreplatform/benchmarks/support/PeerTable.h"

#include "korcoreplatform/benchmarks/support/Report.h"

#include <map>
#include <utility>

namespace PeerTable {
namespace {

/// The rows in the order of their registration, still without figures.
std::vector<Report::Row>& Rows()
{
    static std::vector<Report::Row> s_rows;
    return s_rows;
}

std::string NameOf(Report::Row const& row, std::string const& who)
{
    return row.name + "|" + who;
}

void Register(Report::Row const& row, std::vector<Report::Figures>& all, std::string const& who,
              Task task)
{
    all.push_back({who, {}});
    benchmark::RegisterBenchmark(NameOf(row, who).c_str(), std::move(task));
}

/// Collects the times of all runs, by the names of the tasks.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(Context const&) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override
    {
        for (Run const& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                m_times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    /// Adds the rows of which every task has run.
    void Report() const
    {
        for (Report::Row row : Rows()) {
            if (Fill(row, row.contenders) && Fill(row, row.limit)) {
                Report::Add(std::move(row));
            }
        }
    }

private:
    bool Fill(Report::Row const& row, std::vector<Report::Figures>& all) const
    {
        for (Report::Figures& figures : all) {
            auto const found = m_times.find(NameOf(row, figures.who));
            if (found == m_times.end()) {
                return false;
            }
            figures.rounds = found->second;
        }
        return true;
    }

    std::map<std::string, std::vector<double>> m_times;
};

} // namespace

Row::Row(std::string const& name, double mark) : m_index(Rows().size())
{
    Rows().push_back({name, "ns", "less", mark, ""});
}

Row& Row::Ours(Task task)
{
    return Peer("ours", std::move(task));
}

Row& Row::Peer(std::string const& peer, Task task)
{
    Report::Row& row = Rows()[m_index];
    Register(row, row.contenders, peer, std::move(task));
    return *this;
}

Row& Row::Limit(std::string const& name, Task task)
{
    Report::Row& row = Rows()[m_index];
    Register(row, row.limit, name, std::move(task));
    return *this;
}

Row& Row::At(std::string const& plot, std::string const& curve, double x)
{
    Rows()[m_index].point = {plot, curve, x};
    return *this;
}

bool TakeArguments(std::string program, std::vector<std::string> const& arguments)
{
    // Interleaved rounds, so that a machine whose speed drifts is equally unfair to all.
    std::vector<std::string> all = {std::move(program), "--benchmark_repetitions=5",
                                    "--benchmark_enable_random_interleaving=true",
                                    "--benchmark_min_time=0.03"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    return !benchmark::ReportUnrecognizedArguments(count, pointers.data());
}

void RunAll()
{
    if (!Rows().empty()) {
        Collector collector;
        benchmark::RunSpecifiedBenchmarks(&collector);
        collector.Report();
    }
}

} // namespace PeerTable
