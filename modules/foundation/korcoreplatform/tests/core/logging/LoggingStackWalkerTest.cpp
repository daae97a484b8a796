#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/text/THash.h"

namespace {

using TLog::Literal;

TEST(LoggingStackWalkerTest, StacksAreCapturedWhenActiveOrForced)
{
    auto const disabled = CaptureStackTraceForLogging(false);
    EXPECT_EQ(dynamic_cast<Literal&>(*disabled.at(u"stack")).GetString(), u"disabled");
    EXPECT_EQ(disabled.size(), 1u);

    auto const forced = CaptureStackTraceForLogging(true);
    TStackWalker::SetActive(true);
    auto const active = CaptureStackTraceForLogging(false);
    TStackWalker::SetActive(false);
    for (auto const& values : {forced, active}) {
        TString const stack = dynamic_cast<Literal&>(*values.at(u"stack")).GetString();
        unsigned long hash = 0;
        long long frames = 0;
        for (TString const& frame : stack.split(u'\n')) {
            std::string const bytes = frame.toStdString();
            EXPECT_FALSE(bytes.empty());
            hash = THashCombine(hash, THash(bytes.data(), bytes.size()));
            ++frames;
        }
        EXPECT_EQ(dynamic_cast<Literal&>(*values.at(u"stack-size")).GetInt(), frames);
        EXPECT_EQ(dynamic_cast<Literal&>(*values.at(u"stack-hash")).GetInt(),
                  static_cast<long long>(hash));
        EXPECT_EQ(values.size(), 3u);
        EXPECT_FALSE(stack.contains(u"ForceGenerateCallstack"));
    }
}

TEST(LoggingStackWalkerTest, FramesAreOneALine)
{
    EXPECT_EQ(LoggingStackWalker::FramesToLogLine({}), u"");
    EXPECT_EQ(LoggingStackWalker::FramesToLogLine({"a!\xC3\xA9+0x1"}), u"a!\u00E9+0x1");
    EXPECT_EQ(LoggingStackWalker::CallstackFramesAsString({"a", "", "b"}), u"a\n\nb");
}

} // namespace
