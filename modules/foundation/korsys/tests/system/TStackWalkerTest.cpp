#include "korsys/main/system/TStackWalker.h"

#include "korsys/main/system/TSystemCore.h"
#include "korsys/tests/support/KorTest.h"

#include <cstddef>
#include <ios>
#include <locale>

namespace {

using Frames = std::vector<std::string>;

Frames Walk(int maxFrames, int framesToSkip)
{
    StackWalkerConfig config;
    config.maxFrames = maxFrames;
    config.framesToSkip = framesToSkip;
    TStackWalker walker(config);
    bool const hasFrames = walker.GenerateCallstack();
    EXPECT_EQ(hasFrames, !walker.GetCollected().empty());
    return walker.GetCollected();
}

TEST(TStackWalkerTest, FramesNameModuleSymbolAndOffset)
{
    static Frames s_frames;
    std::ostringstream stream; // called back from a library that exports its functions
    stream.register_callback([](auto...) { s_frames = Walk(64, 0); }, 0);
    stream.imbue(std::locale::classic());

    std::string const file = TSystemCore::ExecutableFilename().GenericString().toStdString();
    std::string const program = file.substr(file.rfind('/') + 1);
    ASSERT_FALSE(s_frames.empty());
    EXPECT_EQ(s_frames.front().rfind(program, 0), 0u) << "starts at its caller";
    bool hasSymbol = false;
    for (std::string const& frame : s_frames) {
        SCOPED_TRACE(frame);
        std::size_t const offset = frame.rfind("+0x");
        ASSERT_NE(offset, std::string::npos);
        EXPECT_EQ(frame.find_first_not_of("0123456789abcdef", offset + 3), std::string::npos);
        std::size_t const bang = frame.find('!');
        EXPECT_EQ(frame.substr(0, bang).find('/'), std::string::npos);
        hasSymbol |= bang < frame.find("ios_base::imbue(std::");
    }
    EXPECT_TRUE(hasSymbol) << testing::PrintToString(s_frames);
}

TEST(TStackWalkerTest, TakesAsManyFramesAsToldFromWhereItIsTold)
{
    EXPECT_TRUE(Walk(0, 0).empty() && Walk(-1, 0).empty() && Walk(64, 1000).empty());
    EXPECT_EQ(Walk(2, 0).size(), 2u);
    Frames const all = Walk(64, 0);
    ASSERT_GT(all.size(), 3u);
    // The first two are in `Walk` and here, and the place here is another one.
    EXPECT_EQ(Walk(64, 2), Frames(all.begin() + 2, all.end()));
}

} // namespace
