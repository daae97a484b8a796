#include "korcoreplatform/main/core/logging/Logger.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/LogConfig.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/LoggerUse_p.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <pthread.h>

namespace {

struct LoggerSlot
{
    LoggerSlot() { TLog::LoggerUses::SetLogger(*logger); }

    std::mutex mutex; ///< Held to replace the logger and to publish; log calls do not take it.
    std::unique_ptr<TLog::Logger> logger = std::make_unique<TLog::NullLogger>();
};

/// Made at the first use and never destroyed: static constructors and destructors may log.
LoggerSlot& TheSlot()
{
    static auto& s_slot = *new LoggerSlot;
    return s_slot;
}

// A child made by `fork` has one thread, and a slot that nobody was changing.

extern "C" void LockSlot()
{
    TheSlot().mutex.lock();
}

extern "C" void UnlockSlot()
{
    TheSlot().mutex.unlock();
}

extern "C" void UnlockSlotInChild()
{
    TLog::LoggerUses::ForgetOthers();
    UnlockSlot();
}

/// Makes what log calls need before any thread can log. At exit it takes the host's logger away,
/// which writes what it still holds; the statics of everything that uses this library are gone by
/// then or do without it.
struct StartAndExit
{
    StartAndExit()
    {
        TheSlot();
        TLog::SeverityToString(TLog::Severity::Off);
        LogDetail::LogDetailToString(LogDetail::Count);
        ::pthread_atfork(&LockSlot, &UnlockSlot, &UnlockSlotInChild);
    }
    ~StartAndExit() { TLog::Logger::Set(nullptr); }
};

StartAndExit const s_startAndExit;

} // namespace

TLog::Logger::Logger(Severity minimal, TPath const& configPath)
    : m_minimal(minimal), m_config(LogConfig::CreateLogConfig(configPath))
{}

TLog::Logger::~Logger() = default;

bool TLog::Logger::AcceptsSeverity(Severity severity) const
{
    return m_minimal.load(std::memory_order_relaxed) <= severity;
}

bool TLog::Logger::IsDetailSet(LogDetail::LogDetailEnums detail) const
{
    return m_config->IsDetailSet(detail);
}

bool TLog::Logger::DetailAcceptsSeverity(LogDetail::LogDetailEnums detail, Severity severity) const
{
    return OptLogSeverity::IsSeverityPerLogDetailOn() && m_config->IsDetailSet(detail)
               ? m_config->DetailAcceptsSeverity(detail, severity)
               : AcceptsSeverity(severity);
}

TLog::Severity TLog::Logger::GetDetailSeverity(LogDetail::LogDetailEnums detail) const
{
    return m_config->GetDetailSeverity(detail);
}

void TLog::Logger::SetMinimalAcceptedSeverity(Severity severity)
{
    m_minimal.store(severity, std::memory_order_relaxed);
    LoggerSlot& slot = TheSlot();
    std::lock_guard<std::mutex> const lock(slot.mutex);
    if (slot.logger.get() == this) {
        PublishLowestAccepted();
    }
}

TLog::Severity TLog::Logger::GetMinimalAcceptedSeverity() const
{
    return m_minimal.load(std::memory_order_relaxed);
}

void TLog::Logger::SetDetail(LogDetail::LogDetailEnums detail, Severity severity)
{
    m_config->SetDetailSeverity(detail, severity);
}

void TLog::Logger::ClearDetails()
{
    m_config->ClearDetailSeverities();
}

void TLog::Logger::LogStartupProblems()
{
    m_config->LogStartupProblems();
}

std::unique_ptr<TLog::Logger>* TLog::Logger::Get() noexcept
{
    return &TheSlot().logger;
}

void TLog::Logger::Set(std::unique_ptr<Logger> logger)
{
    if (logger == nullptr) {
        logger = std::make_unique<NullLogger>();
    }
    LoggerSlot& slot = TheSlot();
    {
        std::lock_guard<std::mutex> const lock(slot.mutex);
        slot.logger.swap(logger);
        LoggerUses::SetLogger(*slot.logger);
        slot.logger->PublishLowestAccepted();
    }
    LoggerUses::WaitForOthers();
    // The former logger is destroyed here, without the lock: it may log, even set a logger.
}

void TLog::Logger::DecideByMinimalSeverity(std::type_info const& exactClass) noexcept
{
    m_decidingClass = &exactClass;
}

std::uint8_t TLog::Logger::LowestAccepted() const noexcept
{
    std::type_info const& ownClass = typeid(*this);
    if (ownClass == typeid(NullLogger)) {
        return LogMessageDetail::kAcceptsNothing;
    }
    if (m_decidingClass == nullptr || ownClass != *m_decidingClass) {
        return 0; // only the logger itself knows
    }
    auto const minimal = static_cast<std::uint8_t>(m_minimal.load(std::memory_order_relaxed));
    return std::min<std::uint8_t>(minimal, LogMessageDetail::kAcceptsNothing - 1);
}

void TLog::Logger::PublishLowestAccepted() const noexcept
{
    LogMessageDetail::g_lowestAccepted.store(LowestAccepted(), std::memory_order_relaxed);
}
