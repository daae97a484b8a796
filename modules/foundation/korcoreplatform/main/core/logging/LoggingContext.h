/// What log lines say about their surroundings: the session's context and the quarantine.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

class TUUID;

/// Thread safety: every function may be called from any thread.
namespace TLog {

/// Whether lines contain the logging context of their session, as "ctx". Off at start.
KORCOREPLATFORM_EXPORT bool GetLoggingContextEnabled() noexcept;
KORCOREPLATFORM_EXPORT void SetLoggingContextEnabled(bool isEnabled) noexcept;

/// The id that lines of quarantined records contain, as "qlid"; null at start, which means that
/// there is none.
KORCOREPLATFORM_EXPORT TUUID GetLogQuarantineUuid();
KORCOREPLATFORM_EXPORT void SetLogQuarantineUuid(TUUID const& id);

/// The id as lines contain it: 36 characters, without braces; that of the null id as well.
KORCOREPLATFORM_EXPORT TString GetLogQuarantineUuidString();

KORCOREPLATFORM_EXPORT bool IsQuarantineLoggingEnabled(); ///< Whether the id is not null.

} // namespace TLog
