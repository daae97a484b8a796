/// What there is to know about the machine, and the variables of this process's environment.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/system/TSystemCore.h"

#include <unordered_set>

/// Static functions only. A question that the system does not answer gives an empty text or 0.
///
/// The host says when it has finished starting up. From then on only those variables may be changed
/// that it excepted, and only to values that fit the room reserved for them:
///
///     TSystem::SetEnvironmentString(u"KOR_CACHE", path);
///     TSystem::DoneInitializingEnvironmentVariablesExcept({u"KOR_TRACE"});
///     ...
///     TSystem::SetEnvironmentBool(u"KOR_TRACE", true);
///
/// Throws: `std::bad_alloc`, from every function that returns or takes a text.
/// Thread safety: every function may be called from any thread, but the two that end the start-up:
/// they need that no other thread changes a variable. Reading and changing variables is safe
/// against each other, against Qt's `qgetenv` and `qputenv`, `TEnvironment::myEnvironment`,
/// `TProcess::Spawn`, `TProcess::StartDetached` and `TProcessLaunch`; against nothing else that
/// reads or writes them.
class KORCOREPLATFORM_EXPORT TSystem : public TSystemCore
{
public:
    struct ProcessorInfo
    {
        TString name;
        int frequencyMHz = 0;
        int reserved = 0; ///< Always 0.
        int logicalProcessors = 0;
    };

    struct OSVersionInfo;

    // The machine. Names are asked for at every call.

    /// The host name up to its first "."; all of it when it begins with one.
    static TString ComputerName();
    static TString ComputerFullName();
    static TString ComputerDNSDomainName(); ///< What follows the first ".".

    /// The hardware addresses of the network interfaces that have one of six bytes, as
    /// "01:23:45:67:89:AB", in ascending order with "," in between. Nothing is left out as a
    /// duplicate.
    static TString MacAddresses();

    static ProcessorInfo Processor();

    // The operating system. Some of the answers are the same on every system; callers rely on it.

    static TString OSShortName();                ///< Always "mac".
    static TString OSArchitectureType();         ///< Always "posix".
    static bool OSIs64Bit() noexcept;            ///< Always true.
    static OSVersionInfo const& OSVersion();     ///< `OSVersionInfo::Instance()`; of macOS alone.
    static bool GetHighContrastTheme() noexcept; ///< Always false.
    static bool SessionIsRemote(int* unused) noexcept; ///< Always false.

    // Variables of the environment. Texts are local 8-bit to the system, to which they end at
    // their first zero unit. A name as a `char const*` is taken as it is and must not be null.

    static bool EnvironmentContains(char const* name); ///< Also for an empty value.
    static bool EnvironmentContains(TString const& name);

    static TString EnvironmentString(char const* name, TString const& defaultValue);
    static TString EnvironmentString(TString const& name, TString const& defaultValue);

    /// Whether the value is "true", in any letter case; `defaultValue` when there is none.
    static bool EnvironmentBool(char const* name, bool defaultValue);
    static bool EnvironmentBool(TString const& name, bool defaultValue);

    /// Sets a variable, to any value until the start-up is over. A name that the system refuses (an
    /// empty one, one with "=") changes nothing.
    /// Throws: once the start-up is over, `LogicException` with id LogicAssert_0x7993B488 for a
    /// name that is not excepted, LogicAssert_0xCC3C06F5 for a value of 255 bytes or more.
    static void SetEnvironmentString(TString const& name, TString const& value);
    static void SetEnvironmentBool(TString const& name, bool value); ///< "true" or "false".

    /// Throws: `LogicException` with id LogicAssert_0xFF647F10 once the start-up is over, for a
    /// name that is not excepted.
    static void UnsetEnvironment(TString const& name);

    /// Ends the start-up, for good. Names that are excepted stay so, and a later call adds to them.
    static void DoneInitializingEnvironmentVariables() noexcept;
    static void
    DoneInitializingEnvironmentVariablesExcept(std::unordered_set<TString> const& names);
};

/// The name and version of the operating system: "Mac OS X 13.4" and 13, 4, 0. What the system does
/// not tell stays at "Mac OS X" and 0.
struct KORCOREPLATFORM_EXPORT TSystem::OSVersionInfo
{
    OSVersionInfo(); ///< Reads the system's version files.

    /// The one that is read at the first call and lives until the process exits.
    static OSVersionInfo const& Instance();

    TString name;
    int majorVersion = 0;
    int minorVersion = 0;
    int patchVersion = 0;
};
