#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/Report.h"
#include "korcoreplatform/benchmarks/support/Rounds.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

/// Whether `argument` is "name=value"; then `value` becomes that.
bool Reads(std::string const& argument, std::string const& name, std::string& value)
{
    bool const isIt = argument.compare(0, name.size() + 1, name + "=") == 0;
    if (isIt) {
        value = argument.substr(name.size() + 1);
    }
    return isIt;
}

} // namespace

/// Runs the rows and the scenarios that `--benchmark_filter=REGEX` finds, in `--rounds=N` rounds.
/// `--records=N` limits each run of a scenario, for a quick look; `--json=FILE` keeps the result
/// instead of printing it. Other arguments are those of the benchmark library.
int main(int argc, char** argv)
{
    std::string json;
    std::string value;
    Rounds::Settings settings;
    std::vector<std::string> forRows;
    try {
        for (std::string const& argument : std::vector<std::string>(argv + 1, argv + argc)) {
            if (Reads(argument, "--records", value)) {
                settings.records = std::stoi(value);
            } else if (Reads(argument, "--rounds", value)) {
                settings.rounds = std::stoi(value);
            } else if (Reads(argument, "--benchmark_filter", value)) {
                settings.filter = value;
            } else if (!Reads(argument, "--json", json)) {
                forRows.push_back(argument);
            }
        }
        if (!PeerTable::TakeArguments(argv[0], forRows)) {
            return 2;
        }
        Rounds::RunAll(settings); // first: its children inherit the memory of what ran before
        PeerTable::RunAll(settings.filter, settings.rounds);
    } catch (std::exception const& e) {
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
    return Report::Write(json) ? 0 : 1;
}
