/// The thresholds that the categories of records have of their own.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/LogDetail.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/thread/TReadWriteLock.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>

class TPath;

/// A store of thresholds. A host may supply its own through `LogConfig`.
///
/// Thread safety: every operation may be called from any thread.
class KORCOREPLATFORM_EXPORT ILogConfigSettings
{
public:
    virtual ~ILogConfigSettings();

    /// The category's threshold, `Severity::Off` when it has none.
    virtual TLog::Severity GetDetailSeverity(LogDetail::LogDetailEnums detail) const = 0;

    /// Whether the category has a threshold and `severity` reaches it.
    virtual bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail,
                                       TLog::Severity severity) const = 0;

    virtual bool IsDetailSet(LogDetail::LogDetailEnums detail) const = 0;
    virtual void SetDetailSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity) = 0;
    virtual void ClearDetails() = 0;

    /// Logs the problems met while the settings were read, at Warn; it may be called again.
    virtual void LogStartupProblems() = 0;

protected:
    ILogConfigSettings() = default;
    ILogConfigSettings(ILogConfigSettings const&) = default;
    ILogConfigSettings& operator=(ILogConfigSettings const&) = default;
};

/// The store that a logger has. It starts with what a file says:
///
///     {"Network": "Debug", "QueryXML": "trace"}
///
/// The file is JSON in UTF-8. Categories and severities are named in any letter case; a name that
/// is no category counts as `Count`, a text that is no severity as `Off`, and of a category that
/// occurs twice the first one holds.
///
/// Thread safety: safe from any thread.
class KORCOREPLATFORM_EXPORT LogConfigSettings : public ILogConfigSettings
{
public:
    /// Reads the file at `path`, as `ReadSettingsFromFile`.
    explicit LogConfigSettings(TPath const& path);
    LogConfigSettings(LogConfigSettings const&) = delete;
    LogConfigSettings& operator=(LogConfigSettings const&) = delete;
    ~LogConfigSettings() override;

    /// Reads a file as `InitializeFromString` does a text. An empty path means none. A file that
    /// cannot be read is a startup problem.
    /// Throws: as `InitializeFromString`.
    void ReadSettingsFromFile(TPath const& path);

    /// Replaces all thresholds by those of a JSON text. An empty text changes nothing, nor does one
    /// that is not a JSON object, which is a startup problem. A byte-order mark is skipped.
    /// Throws: `KorvelException` with id AutoGen_0x1A36D05F when a value is not a string; the
    /// thresholds are then unchanged.
    void InitializeFromString(TString text);

    TLog::Severity GetDetailSeverity(LogDetail::LogDetailEnums detail) const override;
    bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail,
                               TLog::Severity severity) const override;
    bool IsDetailSet(LogDetail::LogDetailEnums detail) const override;
    void SetDetailSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity) override;
    void ClearDetails() override;

    /// Logs the last problem. It stays until the settings are destroyed.
    void LogStartupProblems() override;

private:
    using ThresholdMap =
        std::unordered_map<LogDetail::LogDetailEnums, TLog::Severity, LogDetail::LogDetailHash>;

    static constexpr std::uint16_t kUnset = 0xFFFF; ///< Above every severity: accepts none.

    struct Threshold
    {
        std::atomic<std::uint16_t> value{kUnset}; ///< Relaxed: it orders nothing else.
    };

    std::uint16_t ThresholdOf(LogDetail::LogDetailEnums detail) const;
    void Insert(LogDetail::LogDetailEnums detail, TLog::Severity severity);
    void Replace(ThresholdMap&& thresholds);
    void SetProblem(char16_t const* text);

    mutable TReadWriteLock
        m_lock; ///< Guards the members below; `m_thresholds` against writers only.

    /// By category, `Count` included. Every log call with a category reads one, so without the
    /// lock.
    std::array<Threshold, LogDetail::Count + 1> m_thresholds;
    ThresholdMap m_others; ///< Of numbers that are no category.
    TString m_problem;     ///< Met while reading; empty when there was none.
};

/// The thresholds of one logger: hands everything on to a store.
///
/// Thread safety: as the store.
class KORCOREPLATFORM_EXPORT LogConfig
{
public:
    /// Requires: a store.
    explicit LogConfig(std::unique_ptr<ILogConfigSettings> settings);
    LogConfig(LogConfig const&) = delete;
    LogConfig& operator=(LogConfig const&) = delete;
    ~LogConfig();

    /// With a new `LogConfigSettings(path)`.
    /// Throws: as that.
    static std::unique_ptr<LogConfig> CreateLogConfig(TPath const& path);

    /// Requires: a store.
    static std::unique_ptr<LogConfig>
    CreateLogConfigForTest(std::unique_ptr<ILogConfigSettings> settings);

    TLog::Severity GetDetailSeverity(LogDetail::LogDetailEnums detail) const;
    bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity) const;
    bool IsDetailSet(LogDetail::LogDetailEnums detail) const;
    void SetDetailSeverity(LogDetail::LogDetailEnums detail, TLog::Severity severity);
    void ClearDetailSeverities();
    void LogStartupProblems();

private:
    std::unique_ptr<ILogConfigSettings> m_settings; ///< Never null.
};
