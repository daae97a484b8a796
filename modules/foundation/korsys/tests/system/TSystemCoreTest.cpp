#include "korsys/main/system/TSystemCore.h"

#include "korsys/tests/support/KorTest.h"

#include <unistd.h>

namespace {

bool ProcessIDIsTheSystems()
{
    return TSystemCore::ProcessID() == static_cast<std::uint32_t>(::getpid());
}

TPathCore Path(std::string const& path)
{
    return TPathCore(TStringCore::fromStdString(path));
}

TEST(TSystemCoreTest, ThreadsAndForkedChildrenHaveTheirOwnIds)
{
    std::uint64_t const here = TSystemCore::ThreadID();
    auto const isElsewhere = [here] {
        std::uint64_t const id = TSystemCore::ThreadID();
        return id != here && id != 0 && id == TSystemCore::ThreadID() && ProcessIDIsTheSystems();
    };
    std::thread([&] { EXPECT_TRUE(isElsewhere()); }).join();
    EXPECT_EXIT(std::_Exit(isElsewhere() ? 0 : 1), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(ProcessIDIsTheSystems());
    EXPECT_EQ(TSystemCore::ThreadID(), here);
}

TEST(TSystemCoreTest, PathsLeadToTheExecutableAndToModules)
{
    auto* const here = reinterpret_cast<void const*>(&ProcessIDIsTheSystems);
    auto* const library = reinterpret_cast<void const*>(&TSystemCore::ModuleFilename);
    EXPECT_EQ(TSystemCore::ModuleFilename(here), TSystemCore::ExecutableFilename());
    EXPECT_NE(TSystemCore::ModuleFilename(library), TSystemCore::ExecutableFilename());
    EXPECT_EQ(TSystemCore::ModuleDirectory(here), TSystemCore::ExecutablePath());
    EXPECT_EQ(TSystemCore::ModulePath(TPathCore()), TSystemCore::ExecutablePath());
    for (void const* const address : {here, library}) {
        std::string const file = TSystemCore::ModuleFilename(address).GenericString().toStdString();
        TPathCore const directory = TSystemCore::ModuleDirectory(address);
        std::size_t const slash = file.rfind('/');
        EXPECT_EQ(::access(file.c_str(), R_OK), 0) << file;
        EXPECT_EQ(file.front(), '/');
        EXPECT_EQ(directory, Path(file.substr(0, slash)));
        // By name, by path, and by another spelling of the path.
        for (std::string const& module : {file.substr(slash + 1), file, "/." + file}) {
            EXPECT_EQ(TSystemCore::ModulePath(Path(module)), directory) << module;
        }
    }
    int const local = 0;
    EXPECT_EQ(TSystemCore::ModuleFilename(&local), TPathCore());
    EXPECT_EQ(TSystemCore::ModuleDirectory(nullptr), TPathCore());
    EXPECT_EQ(TSystemCore::ModulePath(Path("no-such-module.so")), TPathCore());
    EXPECT_EQ(TSystemCore::ModulePath(Path("/no/such/module.so")), TPathCore());
}

} // namespace
