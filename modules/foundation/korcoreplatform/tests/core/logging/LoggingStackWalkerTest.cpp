#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/main/text/THash.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TLog::Literal const& At(TLog::Object::Map const& values, char16_t const* name)
{
    return dynamic_cast<TLog::Literal const&>(*values.at(name));
}

TEST(LoggingStackWalkerTest, StacksAreCapturedWhenActiveOrForced)
{
    auto const disabled = CaptureStackTraceForLogging(false);
    ASSERT_EQ(disabled.size(), 1u);
    EXPECT_EQ(At(disabled, u"stack").GetString(), u"disabled");

    auto const forced = CaptureStackTraceForLogging(true);
    TStackWalker::SetActive(true);
    auto const active = CaptureStackTraceForLogging(false);
    TStackWalker::SetActive(false);
    for (auto const& values : {forced, active}) {
        ASSERT_EQ(values.size(), 3u);
        TString const stack = At(values, u"stack").GetString();
        std::vector<TString> const frames = stack.split(u'\n');
        EXPECT_EQ(At(values, u"stack-size").GetInt(), static_cast<long long>(frames.size()));
        unsigned long hash = 0;
        for (TString const& frame : frames) {
            std::string const bytes = frame.toStdString();
            EXPECT_FALSE(bytes.empty());
            hash = THashCombine(hash, THash(bytes.data(), bytes.size()));
        }
        EXPECT_EQ(At(values, u"stack-hash").GetInt(), static_cast<long long>(hash));
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
