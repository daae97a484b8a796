/// What a benchmark program has measured: rows with the figures of every round. A script judges
/// them.

#pragma once

#include <string>
#include <vector>

namespace Report {

/// What one contender, or the limit, needed in each round.
struct Figures
{
    std::string who;
    std::vector<double> rounds;
};

/// Where a row stands in a plot of how a cost grows.
struct Point
{
    std::string plot;  ///< Empty: in none.
    std::string curve; ///< Which of the plot's; each contender draws one of its own.
    double x = 0;
};

struct Row
{
    std::string name;
    std::string unit;    ///< Of the figures: "ns"; empty when the name says it.
    std::string better;  ///< "less", "more", or empty when nobody judges.
    double mark;         ///< For the ratio of ours to the peer's; not finite when there is none.
    std::string against; ///< The peer of the ratio; empty for the best one.
    std::vector<Figures> contenders = {}; ///< Ours first, then the peers.
    std::vector<Figures> limit = {};      ///< What nobody can beat, or nothing.
    Point point = {};
};

void Add(Row row);

/// Writes all rows into `file`, one JSON object a line, or prints their medians when `file` is
/// empty. Returns whether it could.
bool Write(std::string const& file);

double Median(std::vector<double> values);

} // namespace Report
