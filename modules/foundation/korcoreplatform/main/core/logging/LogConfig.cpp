#include "korcoreplatform/main/core/logging/LogConfig.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/ThrowError.h"

#include <simdjson.h>

#include <cerrno>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr char16_t kUnreadableFile[] = u"Unable to read native logging configuration file.";
constexpr char16_t kNotJson[] = u"Unable to read log configuration file.";

/// A file open for reading, which a child process does not inherit.
class InputFile
{
public:
    explicit InputFile(char const* path)
    {
        do {
            m_descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
        } while (m_descriptor < 0 && errno == EINTR);
    }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;
    ~InputFile()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

    /// Reads up to `size` bytes; 0 at the end, negative when the file cannot be read.
    ssize_t Read(char* to, std::size_t size)
    {
        ssize_t count = 0;
        do {
            count = ::read(m_descriptor, to, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int m_descriptor = -1;
};

/// The bytes of a file; nothing when it cannot be read or is longer than a text can be.
std::optional<std::string> ReadBytes(char const* path)
{
    InputFile file(path);
    std::string bytes;
    char buffer[8192];
    ssize_t count = 0;
    while ((count = file.Read(buffer, sizeof(buffer))) > 0) {
        bytes.append(buffer, static_cast<std::size_t>(count));
        if (bytes.size() > static_cast<std::size_t>(TStringManager::kMaxLength)) {
            return std::nullopt;
        }
    }
    return count == 0 ? std::optional<std::string>(std::move(bytes)) : std::nullopt;
}

TString TextOf(std::string_view utf8)
{
    return TString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

/// Throws: `KorvelException` with id AutoGen_0xAD83A89C for a value that is not a string.
template <class Map>
Map ReadThresholds(simdjson::dom::object const& object)
{
    Map thresholds;
    for (auto const& [name, value] : object) {
        std::string_view severity;
        if (value.get_string().get(severity) != simdjson::SUCCESS) {
            ThrowError<KorvelException>(TString(u"Expected a value of type string."),
                                        &KorErrorsError::AutoGen_0xAD83A89C);
        }
        thresholds.emplace(LogDetail::LogDetailFromString(TextOf(name)),
                           TLog::SeverityFromString(TextOf(severity)));
    }
    return thresholds;
}

} // namespace

ILogConfigSettings::~ILogConfigSettings() = default;

LogConfigSettings::LogConfigSettings(TPath const& path)
{
    ReadSettingsFromFile(path);
}

LogConfigSettings::~LogConfigSettings() = default;

void LogConfigSettings::ReadSettingsFromFile(TPath const& path)
{
    if (path.IsEmpty()) {
        return;
    }
    std::optional<std::string> const bytes = ReadBytes(path.GenericString().toStdString().c_str());
    if (bytes) {
        InitializeFromString(TextOf(*bytes));
    } else {
        SetProblem(kUnreadableFile);
    }
}

void LogConfigSettings::InitializeFromString(TString text)
{
    text.removeBOM();
    if (text.isEmpty()) {
        return;
    }
    simdjson::dom::parser parser; // owns what the object refers to
    simdjson::dom::object object;
    if (parser.parse(text.toStdString()).get_object().get(object) != simdjson::SUCCESS) {
        SetProblem(kNotJson);
        return;
    }
    ThresholdMap thresholds;
    try {
        thresholds = ReadThresholds<ThresholdMap>(object);
    } catch (KorvelException const& e) {
        ThrowError<KorvelException>(e.GetMessages(), &KorErrorsError::AutoGen_0x1A36D05F);
    }
    std::lock_guard<TReadWriteLock> const lock(m_lock);
    Replace(std::move(thresholds));
}

TLog::Severity LogConfigSettings::GetDetailSeverity(LogDetail::LogDetailEnums detail) const
{
    std::uint16_t const threshold = ThresholdOf(detail);
    return threshold == kUnset ? TLog::Severity::Off : static_cast<TLog::Severity>(threshold);
}

bool LogConfigSettings::DetailAcceptsSeverity(LogDetail::LogDetailEnums detail,
                                              TLog::Severity severity) const
{
    return ThresholdOf(detail) <= static_cast<std::uint16_t>(severity);
}

bool LogConfigSettings::IsDetailSet(LogDetail::LogDetailEnums detail) const
{
    return ThresholdOf(detail) != kUnset;
}

void LogConfigSettings::SetDetailSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity)
{
    std::lock_guard<TReadWriteLock> const lock(m_lock);
    Insert(detail, severity);
}

void LogConfigSettings::ClearDetails()
{
    std::lock_guard<TReadWriteLock> const lock(m_lock);
    Replace({});
}

void LogConfigSettings::LogStartupProblems()
{
    TString problem;
    {
        std::shared_lock<TReadWriteLock> const lock(m_lock);
        problem = m_problem;
    }
    if (!problem.isEmpty()) {
        LogMessage(TLog::NonErrorSeverity(TLog::Severity::Warn), problem);
    }
}

std::uint16_t LogConfigSettings::ThresholdOf(LogDetail::LogDetailEnums detail) const
{
    auto const index = static_cast<std::size_t>(detail); // beyond the array when it is negative
    if (index < m_thresholds.size()) {
        return m_thresholds[index].value.load(std::memory_order_relaxed);
    }
    std::shared_lock<TReadWriteLock> const lock(m_lock);
    auto const found = m_others.find(detail);
    return found == m_others.end() ? kUnset : static_cast<std::uint16_t>(found->second);
}

/// Requires: the lock, held for writing. So does `Replace`.
void LogConfigSettings::Insert(LogDetail::LogDetailEnums detail, TLog::Severity severity)
{
    auto const index = static_cast<std::size_t>(detail);
    if (index < m_thresholds.size()) {
        m_thresholds[index].value.store(static_cast<std::uint16_t>(severity),
                                        std::memory_order_relaxed);
    } else {
        m_others[detail] = severity;
    }
}

/// Stores every threshold once, so that one that stays is there all the time.
void LogConfigSettings::Replace(ThresholdMap&& thresholds)
{
    for (std::size_t index = 0; index != m_thresholds.size(); ++index) {
        auto const found = thresholds.find(static_cast<LogDetail::LogDetailEnums>(index));
        m_thresholds[index].value.store(
            found == thresholds.end() ? kUnset : static_cast<std::uint16_t>(found->second),
            std::memory_order_relaxed);
        if (found != thresholds.end()) {
            thresholds.erase(found);
        }
    }
    m_others = std::move(thresholds);
}

void LogConfigSettings::SetProblem(char16_t const* text)
{
    std::lock_guard<TReadWriteLock> const lock(m_lock);
    m_problem = text;
}

LogConfig::LogConfig(std::unique_ptr<ILogConfigSettings> settings) : m_settings(std::move(settings))
{}

LogConfig::~LogConfig() = default;

std::unique_ptr<LogConfig> LogConfig::CreateLogConfig(TPath const& path)
{
    return std::make_unique<LogConfig>(std::make_unique<LogConfigSettings>(path));
}

std::unique_ptr<LogConfig>
LogConfig::CreateLogConfigForTest(std::unique_ptr<ILogConfigSettings> settings)
{
    return std::make_unique<LogConfig>(std::move(settings));
}

TLog::Severity LogConfig::GetDetailSeverity(LogDetail::LogDetailEnums detail) const
{
    return m_settings->GetDetailSeverity(detail);
}

bool LogConfig::DetailAcceptsSeverity(LogDetail::LogDetailEnums detail,
                                      TLog::Severity severity) const
{
    return m_settings->DetailAcceptsSeverity(detail, severity);
}

bool LogConfig::IsDetailSet(LogDetail::LogDetailEnums detail) const
{
    return m_settings->IsDetailSet(detail);
}

void LogConfig::SetDetailSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity)
{
    m_settings->SetDetailSeverity(detail, severity);
}

void LogConfig::ClearDetailSeverities()
{
    m_settings->ClearDetails();
}

void LogConfig::LogStartupProblems()
{
    m_settings->LogStartupProblems();
}
