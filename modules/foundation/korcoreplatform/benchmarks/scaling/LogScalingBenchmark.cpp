// How logging grows: with producers, with the length of messages, with the pairs of the session's
// context, and with the time that the disk takes.

#include "korcoreplatform/benchmarks/core/logging/back/LogContenders.h"
#include "korcoreplatform/benchmarks/core/logging/front/LineLogger.h"
#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/SessionObjects.h"
#include "korcoreplatform/main/string/TString.h"

#include <nlohmann/json.hpp>
#include <spdlog/sinks/base_sink.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>

#include <unistd.h>

namespace {

using namespace LogContenders;
using PeerTable::Row;
using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;

/// Logs `run.records` times from `threads` threads, until the file holds all.
template <class Contender, class Log>
Measures TimeToFile(Run const& run, int threads, Contender& contender, Log const& log)
{
    Producers producers(threads, run.records, log);
    Clock::time_point const start = Clock::now();
    producers.RunAll();
    contender.Finish();
    double const time = Nanoseconds(Clock::now() - start);
    return {{"records/s", run.records * 1e9 / time}, {"ns/record", time / run.records}};
}

template <class Contender>
Rounds::Task FromProducers(int threads)
{
    return [threads](Run const& run) {
        Contender contender(run.folder / "log");
        return TimeToFile(run, threads, contender, [](int) { Contender::Log(); });
    };
}

template <class Contender, class Text>
Rounds::Task OfLength(int length)
{
    return [length](Run const& run) {
        Contender contender(run.folder / "log");
        Text const message(std::string(static_cast<std::size_t>(length), 'm').c_str());
        return TimeToFile(run, 1, contender, [&](int) { Contender::Log(message); });
    };
}

Rounds::Task WritesOfLength(int length)
{
    return [length](Run const& run) {
        Floor floor(run.folder / "log",
                    static_cast<std::size_t>(length) + 144); // the rest of a line
        return TimeToFile(run, 1, floor, [&](int) { floor.Log(); });
    };
}

/// A disk that takes so long for each record; it sleeps for a millisecond at the least.
class Disk
{
public:
    explicit Disk(int microseconds) : m_perRecord(microseconds) {}

    void Write()
    {
        m_due += m_perRecord;
        if (m_due >= std::chrono::milliseconds(1)) {
            Clock::time_point const start = Clock::now();
            std::this_thread::sleep_for(m_due);
            m_due -= Clock::now() - start;
        }
    }

private:
    std::chrono::microseconds m_perRecord;
    Clock::duration m_due{0};
};

class SlowChannel : public TLog::Channel
{
public:
    explicit SlowChannel(int microseconds) : m_disk(microseconds) {}

    void Append(TLog::Severity, TLog::Event const&) override { m_disk.Write(); }
    void Append(TLog::AccessLevel, TLog::Severity, TLog::Event const&) override { m_disk.Write(); }
    void Flush() override {}
    TPath GetPath() const override { return TPath(); }
    unsigned long GetFileSizeMB() const override { return 0; }

private:
    Disk m_disk;
};

class SlowSink : public spdlog::sinks::base_sink<std::mutex>
{
public:
    explicit SlowSink(int microseconds) : m_disk(microseconds) {}

protected:
    void sink_it_(spdlog::details::log_msg const&) override { m_disk.Write(); }
    void flush_() override {}

private:
    Disk m_disk;
};

/// Nobody waits for the disk in the end: the process goes with what is still in the queue.
template <class Contender>
Measures TimeCalls(Run const& run, Contender* leaked)
{
    benchmark::DoNotOptimize(leaked);
    Producers producers(1, run.records, [](int i) { Contender::Log(i, i * 7); });
    return {{"ns/call", producers.RunAll()}};
}

void SlowDisk()
{
    constexpr std::size_t kQueueOfThePeer = 8192; // what it has unless one asks for another
    for (int delay : {0, 1, 3, 10, 30, 100, 300, 1000}) {
        Scenario("slow disk, " + std::to_string(delay) + " us a record", 12000)
            .Contender("ours",
                       [delay](Run const& run) {
                           return TimeCalls(run, new Ours(std::make_shared<SlowChannel>(delay)));
                       })
            .Contender("spdlog, queue of 8192",
                       [delay](Run const& run) {
                           return TimeCalls(run, new AsyncPeer(std::make_shared<SlowSink>(delay),
                                                               kQueueOfThePeer));
                       })
            .Shown("ns/call")
            .At("log-slow-disk", "", delay);
    }
}

void ProducersAndLengths()
{
    for (int threads : {1, 2, 4, 8, 16}) {
        Scenario("log, producers: " + std::to_string(threads), kMillion / 2)
            .Contender("ours", FromProducers<Ours>(threads))
            .Contender("spdlog-async", FromProducers<AsyncPeer>(threads))
            .Contender("spdlog-sync", FromProducers<SyncPeer>(threads))
            .Shown("records/s")
            .At("log-producers", "", threads);
    }
    for (int length : {50, 200, 1024, 4096, 16384, 65536}) {
        Scenario("log, messages of " + std::to_string(length) + " bytes",
                 std::min(kMillion / 4, (96 << 20) / length))
            .Contender("ours", OfLength<Ours, TString>(length))
            .Contender("spdlog-async", OfLength<AsyncPeer, std::string>(length))
            .Limit("write", WritesOfLength(length))
            .Shown("ns/record")
            .At("log-message-length", "", length);
    }
}

using Pairs = std::unordered_map<TString, TString>;

/// A call, until its line is made, in a session with such a context.
PeerTable::Task InSession(Pairs const& pairs)
{
    return [pairs](benchmark::State& state) {
        auto const session = std::make_shared<SessionObjects>();
        CoreThreadContext::SetHasSessionIdFunction([] { return true; });
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction([session] { return session; });
        CoreThreadContextUtils::SetLoggingContext(std::make_shared<Pairs>(pairs));
        TLog::SetLoggingContextEnabled(true);
        TLog::Logger::Set(std::make_unique<LineLogger>());
        PeerTable::RepeatAction([] { Ours::Log(); })(state);
        TLog::Logger::Set(nullptr);
        CoreThreadContext::SetHasSessionIdFunction(nullptr);
        CoreThreadContext::SetGetSessionObjectsInterfaceFunction(nullptr);
    };
}

nlohmann::json Document(nlohmann::json const& context)
{
    return {{"ts", "2024-03-02T09:05:03.004"},
            {"pid", ::getpid()},
            {"tid", "1a2b"},
            {"sev", "info"},
            {"req", "-"},
            {"sess", "-"},
            {"site", "-"},
            {"traceid", "-"},
            {"user", "-"},
            {"ctx", context},
            {"k", "msg"},
            {"v", MESSAGE}};
}

void ContextPairs()
{
    for (int n : {0, 1, 2, 5, 10, 20, 30, 40, 50}) {
        Pairs pairs;
        nlohmann::json context = nlohmann::json::object();
        for (int i = 0; i != n; ++i) {
            std::string const name = "attribute-" + std::to_string(i);
            pairs.emplace(TString(name.c_str()), u"some text of a value");
            context[name] = "some text of a value";
        }
        Row("log, context of " + std::to_string(n) + " pairs")
            .Ours(InSession(pairs))
            .Peer("nlohmann::json",
                  PeerTable::Repeat([context] { return Document(context).dump(); }))
            .At("log-context-pairs", "", n);
    }
}

bool Register()
{
    ProducersAndLengths();
    ContextPairs();
    SlowDisk();
    return true;
}

[[maybe_unused]] bool const s_registered = Register();

} // namespace
