#include "Unreadable.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korsys/main/error/KorvelException.h"

#include <unordered_map>

namespace TextCensus {
namespace {

constexpr char16_t kRecord[] = u"unreadable";

std::unordered_map<TString, TString> PairsOf(Unreadable const& file)
{
    return {{u"path", file.path}, {u"reason", file.reason}};
}

} // namespace

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, TString const& reason)
{
    list.push_back({path, reason});
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Warn), kRecord, PairsOf(list.back()));
}

void AddUnreadable(std::vector<Unreadable>& list, TPath const& path, KorvelException const& failure)
{
    list.push_back({path, failure.GetMessagesFront()});
    LogMessage(TLog::AnySeverity(TLog::Severity::Warn), kRecord, PairsOf(list.back()),
               TError::ErrorInfo(failure.GetErrorInfo()));
}

} // namespace TextCensus
