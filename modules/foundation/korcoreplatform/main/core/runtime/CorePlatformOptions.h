/// The options of the library in one place, for hosts.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/main/string/TString.h"

#include <functional>
#include <type_traits>

/// Reads and sets the options of the whole process. A host sets them once, at start-up:
///
///     CorePlatformOptions::SetApplicationDir(u"/opt/census");
///     CorePlatformOptions::SetIsSeverityPerLogDetailOn([] { return true; });
///
/// Each option is kept by a class of its own; those that belong to logging, by `TLog`.
///
/// Thread safety: reading is safe from any thread while none sets the same option.
class KORCOREPLATFORM_EXPORT CorePlatformOptions
{
public:
    CorePlatformOptions() = delete;

    /// The directory of the application, for the host's own use: empty, or ending with a separator,
    /// which the setter appends where there is none.
    static TString const& GetApplicationDir();
    static void SetApplicationDir(TString const& dir);

    /// The directory of the local sockets, for the host's own use; empty until it is set.
    static TString const& GetUnixDomainSocketDir();
    static void SetUnixDomainSocketDir(TString const& dir);

    /// Whether a logged file error carries a call stack; false until it is set.
    static bool GetLogStackOnFileError();
    static void SetLogStackOnFileError(bool isOn);

    // The callables return false until others are set. An empty one is taken as it is: from then on
    // the library throws `std::bad_function_call` where it asks. They are asked for each record, by
    // every thread that logs.

    /// Whether each category of log records has a severity threshold of its own.
    static std::function<bool()> GetIsSeverityPerLogDetailOn();
    static void SetIsSeverityPerLogDetailOn(std::function<bool()> isOn);

    /// Whether activities and resources are traced.
    static std::function<bool()> GetIsActivityAndResourceTracingEnabledFunction();
    static void SetIsActivityAndResourceTracingEnabledFunction(std::function<bool()> isEnabled);

    /// Whether log lines contain the logging context of their session; false until it is set.
    static bool GetLoggingContextEnabled();
    static void SetLoggingContextEnabled(bool isEnabled);

    /// The id in the log lines of quarantined records; null, until it is set, means none.
    static TUUID GetLogQuarantineUuid();
    static void SetLogQuarantineUuid(TUUID const& id);

    // Worked out once, from the place of the library: see `OptAllowAltPathsFlag`.
    static bool GetIsAppBundle();
    static bool GetAllowAltPathsFlagRepository();
    static bool GetAllowAltPathsFlag();
};

namespace CorePlatformUtils {

/// Whether a code unit may stand in a text of the product: tab, line feed, carriage return and
/// U+0020 to U+FFFD, halves of surrogate pairs included.
KORCOREPLATFORM_EXPORT bool IsValidCharacter(char16_t c) noexcept;

/// The same for any other number, not valid when it is no code unit. A `char` is Latin-1.
template <class Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
bool IsValidCharacter(Number c) noexcept
{
    if constexpr (std::is_same_v<Number, char>) {
        return IsValidCharacter(static_cast<unsigned char>(c));
    } else {
        auto const value = static_cast<long long>(c);
        return value >= 0 && value <= 0xFFFF && IsValidCharacter(static_cast<char16_t>(value));
    }
}

/// The same for the first unit of a text, its terminating zero included; null is not valid.
KORCOREPLATFORM_EXPORT bool IsValidCharacter(char16_t const* c) noexcept;

} // namespace CorePlatformUtils
