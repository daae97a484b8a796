#include "korcoreplatform/benchmarks/support/Report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <utility>

namespace Report {
namespace {

using Json = nlohmann::ordered_json;

std::vector<Row>& Rows()
{
    static std::vector<Row> s_rows;
    return s_rows;
}

Json ToJson(std::vector<Figures> const& all)
{
    Json json = Json::object();
    for (Figures const& figures : all) {
        json[figures.who] = figures.rounds;
    }
    return json;
}

Json ToJson(Row const& row)
{
    Json json = {
        {"row", row.name},           {"unit", row.unit},
        {"better", row.better},      {"mark", std::isfinite(row.mark) ? Json(row.mark) : Json()},
        {"against", row.against},    {"contenders", ToJson(row.contenders)},
        {"limit", ToJson(row.limit)}};
    if (!row.point.plot.empty()) {
        json["plot"] = row.point.plot;
        json["curve"] = row.point.curve;
        json["x"] = row.point.x;
    }
    return json;
}

void Print(Row const& row)
{
    std::printf("%-48s", row.name.c_str());
    for (auto const* all : {&row.contenders, &row.limit}) {
        for (Figures const& figures : *all) {
            std::printf("  %s %.5g", figures.who.c_str(), Median(figures.rounds));
        }
    }
    std::printf(" %s\n", row.unit.c_str());
}

} // namespace

void Add(Row row)
{
    Rows().push_back(std::move(row));
}

bool Write(std::string const& file)
{
    if (file.empty()) {
        std::for_each(Rows().begin(), Rows().end(), &Print);
        return true;
    }
    std::ofstream stream(file);
    for (Row const& row : Rows()) {
        stream << ToJson(row) << '\n';
    }
    return !stream.flush().fail();
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t const half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

} // namespace Report
