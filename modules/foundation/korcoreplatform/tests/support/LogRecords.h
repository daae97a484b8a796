/// Records with numbers, and what a JSON reader that is not this library's finds of them in files.

#pragma once

#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/string/TString.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>

inline int PaddingOf(int number)
{
    return number % 64 == 0 ? 900 : number % 8 * 12; // records of every size of block
}

/// Logs the record `number` of a thread.
inline void LogNumber(int thread, int number)
{
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), TString::number(thread) + u' ' +
                                                                 TString::number(number) + u' ' +
                                                                 TString(u'x', PaddingOf(number)));
}

/// The numbers of each thread's records, in the order in which they were found.
using Numbers = std::map<int, std::vector<int>>;

/// Adds the number that a text of `LogNumber` has.
inline void AddNumber(Numbers& numbers, std::string const& text)
{
    char* end = nullptr;
    long const thread = std::strtol(text.c_str(), &end, 10);
    long const number = std::strtol(end, &end, 10);
    if (end !=
        " " + std::string(static_cast<std::size_t>(PaddingOf(static_cast<int>(number))), 'x')) {
        throw std::runtime_error("a changed text: " + text);
    }
    numbers[static_cast<int>(thread)].push_back(static_cast<int>(number));
}

/// "0:0-99 1:0-5,7": thread 1 has no record 6, or it is elsewhere.
inline std::string InShort(Numbers const& numbers)
{
    std::string text;
    for (auto const& [thread, found] : numbers) {
        text += (text.empty() ? "" : " ") + std::to_string(thread);
        for (std::size_t i = 0; i < found.size(); ++i) {
            std::size_t const first = i;
            while (i + 1 < found.size() && found[i + 1] == found[i] + 1) {
                ++i;
            }
            text += (first == 0 ? ':' : ',') + std::to_string(found[first]);
            text += i == first ? "" : '-' + std::to_string(found[i]);
        }
    }
    return text;
}

/// Reads a file of whole lines, the last of which may be torn.
class LogReader
{
public:
    explicit LogReader(std::filesystem::path const& path) : m_file(path, std::ios::binary) {}

    /// The next record, null behind the last one. Throws for a line that is no record.
    nlohmann::json Next()
    {
        std::string line;
        if (!std::getline(m_file, line)) {
            return nullptr;
        }
        if (m_file.eof()) {
            m_tornEnd = line;
            return nullptr;
        }
        return nlohmann::json::parse(line);
    }

    /// What follows the last line feed, once all is read.
    std::string const& TornEnd() const { return m_tornEnd; }

private:
    std::ifstream m_file;
    std::string m_tornEnd;
};

struct LogFileContent
{
    Numbers numbers;
    std::vector<std::string> otherKeys;
    std::string tornEnd;
};

inline LogFileContent ReadLogFile(std::filesystem::path const& path)
{
    LogFileContent content;
    LogReader reader(path);
    for (nlohmann::json record = reader.Next(); !record.is_null(); record = reader.Next()) {
        if (record.at("k") == "msg") {
            AddNumber(content.numbers, record.at("v").get_ref<std::string const&>());
        } else {
            content.otherKeys.push_back(record.at("k"));
        }
    }
    content.tornEnd = reader.TornEnd();
    return content;
}

inline std::shared_ptr<TLog::FileChannel> MakeFileChannel(TPath const& path)
{
    return std::make_shared<TLog::FileChannel>(
        std::make_unique<TLog::FileChannel::LogFile>(path, O_WRONLY | O_APPEND | O_CREAT));
}
