#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/MemoryChannel.h"
#include "korcoreplatform/main/core/logging/StandardErrorChannel.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

namespace {

using namespace TLog;

std::shared_ptr<TLog::Value> Text(char16_t const* units)
{
    return TLog::Literal::String(TString(units));
}

TEST(OtherChannelsTest, ATerminalsLineIsForPeople)
{
    auto const pairs = Object::Make({{u"name", Text(u"a\\ \"b")},
                                     {u"inner", Object::Make({{u"k", Text(u"v")}})},
                                     {u"line", Text(u"1\n2")},
                                     {u"none", nullptr},
                                     {u"void", Text(u"")}});
    std::tuple<Severity, Event, std::string> const cases[] = {
        {Severity::Info, Event(u"msg", Text(u"a \"b\" \u00e9")), "Info  a \"b\" \u00e9"},
        {Severity::Error, Event(u"msg", Text(u"\x1b[2J\nnext\u009b\u00a0")),
         "Error \\u001b[2J\\nnext\\u009b\u00a0"},
        {Severity::LogDetail, Event(u"msg", TLog::Literal::Int(5)), "LogDetail msg 5"},
        {Severity::Warn, Event(u"cache", pairs),
         R"(Warn  cache inner={"k":"v"} line=1\n2 name="a\\ \"b" none=null void="")"},
    };
    for (auto const& [severity, event, end] : cases) {
        testing::internal::CaptureStderr();
        TLog::StandardErrorChannel().Append(severity, event);
        std::string const time = event.GetTimestamp().GetFormattedLocalValue().toStdString();
        EXPECT_EQ(testing::internal::GetCapturedStderr(), time + " " + end + "\n");
    }
}

TEST(OtherChannelsTest, MemoryKeepsTheLatest)
{
    TLog::MemoryChannel channel(2);
    for (char16_t const* const key : {u"1", u"2", u"3"}) {
        channel.Append(Severity::Warn, Event(key, nullptr));
    }
    EXPECT_EQ(channel.GetRecords().at(0).event.GetKey(), u"2");
    EXPECT_TRUE(channel.GetLines().at(1).endsWith(uR"("k":"3"})"));
    OnThreads(2, [&](unsigned thread) {
        for (int i = 0; thread == 0 && i < 1000; ++i) {
            channel.Append(Severity::Info, Event(u"key", nullptr));
        }
        while (channel.GetCounters().lostRecords < 1001) {
            EXPECT_EQ(channel.GetRecords().size(), 2u);
        }
    });
}

} // namespace
