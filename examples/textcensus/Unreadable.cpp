#include "Unreadable.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/TLogException.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korsys/main/error/KorvelException.h"

namespace TextCensus {
namespace {

constexpr char16_t kRecord[] = u"unreadable";
constexpr TLog::Severity kSeverity = TLog::Severity::Warn;

TLog::Object::Map ValuesOf(TPath const& path)
{
    return {{u"path", TLog::Literal::String(path)}};
}

} // namespace

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, TString const& reason)
{
    list.push_back({path, reason});
    LogMessage(TLog::NonErrorSeverity(kSeverity), kRecord, {{u"path", path}, {u"reason", reason}});
}

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, KorvelException const& failure)
{
    list.push_back({path, failure.GetMessagesFront()});
    TLog::LogException(TLog::AnySeverity(kSeverity), kRecord, failure,
                       TError::ErrorInfo(failure.GetErrorInfo()), ValuesOf(path));
}

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, std::exception const& failure,
                   TString const& reason)
{
    list.push_back({path, reason});
    TLog::LogException(TLog::NonErrorSeverity(kSeverity), kRecord, failure, ValuesOf(path));
}

} // namespace TextCensus
