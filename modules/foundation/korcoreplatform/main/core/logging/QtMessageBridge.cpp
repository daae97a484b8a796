#include "korcoreplatform/main/core/logging/QtMessageBridge.h"

#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/LoggerUse_p.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TString.h"

#include <QString>
#include <QtGlobal>

#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

using TLog::Literal;
using TLog::Object;
using TLog::Severity;

constexpr int kLongestFlushMs = 900; // less than a logger that is replaced waits for its users

std::mutex s_mutex;
int s_bridges = 0; ///< How many live; guarded by `s_mutex`.

// Read by the handler, which another handler may still call when the last bridge is gone.
std::atomic<bool> s_isLogging{false};
std::atomic<QtMessageHandler> s_former{nullptr};

enum class ThreadState : unsigned char
{
    Logs,     ///< A message becomes a record.
    Excluded, ///< A message goes to the former handler: it comes from logging.
    PassesOn  ///< The former handler is running. Should it call back, nothing is left to be done.
};

thread_local ThreadState t_state = ThreadState::Logs;

class StateScope
{
public:
    explicit StateScope(ThreadState state) noexcept : m_outer(std::exchange(t_state, state)) {}
    StateScope(StateScope const&) = delete;
    StateScope& operator=(StateScope const&) = delete;
    ~StateScope() { t_state = m_outer; }

private:
    ThreadState m_outer;
};

Severity SeverityOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return Severity::Debug;
    case QtInfoMsg:
        return Severity::Info;
    case QtWarningMsg:
        return Severity::Warn;
    case QtCriticalMsg:
        return Severity::Error;
    case QtFatalMsg:
        break;
    }
    return Severity::Fatal;
}

void AddText(Object::Map& values, char16_t const* name, char const* text)
{
    if (text != nullptr && *text != '\0') {
        values[name] = Literal::String(TString::fromUtf8(text));
    }
}

Object::Map ValuesOf(QMessageLogContext const& context, QString const& message)
{
    Object::Map values{{u"msg", Literal::String(TString(message))}};
    if (context.category != nullptr && std::strcmp(context.category, "default") != 0) {
        AddText(values, u"category", context.category);
    }
    AddText(values, u"file", context.file);
    AddText(values, u"function", context.function);
    if (context.line > 0) {
        values[u"line"] = Literal::Int(context.line);
    }
    return values;
}

/// Waits while it can be waited for: the process is about to end.
void Flush(TLog::Logger& logger)
{
    if (auto* const asyncLogger = dynamic_cast<TLog::AsyncLogger*>(&logger)) {
        asyncLogger->FlushAndWait(kLongestFlushMs);
    } else {
        logger.Flush();
    }
}

/// Returns whether the message has got where it belongs, if only because nobody wants it.
bool Log(QtMsgType type, QMessageLogContext const& context, QString const& message) noexcept
{
    StateScope const scope(ThreadState::Excluded);
    try {
        TLog::LoggerUse const logger;
        Severity const severity = SeverityOf(type);
        if (logger->AcceptsSeverity(severity)) {
            logger->Log(severity, TLog::Event(u"qt", Object::Make(ValuesOf(context, message))));
        }
        if (type == QtFatalMsg) {
            Flush(*logger);
        }
        return true;
    } catch (...) { // Qt sends messages from destructors
        return false;
    }
}

void PassOn(QtMsgType type, QMessageLogContext const& context, QString const& message)
{
    StateScope const scope(ThreadState::PassesOn);
    if (QtMessageHandler const former = s_former.load(std::memory_order_acquire)) {
        former(type, context, message);
    }
}

void Handle(QtMsgType type, QMessageLogContext const& context, QString const& message)
{
    if (t_state == ThreadState::PassesOn) {
        return;
    }
    bool const logs = t_state == ThreadState::Logs && s_isLogging.load(std::memory_order_relaxed);
    if (!logs || !Log(type, context, message) || type == QtFatalMsg) {
        PassOn(type, context, message);
    }
}

} // namespace

TLog::QtMessageBridge::QtMessageBridge()
{
    std::lock_guard<std::mutex> const lock(s_mutex);
    if (s_bridges++ == 0) {
        s_isLogging.store(true, std::memory_order_relaxed);
        // Pairs with the load of `PassOn`.
        s_former.store(qInstallMessageHandler(&Handle), std::memory_order_release);
    }
}

TLog::QtMessageBridge::~QtMessageBridge()
{
    std::lock_guard<std::mutex> const lock(s_mutex);
    if (--s_bridges > 0) {
        return;
    }
    s_isLogging.store(false, std::memory_order_relaxed);
    QtMessageHandler const top = qInstallMessageHandler(s_former.load(std::memory_order_relaxed));
    if (top != &Handle) {
        qInstallMessageHandler(top); // it may pass its messages on to ours
    }
}

void TLog::QtMessageBridge::ExcludeThisThread() noexcept
{
    t_state = ThreadState::Excluded;
}
