// The asynchronous logger from the call to the file, beside another one. Both write lines of JSON
// with the same keys; the peer by a pattern whose message is escaped by a flag of its own, on the
// worker's side. Its queue holds a million, so it never makes a producer wait here, and waits when
// it is full. The times end when the file holds every record; each run counts the lines.

#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/thread/TEvent.h"

#include <spdlog/async.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
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

namespace {

using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;
using Clock = std::chrono::steady_clock;
using std::filesystem::path;

constexpr int kMillion = 1000000;

#define MESSAGE "The query was answered by cache"

double Nanoseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::nano>(time).count();
}

/// Appends a text as the inside of a JSON string: what needs no escape in one piece.
void AppendEscaped(spdlog::string_view_t text, spdlog::memory_buf_t& to)
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
std::unique_ptr<spdlog::formatter> MakePeerFormatter()
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

// The contenders: each is the logger of the process while it exists

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
    explicit AsyncPeer(path const& file) : m_note(std::make_shared<FlushNote>())
    {
        spdlog::init_thread_pool(kMillion, 1);
        auto logger = std::make_shared<spdlog::async_logger>(
            "log", spdlog::sinks_init_list{MakeSink(file), m_note}, spdlog::thread_pool(),
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
    {
        auto logger = std::make_unique<TLog::AsyncLogger>(TLog::Severity::Info,
                                                          TPath(configuration.u16string().c_str()));
        m_logger = logger.get();
        m_logger->AddChannel(std::make_shared<TLog::FileChannel>(OpenFile(file)));
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
    explicit Floor(path const& file)
        : m_line(std::string(174, '-') + '\n'),
          m_file(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0666))
    {}
    Floor(Floor const&) = delete;
    Floor& operator=(Floor const&) = delete;
    ~Floor() { ::close(m_file); }

    void Log()
    {
        if (sizeof(m_buffer) - m_used < m_line.size()) {
            Finish();
        }
        std::memcpy(m_buffer + m_used, m_line.data(), m_line.size());
        m_used += m_line.size();
    }

    void Finish()
    {
        if (::write(m_file, m_buffer, m_used) != static_cast<::ssize_t>(m_used)) {
            throw std::runtime_error("a write failed");
        }
        m_used = 0;
    }

private:
    std::string m_line;
    int m_file;
    std::size_t m_used = 0;
    char m_buffer[65536];
};

/// One record again and again into the file's channel: what the writer does without a queue.
class Rendering
{
public:
    explicit Rendering(path const& file)
        : m_event(u"msg", TLog::Literal::String(u"" MESSAGE)), m_channel(Ours::OpenFile(file))
    {}

    void Log() { m_channel.Append(TLog::AccessLevel::Standard, TLog::Severity::Info, m_event); }
    void Finish() { m_channel.Flush(); }

private:
    TLog::Event m_event;
    TLog::FileChannel m_channel;
};

// What they do

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
double CheckLines(path const& file, int lines)
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

template <class Contender>
Rounds::Task ToFile(int threads)
{
    return [threads](Run const& run) {
        path const file = run.folder / "log";
        Measures measures;
        {
            Contender contender(file);
            Producers producers(threads, run.records, [&contender](int) { contender.Log(); });
            Rounds::Usage const before;
            Clock::time_point const start = Clock::now();
            producers.RunAll();
            contender.Finish();
            double const seconds = Nanoseconds(Clock::now() - start) / 1e9;
            Rounds::Usage const after;
            measures["records/s"] = run.records / seconds;
            measures["CPU s per million"] =
                (after.cpuSeconds - before.cpuSeconds) * kMillion / run.records;
            measures["peak memory, KiB"] = after.peakMemory;
        }
        measures["bytes/line"] = CheckLines(file, run.records);
        return measures;
    };
}

/// Bursts, each after a rest. In the first one memory is taken that later ones may have again.
template <class Contender>
Rounds::Task Bursts(int threads)
{
    return [threads](Run const& run) {
        constexpr int kBursts = 6;
        path const file = run.folder / "log";
        std::vector<double> times;
        {
            Contender contender(file);
            for (int i = 0; i != kBursts; ++i) {
                Producers producers(threads, run.records, [](int j) { Contender::Log(j, j * 7); });
                times.push_back(producers.RunAll());
                contender.Finish();
            }
        }
        CheckLines(file, kBursts * run.records);
        return Measures{
            {"ns/call, first burst", times[0]},
            {"ns/call, later bursts", Rounds::Median({times.begin() + 1, times.end()})}};
    };
}

/// What `call` takes when it is made every 2 microseconds, in ascending order.
template <class Call>
std::vector<double> TimePacedCalls(int calls, Call call)
{
    std::vector<double> times(static_cast<std::size_t>(calls));
    Clock::time_point start = Clock::now();
    for (double& time : times) {
        Clock::time_point const next = start + std::chrono::microseconds(2);
        do {
            start = Clock::now();
        } while (start < next);
        call();
        time = Nanoseconds(Clock::now() - start);
    }
    std::sort(times.begin(), times.end());
    return times;
}

template <class Contender>
Measures PacedCalls(Run const& run)
{
    path const file = run.folder / "log";
    // What the clock itself takes is no part of the calls.
    double const clock = TimePacedCalls(10000, [] {})[5000];
    std::vector<double> times;
    {
        Contender contender(file);
        times = TimePacedCalls(run.records, [&contender] { contender.Log(); });
    }
    CheckLines(file, run.records);
    auto const percentile = [&](double part) {
        return times[static_cast<std::size_t>(part * (run.records - 1))] - clock;
    };
    return {{"ns/call, p50", percentile(0.5)},
            {"ns/call, p99", percentile(0.99)},
            {"ns/call, p99.9", percentile(0.999)}};
}

/// Calls with all the categories in turn, each of which has a threshold that accepts them.
Rounds::Task WithCategories(bool isOptionOn)
{
    return [isOptionOn](Run const& run) {
        path const configuration = run.folder / "log.json";
        {
            std::ofstream json(configuration);
            for (int i = 0; i != LogDetail::Count; ++i) {
                auto const detail = static_cast<LogDetail::LogDetailEnums>(i);
                json << (i == 0 ? "{\"" : ",\"")
                     << LogDetail::LogDetailToString(detail).toStdString() << "\":\"Info\"";
            }
            json << '}';
        }
        path const file = run.folder / "log";
        double time = 0;
        {
            OptLogSeverity::SetIsSeverityPerLogDetailOn([isOptionOn] { return isOptionOn; });
            Ours ours(file, configuration);
            if (!(*TLog::Logger::Get())->IsDetailSet(LogDetail::CurlDebugLogging)) {
                throw std::runtime_error("the configuration was not read");
            }
            Producers producers(1, run.records, [](int i) {
                LogMessage(static_cast<LogDetail::LogDetailEnums>(i % LogDetail::Count),
                           TLog::NonErrorSeverity(TLog::Severity::Info), u"" MESSAGE);
            });
            time = producers.RunAll();
        }
        CheckLines(file, run.records);
        return Measures{{"calls/s", 1e9 / time}};
    };
}

bool Register()
{
    Scenario("to the file, 1 producer", kMillion)
        .Contender("ours", ToFile<Ours>(1))
        .Contender("spdlog-async", ToFile<AsyncPeer>(1))
        .Contender("spdlog-sync", ToFile<SyncPeer>(1))
        .Contender("rendering", ToFile<Rendering>(1))
        .Contender("floor", ToFile<Floor>(1))
        .AtLeast("records/s", 2.4)
        .AtMost("CPU s per million", 0.6)
        .AtMost("peak memory, KiB", 1.0)
        .Shown("bytes/line");
    Scenario("to the file, 4 producers", kMillion)
        .Contender("ours", ToFile<Ours>(4))
        .Contender("spdlog-async", ToFile<AsyncPeer>(4))
        .Contender("spdlog-sync", ToFile<SyncPeer>(4))
        .AtLeast("records/s", 3.5)
        .Shown("CPU s per million")
        .Shown("peak memory, KiB");
    for (auto const& [threads, mark] :
         {std::pair(1, 0.55), std::pair(2, 0.45), std::pair(4, 0.35)}) {
        Scenario("burst of two numbers, threads: " + std::to_string(threads), kMillion / 10)
            .Contender("ours", Bursts<Ours>(threads))
            .Contender("spdlog-async", Bursts<AsyncPeer>(threads))
            .Contender("spdlog-sync", Bursts<SyncPeer>(threads))
            .AtMost("ns/call, first burst", mark)
            .AtMost("ns/call, later bursts", mark);
    }
    Scenario("a call every 2 microseconds", kMillion / 5)
        .Contender("ours", &PacedCalls<Ours>)
        .Contender("spdlog-async", &PacedCalls<AsyncPeer>)
        .Contender("spdlog-sync", &PacedCalls<SyncPeer>)
        .AtMost("ns/call, p50", 0.25)
        .AtMost("ns/call, p99", 0.4)
        .AtMost("ns/call, p99.9", 0.5);
    Scenario("52 categories", kMillion)
        .Contender("option on", WithCategories(true))
        .Contender("option off", WithCategories(false))
        .AtLeast("calls/s", 0.8);
    return true;
}

[[maybe_unused]] bool const s_registered = Register();

} // namespace
