/// What the lines of a log file say, in short.

#pragma once

#include "korsys/tests/support/KorTest.h"

#include <nlohmann/json.hpp>

/// `info open-log {"path":"/tmp/app.log"}` for each line; a torn line throws.
inline std::vector<std::string> LogLines(std::string const& bytes)
{
    std::vector<std::string> lines;
    std::istringstream in(bytes);
    for (std::string text; std::getline(in, text);) {
        auto const record = nlohmann::json::parse(in.eof() ? "no line feed" : text);
        std::string line = record.at("sev").get<std::string>() + " ";
        line += record.at("k").get<std::string>();
        lines.push_back(record.contains("v") ? line + " " + record["v"].dump() : line);
    }
    return lines;
}

/// The line of a record that names one file.
inline std::string PathLine(std::string const& key, std::string const& path)
{
    return "info " + key + R"( {"path":")" + path + R"("})";
}
