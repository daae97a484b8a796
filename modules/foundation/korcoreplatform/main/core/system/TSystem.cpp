#include "korcoreplatform/main/core/system/TSystem.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/system/EnvironmentLock_p.h"
#include "korcoreplatform/main/core/system/TSystem_p.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/system/SystemQueries.h"

#include <QByteArray>
#include <QList>
#include <QNetworkInterface>
#include <QString>
#include <QTextCodec>
#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>

namespace {

constexpr char kFile[] = "modules/foundation/korcoreplatform/main/core/TSystem";
constexpr char16_t kSystemName[] = u"Mac OS X";
constexpr int kMacAddressLength = 17;
constexpr std::int64_t kHzPerMHz = 1'000'000;

/// A value that is set after the start-up fits, with its terminating zero, in this many bytes.
constexpr std::size_t kReservedBytes = 255;

/// True until the start-up is over.
std::atomic<bool>* GetEnvironmentVariableInitializationAllowedFlag() noexcept
{
    static std::atomic<bool> s_isAllowed{true};
    return &s_isAllowed;
}

/// Never destroyed: variables may change until the very end of the process.
std::unordered_set<TString>& ExceptedNames()
{
    static auto& s_names = *new std::unordered_set<TString>;
    return s_names;
}

bool IsStartUp() noexcept
{
    // Pairs with the store when the start-up ends: the excepted names are there by then.
    return GetEnvironmentVariableInitializationAllowedFlag()->load(std::memory_order_acquire);
}

bool IsExcepted(TString const& name)
{
    return ExceptedNames().count(name) != 0;
}

[[noreturn]] void ThrowNotAllowed(TString const& name)
{
    TString const message =
        TFormat(u"Setting environment variable '%1' not allowed in this code path. For product "
                u"code, initialize at startup and for tests add to exceptions.",
                name);
    ThrowLogicException(kFile, 176, message.toStdString().c_str(),
                        KorErrorsError::LogicAssert_0x7993B488());
}

[[noreturn]] void ThrowTooLong(TString const& name, TString const& value)
{
    TString const message =
        TFormat(u"Cannot set environment variable '%1' to '%2' because the value is too long.  "
                u"Pick a shorter value or increase the placeholder length.",
                name, value);
    ThrowLogicException(kFile, 186, message.toStdString().c_str(),
                        KorErrorsError::LogicAssert_0xCC3C06F5());
}

/// For whoever is about to set or remove a variable. Qt's first look at the locale reads some
/// without a lock, whenever it first handles a file name; so that is over before.
std::unique_lock<TReadWriteLock> LockToChange()
{
    QTextCodec::codecForLocale();
    return std::unique_lock<TReadWriteLock>(EnvironmentLock());
}

void SetGuarded(TString const& name, TString const& value)
{
    std::string const value8Bit = value.toLocal8Bit();
    if (!IsStartUp()) {
        if (!IsExcepted(name)) {
            ThrowNotAllowed(name);
        }
        if (value8Bit.size() >= kReservedBytes) {
            ThrowTooLong(name, value);
        }
    }
    std::unique_lock<TReadWriteLock> const lock = LockToChange();
    qputenv(name.toLocal8Bit().c_str(), QByteArray(value8Bit.c_str()));
}

} // namespace

TReadWriteLock& EnvironmentLock() noexcept
{
    static TReadWriteLock& s_lock = *new TReadWriteLock; // used until the very end of the process
    return s_lock;
}

TString SystemAnswers::ComputerName(TString const& hostName)
{
    int const dot = hostName.indexOf(u'.');
    return dot > 0 ? hostName.left(dot) : hostName;
}

TString SystemAnswers::DNSDomainName(TString const& hostName)
{
    int const dot = hostName.indexOf(u'.');
    return dot < 0 ? TString() : hostName.mid(dot + 1);
}

TString SystemAnswers::MacAddresses(std::vector<TString> addresses)
{
    auto const isOther = [](TString const& a) { return a.length() != kMacAddressLength; };
    addresses.erase(std::remove_if(addresses.begin(), addresses.end(), isOther), addresses.end());
    std::sort(addresses.begin(), addresses.end());
    return TString::join(addresses, u',');
}

int SystemAnswers::FrequencyMHz(std::int64_t processorHz, std::int64_t timeBaseHz,
                                std::int32_t clockTicksPerSecond) noexcept
{
    std::int64_t const processorMHz = processorHz / kHzPerMHz;
    return static_cast<int>(processorMHz >= 1 ? processorMHz
                                              : timeBaseHz * clockTicksPerSecond / kHzPerMHz);
}

