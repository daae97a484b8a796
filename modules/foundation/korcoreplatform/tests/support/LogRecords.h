/// Records with numbers, and what a JSON reader that is not this library's finds of them in files.

#pragma once

#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <nlohmann/json.hpp>

#include <future>

#include <fcntl.h>

inline std::shared_ptr<TLog::FileChannel> MakeFileChannel(TPath const& path)
{
    return std::make_shared<TLog::FileChannel>(
        std::make_unique<TLog::FileChannel::LogFile>(path, O_WRONLY | O_APPEND | O_CREAT));
}

/// Makes a new logger of everything the process's.
inline TLog::AsyncLogger& SetLogger(std::shared_ptr<TLog::Channel> const& channel)
{
    auto logger = std::make_unique<TLog::AsyncLogger>(TLog::Severity::Trace, TPath());
    logger->AddChannel(channel);
    TLog::AsyncLogger& result = *logger;
    TLog::Logger::Set(std::move(logger));
    return result;
}

/// Each thread calls `log(thread, i)` for i from 0 until it returns false. The destructor waits.
template <class Log>
std::vector<std::future<void>> StartThreads(int count, Log const& log)
{
    std::vector<std::future<void>> threads;
    for (int thread = 0; thread != count; ++thread) {
        threads.push_back(std::async(std::launch::async, [thread, log] {
            for (int i = 0; log(thread, i); ++i) {}
        }));
    }
    return threads;
}

inline TString PaddingOf(int number)
{
    return TString(u'x', number % 64 == 0 ? 900 : number % 8 * 12); // blocks of every size
}

/// Logs the record `number` of a thread.
inline void LogNumber(int thread, int number)
{
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info),
               TString::number(thread) + u' ' + TString::number(number) + u' ' + PaddingOf(number));
}

/// The numbers of each thread's records, in the order in which they were found.
using Numbers = std::map<int, std::vector<int>>;

/// Adds the number that a text of `LogNumber` has.
inline void AddNumber(Numbers& numbers, std::string const& text)
{
    int thread = 0;
    int number = 0;
    int end = 0;
    if (std::sscanf(text.c_str(), "%d %d %n", &thread, &number, &end) != 2 ||
        text.substr(static_cast<std::size_t>(end)) != PaddingOf(number).toStdString()) {
        throw std::runtime_error("a changed text: " + text);
    }
    numbers[thread].push_back(number);
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
struct LogReader
{
    explicit LogReader(std::filesystem::path const& path) : file(path, std::ios::binary) {}

    /// The next record, null behind the last one. Throws for a line that is no record.
    nlohmann::json Next()
    {
        std::string line;
        if (!std::getline(file, line) || file.eof()) {
            tornEnd += line;
            return nullptr;
        }
        return nlohmann::json::parse(line);
    }

    std::ifstream file;
    std::string tornEnd; ///< What follows the last line feed, once all is read.
};

/// The last line may be torn only where a process was killed.
inline Numbers ReadLogFile(std::filesystem::path const& path, bool mayBeTorn = false)
{
    Numbers numbers;
    LogReader reader(path);
    for (nlohmann::json record = reader.Next(); !record.is_null(); record = reader.Next()) {
        if (record.at("k") == "msg") {
            AddNumber(numbers, record.at("v").get_ref<std::string const&>());
        }
    }
    EXPECT_TRUE(mayBeTorn || reader.tornEnd.empty()) << reader.tornEnd;
    return numbers;
}
