// The asynchronous logger from the call to the file, beside another one. Both write lines of JSON
// with the same keys; the peer by a pattern whose message is escaped by a flag of its own, on the
// worker's side. Its queue holds a million, so it never makes a producer wait here, and waits when
// it is full. The times end when the file holds every record; each run counts the lines.

#include "korcoreplatform/benchmarks/core/logging/back/LogContenders.h"
#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/logging/CacheLines_p.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/LogQueue_p.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace LogContenders;
using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;

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

/// What no call can do without that hands its record to the one thread that writes: the time, the
/// text, two cache lines of memory that is there, a queue, and a line of as many bytes. Its writer
/// is never woken.
class BareQueue
{
public:
    explicit BareQueue(path const& file)
        : m_records(kRecords), m_file(file), m_writer([this] { WriteAll(); })
    {}
    BareQueue(BareQueue const&) = delete;
    BareQueue& operator=(BareQueue const&) = delete;
    ~BareQueue()
    {
        m_isOver = true;
        m_writer.join();
    }

    void Log() { Log(std::u16string_view(u"" MESSAGE)); }
    void Log(int i, int j)
    {
        TString const message = TFormat(u"Row %1 of %2 was written to the extract", i, j);
        Log({message.constData(), static_cast<std::size_t>(message.length())});
    }

    void Finish()
    {
        while (m_written != m_queue.CountedItems()) {
            std::this_thread::sleep_for(kNap);
        }
    }

private:
    static constexpr std::size_t kRecords = 1 << 18; ///< More than a run has until it is written.
    static constexpr std::size_t kBatch = 64;
    static constexpr std::chrono::microseconds kNap{100};

    struct alignas(TLog::CacheLines::kBytes) Record : TLog::LogQueueLink
    {
        std::chrono::system_clock::time_point time;
        char text[112];
    };
    static_assert(sizeof(Record) == 2 * TLog::CacheLines::kBytes);

    void Log(std::u16string_view message)
    {
        Record& record = Take();
        record.time = std::chrono::system_clock::now();
        std::copy(message.begin(), message.end(), record.text);
        m_queue.PushCounted(record);
    }

    Record& Take()
    {
        static thread_local std::size_t t_next = 0;
        if (t_next % kBatch == 0) {
            t_next = m_next.fetch_add(kBatch);
        }
        TLog::CacheLines::PrefetchForWriting(&m_records[(t_next + 1) % kRecords], 2);
        return m_records[t_next++ % kRecords];
    }

    void WriteAll()
    {
        for (;;) {
            bool const isOver = m_isOver; // nothing comes after that
            if (m_queue.Pop() != nullptr) {
                m_file.Log();
                m_written.store(m_written + 1, std::memory_order_relaxed);
                continue;
            }
            m_file.Finish();
            if (isOver) {
                return;
            }
            std::this_thread::sleep_for(kNap);
        }
    }

    std::vector<Record> m_records;
    std::atomic<std::size_t> m_next{0};
    TLog::LogQueue m_queue;
    std::atomic<std::uint64_t> m_written{0};
    std::atomic<bool> m_isOver{false};
    Floor m_file;
    std::thread m_writer;
};

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
                Producers producers(threads, run.records,
                                    [&contender](int j) { contender.Log(j, j * 7); });
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
        .Limit("write", ToFile<Floor>(1))
        .AtLeast("records/s", 2.4)
        .AtMost("CPU s per million", 0.6)
        .AtMost("peak memory, KiB", 1.0)
        .Shown("bytes/line");
    Scenario("to the file, 4 producers", kMillion)
        .Contender("ours", ToFile<Ours>(4))
        .Contender("spdlog-async", ToFile<AsyncPeer>(4))
        .Contender("spdlog-sync", ToFile<SyncPeer>(4))
        .Limit("write", ToFile<Floor>(1))
        .AtLeast("records/s", 3.5)
        .Shown("CPU s per million")
        .Shown("peak memory, KiB");
    for (auto const& [threads, mark] :
         {std::pair(1, 0.55), std::pair(2, 0.45), std::pair(4, 0.35)}) {
        Scenario("burst of two numbers, threads: " + std::to_string(threads), kMillion / 10)
            .Contender("ours", Bursts<Ours>(threads))
            .Contender("spdlog-async", Bursts<AsyncPeer>(threads))
            .Contender("spdlog-sync", Bursts<SyncPeer>(threads))
            .Limit("bare queue", Bursts<BareQueue>(threads))
            .Runs(5) // each has one first burst, of some 20 ms
            .AtMost("ns/call, first burst", mark)
            .AtMost("ns/call, later bursts", mark);
    }
    Scenario("a call every 2 microseconds", kMillion / 5)
        .Contender("ours", &PacedCalls<Ours>)
        .Contender("spdlog-async", &PacedCalls<AsyncPeer>)
        .Contender("spdlog-sync", &PacedCalls<SyncPeer>)
        .Limit("bare queue", &PacedCalls<BareQueue>)
        .Runs(3) // a processor that has a core for itself makes a call in half the time
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
