#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

TEST(HostTest, EachPieceOfWorkHasRecordsWithItsContext)
{
    TemporaryFolder const folder;
    std::filesystem::path const path = folder.Native("");
    std::ofstream(path / "text") << "caf\xC3\xA9";
    std::string const home =
        "HOME='" + path.native() + "' XDG_CONFIG_HOME='" + path.native() + "' ";
    std::string const files = " '" + (path / "text").native() + "' '" + (path / "absent").native();
    ASSERT_EQ(
        std::system((home + "'" HOST_PROGRAM "' '" + path.native() + "'" + files + "'").c_str()),
        0);

    std::map<std::string, nlohmann::json> records; // by key
    for (auto const& entry : std::filesystem::directory_iterator(path)) {
        if (entry.path().extension() == ".log") {
            std::istringstream lines(folder.Read(entry.path().filename()));
            for (std::string line; std::getline(lines, line);) {
                auto const record = nlohmann::json::parse(line);
                EXPECT_TRUE(records.emplace(record.at("k"), record).second) << line; // once each
            }
        }
    }
    EXPECT_EQ(records["read"]["v"], (nlohmann::json{{"units", "4"}}));
    EXPECT_EQ(records["read"]["ctx"]["path"], (path / "text").native());
    EXPECT_EQ(records["excp"]["ctx"]["path"], (path / "absent").native());
    EXPECT_EQ(records["excp"]["v"]["excp-type"], "TIO::Exception");
    EXPECT_EQ(records["msg"]["v"], "done");
    EXPECT_FALSE(records["msg"].contains("ctx"));
}

} // namespace
