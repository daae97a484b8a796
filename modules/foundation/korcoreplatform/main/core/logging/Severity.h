/// How severe a log record is, and for whom it is meant.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstdint>

namespace TLog {

/// The scale of severities. Filters compare by this order, least severe first.
enum class Severity : std::uint8_t
{
    Trace = 0,
    Debug = 1,
    Info = 2,
    Warn = 3,
    Error = 4,
    Fatal = 5,
    Off = 6,      ///< As the minimal severity of a logger: nothing ordinary is accepted.
    LogDetail = 7 ///< A record that is written even so; sorts above `Off`.
};

/// What a record is besides its text. Channels and the formatter get other values as they are.
enum class AccessLevel : int
{
    Standard = 0,
    Quarantine = 1 ///< The line names the quarantine id while there is one.
};

/// The severity of a record that may carry an error.
class KORCOREPLATFORM_EXPORT AnySeverity
{
public:
    explicit AnySeverity(Severity severity) noexcept : m_severity(severity) {}
    AnySeverity(AnySeverity const&) noexcept = default;
    AnySeverity& operator=(AnySeverity const&) noexcept = default;
    virtual ~AnySeverity() = default; // in place, so that a refused log call makes no call at all

    Severity Get() const noexcept { return m_severity; }

private:
    Severity m_severity;
};

/// The severity of a record that carries no error. It is meant for severities below `Error`; a log
/// call is nothing that should fail, so every severity is taken.
class KORCOREPLATFORM_EXPORT NonErrorSeverity : public AnySeverity
{
public:
    explicit NonErrorSeverity(Severity severity) noexcept : AnySeverity(severity) {}
};

/// "Trace", "Debug", "Info", "Warn", "Error", "Fatal", "Off", "LogDetail"; "Off" for a value that
/// is none of these. The text lives as long as the process. Thread safety: may be called from any
/// thread, as may `SeverityFromString`.
KORCOREPLATFORM_EXPORT TString const& SeverityToString(Severity severity);

/// Reads such a name in any letter case; any other text is `Severity::Off`.
KORCOREPLATFORM_EXPORT Severity SeverityFromString(TString const& name);

} // namespace TLog
