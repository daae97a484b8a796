#include "korcoreplatform/main/core/runtime/CorePlatformOptions.h"

#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/runtime/OptAllowAltPathsFlag.h"
#include "korcoreplatform/main/core/runtime/OptApplicationDir.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/runtime/OptUnixDomainSocketDir.h"

#include <utility>

TString const& CorePlatformOptions::GetApplicationDir()
{
    return OptApplicationDir::GetApplicationDir();
}

void CorePlatformOptions::SetApplicationDir(TString const& dir)
{
    OptApplicationDir::SetApplicationDir(dir);
}

TString const& CorePlatformOptions::GetUnixDomainSocketDir()
{
    return OptUnixDomainSocketDir::GetUnixDomainSocketDir();
}

void CorePlatformOptions::SetUnixDomainSocketDir(TString const& dir)
{
    OptUnixDomainSocketDir::SetUnixDomainSocketDir(dir);
}

bool CorePlatformOptions::GetLogStackOnFileError()
{
    return OptLogStackOnFileError::GetLogStackOnFileError();
}

void CorePlatformOptions::SetLogStackOnFileError(bool isOn)
{
    OptLogStackOnFileError::SetLogStackOnFileError(isOn);
}

std::function<bool()> CorePlatformOptions::GetIsSeverityPerLogDetailOn()
{
    return OptLogSeverity::GetIsSeverityPerLogDetailOn();
}

void CorePlatformOptions::SetIsSeverityPerLogDetailOn(std::function<bool()> isOn)
{
    OptLogSeverity::SetIsSeverityPerLogDetailOn(std::move(isOn));
}

std::function<bool()> CorePlatformOptions::GetIsActivityAndResourceTracingEnabledFunction()
{
    return OptMetrics::GetIsActivityAndResourceTracingEnabledFunction();
}

void CorePlatformOptions::SetIsActivityAndResourceTracingEnabledFunction(
    std::function<bool()> isEnabled)
{
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction(std::move(isEnabled));
}

bool CorePlatformOptions::GetLoggingContextEnabled()
{
    return TLog::GetLoggingContextEnabled();
}

void CorePlatformOptions::SetLoggingContextEnabled(bool isEnabled)
{
    TLog::SetLoggingContextEnabled(isEnabled);
}

TUUID CorePlatformOptions::GetLogQuarantineUuid()
{
    return TLog::GetLogQuarantineUuid();
}

void CorePlatformOptions::SetLogQuarantineUuid(TUUID const& id)
{
    TLog::SetLogQuarantineUuid(id);
}

bool CorePlatformOptions::GetIsAppBundle()
{
    return OptAllowAltPathsFlag::GetIsAppBundle();
}

bool CorePlatformOptions::GetAllowAltPathsFlagRepository()
{
    return OptAllowAltPathsFlag::GetAllowAltPathsFlagRepository();
}

bool CorePlatformOptions::GetAllowAltPathsFlag()
{
    return OptAllowAltPathsFlag::GetAllowAltPathsFlag();
}

bool CorePlatformUtils::IsValidCharacter(char16_t c) noexcept
{
    return c == u'\t' || c == u'\n' || c == u'\r' || (c >= 0x20 && c <= 0xFFFD);
}

bool CorePlatformUtils::IsValidCharacter(char16_t const* c) noexcept
{
    return c != nullptr && IsValidCharacter(*c);
}