void SystemAnswers::ReadVersion(TString const& propertyList, bool isServer,
                                TSystem::OSVersionInfo& info)
{
    static constexpr char16_t kKey[] = u"<key>ProductUserVisibleVersion</key>";
    static constexpr char16_t kOpening[] = u"<string>";
    int const key = propertyList.indexOf(kKey);
    int const opening = key < 0 ? -1 : propertyList.indexOf(kOpening, key);
    int const begin = opening + TString::length(kOpening);
    int const end = opening < 0 ? -1 : propertyList.indexOf(u"</string>", begin);
    if (end < 0) {
        return;
    }
    TString const version = propertyList.mid(begin, end - begin).trimmed();
    int const dot = version.indexOf(u'.');
    if (dot < 1 || version[0] < u'0' || version[0] > u'9' || version.contains(u'\n')) {
        return;
    }
    int const secondDot = version.indexOf(u'.', dot + 1);
    info.name = kSystemName;
    info.name += (isServer ? u" Server " : u" ") + version;
    info.majorVersion = version.left(dot).toInt();
    info.minorVersion = version.mid(dot + 1, secondDot < 0 ? -1 : secondDot - dot - 1).toInt();
    info.patchVersion = secondDot < 0 ? 0 : version.mid(secondDot + 1).toInt();
}

TString TSystem::ComputerName()
{
    return SystemAnswers::ComputerName(ComputerFullName());
}

TString TSystem::ComputerFullName()
{
    return SystemQueries::HostName();
}

TString TSystem::ComputerDNSDomainName()
{
    return SystemAnswers::DNSDomainName(ComputerFullName());
}

TString TSystem::MacAddresses()
{
    std::vector<TString> addresses;
    for (QNetworkInterface const& interface : QNetworkInterface::allInterfaces()) {
        addresses.emplace_back(interface.hardwareAddress());
    }
    return SystemAnswers::MacAddresses(std::move(addresses));
}

TSystem::ProcessorInfo TSystem::Processor()
{
    ProcessorInfo info;
    info.name = SystemQueries::ProcessorName();
    info.frequencyMHz = SystemAnswers::FrequencyMHz(SystemQueries::ProcessorFrequencyHz(),
                                                    SystemQueries::TimeBaseFrequencyHz(),
                                                    SystemQueries::ClockTicksPerSecond());
    info.logicalProcessors = SystemQueries::LogicalProcessorCount();
    return info;
}

TString TSystem::OSShortName()
{
    return u"mac";
}

TString TSystem::OSArchitectureType()
{
    return u"posix";
}

bool TSystem::OSIs64Bit() noexcept
{
    return true;
}

TSystem::OSVersionInfo const& TSystem::OSVersion()
{
    return OSVersionInfo::Instance();
}

bool TSystem::GetHighContrastTheme() noexcept
{
    return false;
}

bool TSystem::SessionIsRemote(int* /*unused*/) noexcept
{
    return false;
}

bool TSystem::EnvironmentContains(char const* name)
{
    return qEnvironmentVariableIsSet(name);
}

bool TSystem::EnvironmentContains(TString const& name)
{
    return EnvironmentContains(name.toLocal8Bit().c_str());
}

TString TSystem::EnvironmentString(char const* name, TString const& defaultValue)
{
    QByteArray const value = qgetenv(name);
    return value.isNull() ? defaultValue : TString::fromLocal8Bit(value.constData());
}

TString TSystem::EnvironmentString(TString const& name, TString const& defaultValue)
{
    return EnvironmentString(name.toLocal8Bit().c_str(), defaultValue);
}

bool TSystem::EnvironmentBool(char const* name, bool defaultValue)
{
    QByteArray const value = qgetenv(name);
    return value.isNull() ? defaultValue : value.compare("true", Qt::CaseInsensitive) == 0;
}

bool TSystem::EnvironmentBool(TString const& name, bool defaultValue)
{
    return EnvironmentBool(name.toLocal8Bit().c_str(), defaultValue);
}

void TSystem::SetEnvironmentString(TString const& name, TString const& value)
{
    SetGuarded(name, value);
}

void TSystem::SetEnvironmentBool(TString const& name, bool value)
{
    SetGuarded(name, value ? u"true" : u"false");
}

void TSystem::UnsetEnvironment(TString const& name)
{
    if (!IsStartUp() && !IsExcepted(name)) {
        ThrowLogicException(kFile, 198, "*GetEnvironmentVariableInitializationAllowedFlag()",
                            KorErrorsError::LogicAssert_0xFF647F10());
    }
    std::unique_lock<TReadWriteLock> const lock = LockToChange();
    qunsetenv(name.toLocal8Bit().c_str());
}

void TSystem::DoneInitializingEnvironmentVariables() noexcept
{
    GetEnvironmentVariableInitializationAllowedFlag()->store(false, std::memory_order_release);
}

void TSystem::DoneInitializingEnvironmentVariablesExcept(std::unordered_set<TString> const& names)
{
    ExceptedNames().insert(names.begin(), names.end());
    DoneInitializingEnvironmentVariables();
}

TSystem::OSVersionInfo::OSVersionInfo() : name(kSystemName)
{
    TPath const versionFile(u"/System/Library/CoreServices/SystemVersion.plist");
    bool const isServer = FileExists(u"/System/Library/CoreServices/ServerVersion.plist");
    if (!FileExists(versionFile)) {
        return; // to open it would be logged, by a host that may ask for the version then
    }
    try {
        SystemAnswers::ReadVersion(LoadXMLFile(versionFile, false), isServer, *this);
    } catch (KorvelException const&) { // nothing to read leaves what nothing to find leaves
    }
}

TSystem::OSVersionInfo const& TSystem::OSVersionInfo::Instance()
{
    static OSVersionInfo const s_instance;
    return s_instance;
}
