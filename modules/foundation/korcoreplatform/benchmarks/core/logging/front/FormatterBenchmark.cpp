// From the log call to the bytes of the line. The peers write the same keys: a JSON library of a
// document that it builds, and another logger by a pattern, which escapes nothing.

#include "korcoreplatform/benchmarks/core/logging/front/LineLogger.h"
#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/Value.h"

#include <nlohmann/json.hpp>
#include <spdlog/details/log_msg.h>
#include <spdlog/details/log_msg_buffer.h>
#include <spdlog/pattern_formatter.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include <unistd.h>

namespace {

using PeerTable::Repeat;
using PeerTable::RepeatAction;
using PeerTable::Row;
using PeerTable::Task;

constexpr double kNoMark = std::numeric_limits<double>::infinity();

#define MESSAGE "The workbook was opened, its extracts are up to date"

/// Logs through the logger of the process, which is put in for the time of the task.
template <class Once>
Task Logged(Once once)
{
    return [once](benchmark::State& state) {
        TLog::Logger::Set(std::make_unique<LineLogger>());
        RepeatAction(once)(state);
        TLog::Logger::Set(nullptr);
    };
}

void LogPlainMessage()
{
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), u"" MESSAGE);
}

/// The peer gets the text of the time for nothing.
nlohmann::json Document()
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
            {"k", "msg"},
            {"v", MESSAGE}};
}

std::string DumpDocument()
{
    return Document().dump();
}

Task FormatByPattern()
{
    return [](benchmark::State& state) {
        spdlog::pattern_formatter formatter(
            R"({"ts":"%Y-%m-%dT%H:%M:%S.%e","pid":%P,"tid":"%t","sev":"%l",)"
            R"("req":"-","sess":"-","site":"-","traceid":"-","user":"-","k":"msg","v":"%v"})");
        spdlog::memory_buf_t bytes;
        RepeatAction([&] {
            bytes.clear();
            formatter.format(spdlog::details::log_msg("log", spdlog::level::info, MESSAGE), bytes);
        })(state);
    };
}

/// Writes the line of one record again and again.
Task Formatted(TLog::Event const& event)
{
    return [event](benchmark::State& state) {
        TLog::Formatter formatter;
        std::string bytes;
        RepeatAction([&] {
            bytes.clear();
            formatter.AppendLine(bytes, TLog::AccessLevel::Standard, TLog::Severity::Info, event);
        })(state);
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
    };
}

TString SampleText(char16_t const* piece)
{
    constexpr int kUnits = 1 << 16;
    TString const text(piece);
    return text.repeated(kUnits / text.length());
}

std::unordered_map<TString, TString> TenPairs()
{
    std::unordered_map<TString, TString> pairs;
    for (int i = 0; i < 10; ++i) {
        pairs.emplace(TString(u"attribute-") + TString::number(i), u"some text of a value");
    }
    return pairs;
}

/// A peer's JSON text of a document, in ASCII as ours.
Task Dumped(nlohmann::json const& document)
{
    return Repeat([document] { return document.dump(-1, ' ', true); });
}

bool Lines()
{
    Row("message to line, beside a JSON document", 0.3)
        .Ours(Logged(&LogPlainMessage))
        .Peer("nlohmann", Repeat(&DumpDocument));
    Row("message to line, beside a pattern", 1.0)
        .Ours(Logged(&LogPlainMessage))
        .Peer("spdlog", FormatByPattern());
    return true;
}

/// The steps of the way alone. A record outlives its call and can be copied and kept by many; the
/// peer's buffered message is the nearest thing, so its row only informs.
bool Steps()
{
    std::shared_ptr<TLog::Value> const value = TLog::Literal::String(u"" MESSAGE);
    Row("build a record", kNoMark)
        .Ours(Repeat([value] { return TLog::Event(u"msg", value); }))
        .Peer("spdlog", Repeat([] {
                  using namespace spdlog;
                  return details::log_msg_buffer(details::log_msg("log", level::info, MESSAGE));
              }));
    Row("format a record", 1.0)
        .Ours(Formatted(TLog::Event(u"msg", value)))
        .Peer("nlohmann", Dumped(Document()));
    return true;
}

bool Values()
{
    for (auto const& [name, piece] : {
             std::pair("format 64 Ki units, some escaped",
                       u"A line of sixty-four units, \"some\" of which have to be escaped.\n"),
             std::pair("format 64 Ki units, all escaped", u"\u6587\u5B57\u304C\u5168\u90E8"),
         }) {
        TString const text = SampleText(piece);
        Row(name, 1.0)
            .Ours(Formatted(TLog::Event(u"msg", TLog::Literal::String(text))))
            .Peer("nlohmann", Dumped(text.toStdString()));
    }
    std::unordered_map<TString, TString> const pairs = TenPairs();
    nlohmann::json document = Document();
    document["v"] = nlohmann::json::object();
    for (auto const& [name, text] : pairs) {
        document["v"][name.toStdString()] = text.toStdString();
    }
    Row("format an object of 10 pairs", 1.0)
        .Ours(Formatted(TLog::Event(u"" MESSAGE, TLog::Object::Make(pairs))))
        .Peer("nlohmann", Dumped(document));
    Row("10 pairs to a line, beside a JSON document", 0.3)
        .Ours(Logged([pairs] {
            LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), u"" MESSAGE, pairs);
        }))
        .Peer("nlohmann", Repeat([pairs, document] {
                  nlohmann::json line = Document();
                  line["v"] = document["v"]; // without the conversion of the texts
                  return line.dump();
              }));
    return true;
}

[[maybe_unused]] bool const s_registered = Lines() && Steps() && Values();

} // namespace
