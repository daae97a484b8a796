#include "korsys/main/system/TStackWalker.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/system/TSystemCore.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

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
    int numbers[] = {2, 1};
    std::qsort(numbers, 2, sizeof(int), [](void const*, void const*) {
        s_frames = Walk(64, 0);
        return 0;
    });
    std::string const file = TSystemCore::ExecutableFilename().GenericString().toStdString();
    std::string const program = file.substr(file.rfind('/') + 1);
    ASSERT_FALSE(s_frames.empty());
    EXPECT_EQ(s_frames.front().rfind(program, 0), 0u) << "starts at its caller";
    bool hasExportedSymbol = false;
    for (std::string const& frame : s_frames) {
        hasExportedSymbol |= frame.find("!qsort") != std::string::npos;
        std::size_t const offset = frame.rfind("+0x");
        ASSERT_NE(offset, std::string::npos) << frame;
        EXPECT_EQ(frame.find_first_not_of("0123456789abcdef", offset + 3), std::string::npos);
        EXPECT_EQ(frame.substr(0, frame.find('!')).find('/'), std::string::npos) << frame;
    }
    EXPECT_TRUE(hasExportedSymbol) << testing::PrintToString(s_frames);
}

TEST(TStackWalkerTest, SymbolsAreDemangled)
{
    TStackWalker::SetActive(true);
    Frames frames;
    try {
        ThrowLogicException("file", 1, "text", KorErrorsError::LogicAssert_0x0AAE8A7B());
    } catch (LogicException const& e) {
        frames = e.GetErrorInfo().GetCallstack();
    }
    TStackWalker::SetActive(false);
    ASSERT_FALSE(frames.empty());
    std::string const symbol =
        "!ThrowLogicException(char const*, int, char const*, KorvelError const&)+0x";
    EXPECT_NE(frames.front().find(symbol), std::string::npos) << frames.front();
}

TEST(TStackWalkerTest, TakesAsManyFramesAsToldFromWhereItIsTold)
{
    EXPECT_TRUE(Walk(0, 0).empty());
    EXPECT_TRUE(Walk(-1, 0).empty());
    EXPECT_TRUE(Walk(64, 1000).empty());
    std::vector<Frames> walks; // from one line, so that only the frames left out differ
    for (int skip = 0; skip < 3; ++skip) {
        walks.push_back(Walk(3 - skip, skip));
    }
    ASSERT_EQ(walks[0].size(), 3u);
    EXPECT_EQ(walks[1], Frames(walks[0].begin() + 1, walks[0].end()));
    EXPECT_EQ(walks[2], Frames(walks[0].begin() + 2, walks[0].end()));
}

} // namespace
