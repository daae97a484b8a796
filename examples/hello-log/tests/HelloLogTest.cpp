#include "korcoreplatform/tests/support/LogLines.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

TEST(HelloLogTest, TheRecordsAreLinesOfOneFile)
{
    TemporaryFolder const folder;
    std::filesystem::path const path = folder.Native("");
    ASSERT_EQ(std::system(("cd '" + path.native() + "' && '" HELLO_LOG_PROGRAM "'").c_str()), 0);

    std::filesystem::directory_iterator const files(path);
    ASSERT_NE(files, end(files));
    std::string const name = files->path().filename();
    EXPECT_EQ(name.substr(0, 6), "hello_");
    EXPECT_EQ(
        LogLines(folder.Read(name)),
        (std::vector<std::string>{"info open-log {\"path\":\"" + name + "\"}", "info msg \"hello\"",
                                  "info counted {\"name\":\"Zo\xC3\xAB\",\"units\":\"3\"}",
                                  "info close-log {\"path\":\"" + name + "\"}"}));
}

} // namespace
