#include "korcoreplatform/main/core/logging/QtMessageBridge.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <QMessageLogger>
#include <QtGlobal>

#include <csignal>
#include <new>

namespace {

using TLog::QtMessageBridge;
using TLog::Severity;
using Texts = std::vector<std::string>;

Texts s_seen; ///< By the handler below the bridge.
QtMessageHandler s_bridge = nullptr;

void Remember(QtMsgType, QMessageLogContext const&, QString const& message)
{
    s_seen.push_back(message.toStdString());
}

/// Installs `handler` while it lives.
struct HandlerInstalled
{
    explicit HandlerInstalled(QtMessageHandler handler) : former(qInstallMessageHandler(handler))
    {
        s_seen.clear();
    }
    ~HandlerInstalled() { qInstallMessageHandler(former); }

    QtMessageHandler const former;
};

/// Says something through the bridge itself, past the guard that Qt has of its own, and fails.
struct TalkingLogger : RecordingLogger
{
    using RecordingLogger::Log;
    using RecordingLogger::RecordingLogger;
    void Log(Severity severity, TLog::Event&& event) override
    {
        RecordingLogger::Log(severity, std::move(event));
        s_bridge(QtWarningMsg, QMessageLogContext(), QStringLiteral("inner"));
        throw std::bad_alloc();
    }
};

TEST(QtMessageBridgeTest, AMessageBecomesARecord)
{
    HandlerInstalled const below(&Remember);
    LogRecording const recording(Severity::Info);
    {
        QtMessageBridge const bridge;
        QMessageLogger("a.cpp", 7, "f()", "host.net").info("%d rows", 3);
        QMessageLogger(nullptr, 0, nullptr, "default").critical("plain");
        QMessageLogger().warning("warned");
        QMessageLogger().debug("refused");
    }
    QMessageLogger().warning("after");
    ASSERT_EQ(recording.Lines(), (Texts{"Info: qt", "Error: qt", "Warn: qt"}));
    EXPECT_EQ(TLog::Formatter()(*recording.Records()[0].event.GetValue()),
              u"{\"category\":\"host.net\",\"file\":\"a.cpp\",\"function\":\"f()\",\"line\":7,"
              u"\"msg\":\"3 rows\"}");
    EXPECT_EQ(TLog::Formatter()(*recording.Records()[1].event.GetValue()), u"{\"msg\":\"plain\"}");
    EXPECT_EQ(s_seen, Texts{"after"});
}

TEST(QtMessageBridgeTest, TheFormerHandlerGetsWhatTheLogDoesNot)
{
    HandlerInstalled const below(&Remember);
    LoggerInSlot<TalkingLogger> const logger(Severity::Trace);
    QtMessageBridge const bridge;
    s_bridge = HandlerInstalled(&Remember).former;
    QMessageLogger().warning("outer");
    EXPECT_EQ(s_seen, (Texts{"inner", "outer"}));
    std::thread([] {
        QtMessageBridge::ExcludeThisThread();
        QMessageLogger().warning("excluded");
    }).join();
    EXPECT_EQ(s_seen.back(), "excluded");
    EXPECT_EQ(logger->records.size(), 1u);
}

TEST(QtMessageBridgeTest, BridgesAndHandlersMayEndInAnyOrder)
{
    HandlerInstalled const below(&Remember);
    LogRecording const recording;
    std::optional<QtMessageBridge> first(std::in_place);
    std::optional<QtMessageBridge> second(std::in_place);
    first.reset();
    QMessageLogger().warning("logged");
    {
        HandlerInstalled const above([](auto type, auto const& context, QString const& message) {
            s_bridge(type, context, QStringLiteral("above ") + message);
        });
        s_bridge = above.former;
        second.reset();
        QMessageLogger().warning("stays");
        EXPECT_EQ(s_seen, Texts{"above stays"});
        QtMessageBridge const third; // on top of a handler that calls the bridge
        s_bridge(QtFatalMsg, QMessageLogContext(), QStringLiteral("circle"));
    }
    EXPECT_EQ(recording.Lines(), (Texts{"Warn: qt", "Fatal: qt"}));
}

TEST(QtMessageBridgeDeathTest, AFatalMessageIsPrintedAndInTheFileWhenTheProcessEnds)
{
    TemporaryFolder const folder;
    auto const die = [&folder] {
        SetLogger(MakeFileChannel(folder / u"a.log"));
        QtMessageBridge const bridge;
        QMessageLogger().fatal("the end");
    };
    EXPECT_EXIT(die(), testing::KilledBySignal(SIGABRT), "the end");
    EXPECT_NE(folder.Read("a.log").find(R"("k":"qt","v":{"msg":"the end"})"), std::string::npos);
}

} // namespace
