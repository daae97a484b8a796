/// Loggers that benchmarks let run against each other, the asynchronous one of this library and
/// another one, and the threads that log. Each contender is the logger of the process while it
/// exists.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/Channel.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/thread/TEvent.h"

#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace LogContenders {

using Clock = std::chrono::steady_clock;
using std::filesystem::path;

constexpr int kMillion = 1000000;

#define MESSAGE "The query was answered by cache"

inline double Nanoseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::nano>(time).count();
}

/// Appends a text as the inside of a JSON string: what needs no escape in one piece.
inline void AppendEscaped(spdlog::string_view_t text, spdlog::memory_buf_t& to)
{
    auto const isSpecial = [](char c) {
        return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
    };
    char const* from = text.begin();
    for (;;) {
        char const* const special = std::find_if(from, text.end(), isSpecial);
        to.append(from, special);
        if (special == text.end()) {
            return;
        }
        fmt::format_to(std::back_inserter(to), "\\u{:04x}", static_cast<int>(*special));
        from = special + 1;
    }
}

class EscapedMessage : public spdlog::custom_flag_formatter
{
public:
    void format(spdlog::details::log_msg const& message, std::tm const&,
                spdlog::memory_buf_t& to) override
    {
        AppendEscaped(message.payload, to);
    }

    std::unique_ptr<custom_flag_formatter> clone() const override
    {
        return std::make_unique<EscapedMessage>();
    }
};

/// The process id is written into the pattern: its flag would ask the system for every line.
inline std::unique_ptr<spdlog::formatter> MakePeerFormatter()
{
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<EscapedMessage>('J').set_pattern(
        R"({"ts":"%Y-%m-%dT%H:%M:%S.%e","pid":)" + std::to_string(::getpid()) +
        R"(,"tid":"%t","sev":"%l",)"
        R"("req":"-","sess":"-","site":"-","traceid":"-","user":"-","k":"msg","v":"%J"})");
    return formatter;
}

/// Tells when the peer's worker has flushed the sinks before it. It is given no records.
class FlushNote : public spdlog::sinks::sink
{
public:
    FlushNote() { set_level(spdlog::level::off); }

    void log(spdlog::details::log_msg const&) override {}
    void flush() override { flushed.Signal(); }
    void set_pattern(std::string const&) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

    TEvent flushed;
};

class SyncPeer
{
public:
    explicit SyncPeer(path const& file)
    {
        auto logger = std::make_shared<spdlog::logger>("log", MakeSink(file));
        logger->set_formatter(MakePeerFormatter());
        spdlog::set_default_logger(std::move(logger));
    }
    SyncPeer(SyncPeer const&) = delete;
    SyncPeer& operator=(SyncPeer const&) = delete;
    ~SyncPeer() { spdlog::shutdown(); }

    static void Log() { spdlog::info(MESSAGE); }
    static void Log(int i, int j) { spdlog::info("Row {} of {} was written to the extract", i, j); }
    static void Log(std::string const& message) { spdlog::info(message); }

    /// Returns when the file holds all.
    static void Finish() { spdlog::default_logger()->flush(); }

protected:
    SyncPeer() = default;

    static spdlog::sink_ptr MakeSink(path const& file)
    {
        return std::make_shared<spdlog::sinks::basic_file_sink_mt>(file.string());
    }
};

class AsyncPeer : public SyncPeer
{
public:
    explicit AsyncPeer(path const& file) : AsyncPeer(MakeSink(file), kMillion) {}

    AsyncPeer(spdlog::sink_ptr sink, std::size_t queueLength)
        : m_note(std::make_shared<FlushNote>())
    {
        spdlog::init_thread_pool(queueLength, 1);
        auto logger = std::make_shared<spdlog::async_logger>(
            "log", spdlog::sinks_init_list{std::move(sink), m_note}, spdlog::thread_pool(),
            spdlog::async_overflow_policy::block);
        logger->set_formatter(MakePeerFormatter());
        spdlog::set_default_logger(std::move(logger));
    }

    void Finish()
    {
        m_note->flushed.Reset();
        SyncPeer::Finish();
        m_note->flushed.Wait();
    }

private:
    std::shared_ptr<FlushNote> m_note;
};

