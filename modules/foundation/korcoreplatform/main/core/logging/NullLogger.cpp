#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Logger.h"

namespace TLog {

// An empty path: the first logger is made before the statics of other sources.
NullLogger::NullLogger() : Logger(Severity::Off, TPath()) {}
NullLogger::~NullLogger() = default;

void NullLogger::AddFilter(std::shared_ptr<Filter>) {}
void NullLogger::RemoveFilter(std::shared_ptr<Filter>) {}
void NullLogger::AddChannel(std::shared_ptr<Channel>) {}
void NullLogger::RemoveChannel(std::shared_ptr<Channel>) {}

void NullLogger::Log(Severity, Event const&) {}
void NullLogger::Log(Severity, Event&&) {}
void NullLogger::Log(AccessLevel, Severity, Event const&) {}
void NullLogger::Log(AccessLevel, Severity, Event&&) {}
void NullLogger::Log(LogDetail::LogDetailEnums, Severity, Event const&) {}
void NullLogger::Log(LogDetail::LogDetailEnums, Severity, Event&&) {}
void NullLogger::Log(AccessLevel, LogDetail::LogDetailEnums, Severity, Event const&) {}
void NullLogger::Log(AccessLevel, LogDetail::LogDetailEnums, Severity, Event&&) {}

void NullLogger::Flush() {}

bool NullLogger::AcceptsSeverity(Severity) const
{
    return false;
}

bool NullLogger::IsDetailSet(LogDetail::LogDetailEnums) const
{
    return false;
}

bool NullLogger::DetailAcceptsSeverity(LogDetail::LogDetailEnums, Severity) const
{
    return false;
}

void NullLogger::SetMinimalAcceptedSeverity(Severity) {}
void NullLogger::SetDetail(LogDetail::LogDetailEnums, Severity) {}
void NullLogger::ClearDetails() {}
void NullLogger::LogStartupProblems() {}

} // namespace TLog
