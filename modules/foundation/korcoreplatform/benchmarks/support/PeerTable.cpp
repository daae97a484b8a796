#include "korcoreplatform/benchmarks/support/PeerTable.h"

#include "korcoreplatform/benchmarks/support/Report.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <stdexcept>
#include <utility>

namespace PeerTable {
namespace {

struct Entry
{
    Report::Row row; ///< Still without figures.
    int runsPerRound = 1;
};

/// In the order of their registration.
std::vector<Entry>& Entries()
{
    static std::vector<Entry> s_entries;
    return s_entries;
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
            if (run.error_occurred) {
                throw std::runtime_error(run.run_name.function_name + ": " + run.error_message);
            }
            if (run.run_type == Run::RT_Iteration) {
                m_times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    std::vector<double> const& TimesOf(std::string const& task) const { return m_times.at(task); }

private:
    std::map<std::string, std::vector<double>> m_times;
};

/// The expression that finds this text alone.
std::string Escaped(std::string const& text)
{
    return std::regex_replace(text, std::regex(R"([.^$|()[\]{}*+?\\])"), R"(\$&)");
}

/// Adds a time to each task of the row.
void RunOnce(Report::Row& row)
{
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector, '^' + Escaped(NameOf(row, "")));
    for (std::vector<Report::Figures>* const all : {&row.contenders, &row.limit}) {
        for (Report::Figures& figures : *all) {
            figures.rounds.push_back(Report::Median(collector.TimesOf(NameOf(row, figures.who))));
        }
    }
}

} // namespace

Row::Row(std::string const& name, double mark) : m_index(Entries().size())
{
    Entries().push_back({{name, "ns", "less", mark, ""}});
}

Row& Row::Ours(Task task)
{
    return Peer("ours", std::move(task));
}

Row& Row::Peer(std::string const& peer, Task task)
{
    Report::Row& row = Entries()[m_index].row;
    Register(row, row.contenders, peer, std::move(task));
    return *this;
}

Row& Row::Limit(std::string const& name, Task task)
{
    Report::Row& row = Entries()[m_index].row;
    Register(row, row.limit, name, std::move(task));
    return *this;
}

Row& Row::Runs(int perRound)
{
    Entries()[m_index].runsPerRound = perRound;
    return *this;
}

Row& Row::At(std::string const& plot, std::string const& curve, double x)
{
    Entries()[m_index].row.point = {plot, curve, x};
    return *this;
}

bool TakeArguments(std::string program, std::vector<std::string> const& arguments)
{
    // What the tasks of a row do in a run, in random order. A run counts the median.
    std::vector<std::string> all = {std::move(program), "--benchmark_repetitions=3",
                                    "--benchmark_enable_random_interleaving=true",
                                    "--benchmark_min_time=0.01"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(all.size());
    for (std::string& argument : all) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    return !benchmark::ReportUnrecognizedArguments(count, pointers.data());
}

void RunAll(std::regex const& filter, int rounds)
{
    std::vector<Entry> chosen;
    std::copy_if(Entries().begin(), Entries().end(), std::back_inserter(chosen),
                 [&](Entry const& entry) { return std::regex_search(entry.row.name, filter); });
    for (int round = 0; round < rounds; ++round) {
        for (Entry& entry : chosen) {
            for (int run = 0; run < entry.runsPerRound; ++run) {
                RunOnce(entry.row);
            }
        }
    }
    for (Entry& entry : chosen) {
        Report::Add(std::move(entry.row));
    }
}

} // namespace PeerTable