class Ours
{
public:
    explicit Ours(path const& file, path const& configuration = path())
        : Ours(std::make_shared<TLog::FileChannel>(OpenFile(file)), configuration)
    {}

    explicit Ours(std::shared_ptr<TLog::Channel> channel, path const& configuration = path())
    {
        auto logger = std::make_unique<TLog::AsyncLogger>(TLog::Severity::Info,
                                                          TPath(configuration.u16string().c_str()));
        m_logger = logger.get();
        m_logger->AddChannel(std::move(channel));
        TLog::Logger::Set(std::move(logger));
    }
    Ours(Ours const&) = delete;
    Ours& operator=(Ours const&) = delete;
    ~Ours() { TLog::Logger::Set(nullptr); }

    static std::unique_ptr<TLog::FileChannel::LogFile> OpenFile(path const& file)
    {
        return std::make_unique<TLog::FileChannel::LogFile>(TPath(file.u16string().c_str()),
                                                            O_WRONLY | O_APPEND | O_CREAT);
    }

    static void Log() { LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), u"" MESSAGE); }
    static void Log(int i, int j)
    {
        LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info),
                   TFormat(u"Row %1 of %2 was written to the extract", i, j));
    }
    static void Log(TString const& message)
    {
        LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), message);
    }

    void Finish()
    {
        if (!m_logger->FlushAndWait(-1)) {
            throw std::runtime_error("records were lost");
        }
    }

private:
    TLog::AsyncLogger* m_logger; ///< In the slot.
};

/// Nothing but the bytes of a line, in writes of 64 KiB: no logger can be faster.
class Floor
{
public:
    explicit Floor(path const& file, std::size_t lineBytes = 175)
        : m_line(std::string(lineBytes - 1, '-') + '\n'),
          m_file(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666))
    {}
    Floor(Floor const&) = delete;
    Floor& operator=(Floor const&) = delete;
    ~Floor() { ::close(m_file); }

    void Log()
    {
        if (m_buffer.size() + m_line.size() > 65536) {
            Finish();
        }
        m_buffer += m_line;
    }

    void Finish()
    {
        if (::write(m_file, m_buffer.data(), m_buffer.size()) !=
            static_cast<::ssize_t>(m_buffer.size())) {
            throw std::runtime_error("a write failed");
        }
        m_buffer.clear();
    }

private:
    std::string m_line;
    int m_file;
    std::string m_buffer;
};

/// Threads that wait for the start, and call `log` with numbers that count up, `calls` times in
/// all.
class Producers
{
public:
    template <class Log>
    Producers(int threads, int calls, Log const& log) : m_times(threads)
    {
        std::shared_future<void> const started = m_start.get_future().share();
        for (int thread = 0; thread != threads; ++thread) {
            int const count = calls / threads + (thread < calls % threads);
            m_threads.emplace_back([this, started, thread, count, log] {
                started.wait();
                Clock::time_point const start = Clock::now();
                for (int i = 0; i != count; ++i) {
                    log(i);
                }
                m_times[thread] = Nanoseconds(Clock::now() - start) / count;
            });
        }
    }

    /// Lets them run to the end. Returns the mean time of a call, in nanoseconds.
    double RunAll()
    {
        m_start.set_value();
        double sum = 0;
        for (std::size_t i = 0; i != m_threads.size(); ++i) {
            m_threads[i].join();
            sum += m_times[i];
        }
        return sum / static_cast<double>(m_threads.size());
    }

private:
    std::promise<void> m_start;
    std::vector<double> m_times; ///< Each thread's mean.
    std::vector<std::thread> m_threads;
};

/// Throws when the file does not hold so many lines. Returns their mean length.
inline double CheckLines(path const& file, int lines)
{
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> bytes(1 << 20);
    double size = 0;
    std::ptrdiff_t found = 0;
    while (stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())),
           stream.gcount() > 0) {
        found += std::count(bytes.begin(), bytes.begin() + stream.gcount(), '\n');
        size += static_cast<double>(stream.gcount());
    }
    if (found != lines) {
        throw std::runtime_error("the file has " + std::to_string(found) + " lines, not " +
                                 std::to_string(lines));
    }
    return size / lines;
}

} // namespace LogContenders
