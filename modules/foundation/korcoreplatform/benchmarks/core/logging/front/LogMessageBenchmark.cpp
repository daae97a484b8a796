// What a log call costs that the logger does not want: the price of every call that stays in a
// program. The peer's call is the same in all rows.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/null_sink.h>

#include <limits>
#include <memory>

namespace {

using PeerTable::Row;
using PeerTable::Task;
using TLog::Severity;

constexpr double kNoMark = std::numeric_limits<double>::infinity();

/// Accepts as an ordinary logger with the minimal severity Off does, the category `Network` from
/// Fatal on, and drops what it accepts.
class AskedLogger : public TLog::NullLogger
{
public:
    AskedLogger() { Logger::SetDetail(LogDetail::Network, Severity::Fatal); }

    bool AcceptsSeverity(Severity severity) const override
    {
        return Logger::AcceptsSeverity(severity);
    }
    bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail, Severity severity) const override
    {
        return Logger::DetailAcceptsSeverity(detail, severity);
    }
};

class DecidingLogger : public AskedLogger
{
public:
    DecidingLogger() { DecideByMinimalSeverity(typeid(DecidingLogger)); }
};

/// Runs `call` while a `Logger` is in the slot and the option about categories is as given.
template <class Logger, class Call>
Task WithLogger(bool isPerDetailOn, Call call)
{
    return [=](benchmark::State& state) {
        TLog::Logger::Set(std::make_unique<Logger>());
        OptLogSeverity::SetIsSeverityPerLogDetailOn([=] { return isPerDetailOn; });
        for (auto _ : state) {
            call();
            benchmark::ClobberMemory();
        }
        TLog::Logger::Set(nullptr);
    };
}

bool RefusedCalls()
{
    auto const peer =
        std::make_shared<spdlog::logger>("peer", std::make_shared<spdlog::sinks::null_sink_mt>());
    peer->set_level(spdlog::level::warn);
    auto const peerCall = PeerTable::RepeatAction([=] { peer->info("connected"); });
    auto const call = [] { LogMessage(TLog::NonErrorSeverity(Severity::Info), u"connected"); };
    auto const categoryCall = [] {
        LogMessage(LogDetail::Network, TLog::NonErrorSeverity(Severity::Info), u"connected");
    };
    Row("refused", 1.0).Ours(WithLogger<DecidingLogger>(false, call)).Peer("spdlog", peerCall);
    Row("refused by asking", kNoMark)
        .Ours(WithLogger<AskedLogger>(false, call))
        .Peer("spdlog", peerCall);
    Row("refused with category, option off", kNoMark)
        .Ours(WithLogger<DecidingLogger>(false, categoryCall))
        .Peer("spdlog", peerCall);
    Row("refused by category's threshold", kNoMark)
        .Ours(WithLogger<DecidingLogger>(true, categoryCall))
        .Peer("spdlog", peerCall);
    return true;
}

[[maybe_unused]] bool const s_registered = RefusedCalls();

} // namespace
