/// A folder of a test's own that goes with all that is in it, and what tests of files check with.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/tests/support/KorTest.h"

/// Native names are relative to the folder.
class TemporaryFolder
{
public:
    TemporaryFolder() : m_native(std::filesystem::temp_directory_path() / "kor-test-XXXXXX")
    {
        std::string name = m_native.string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder " + name);
        }
        m_native = std::filesystem::canonical(name);
    }

    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_native, ignored);
    }

    TPath Path() const { return TPath(TString(m_native.c_str())); }
    TPath operator/(TString const& name) const { return Path() / TPath(name); }
    std::filesystem::path Native(std::string const& name) const { return m_native / name; }

    /// Makes the folders on the way to the file as well.
    void Write(std::string const& name, std::string const& bytes) const
    {
        std::filesystem::create_directories(Native(name).parent_path());
        std::ofstream(Native(name), std::ios::binary) << bytes;
    }

    /// What is in the file, `missing` when there is none.
    std::string Read(std::string const& name, std::string const& missing = "(missing)") const
    {
        std::ifstream file(Native(name), std::ios::binary);
        return file ? std::string(std::istreambuf_iterator<char>(file), {}) : missing;
    }

private:
    std::filesystem::path m_native;
};

/// How many descriptors the process has open.
inline long CountOpenDescriptors()
{
    std::filesystem::directory_iterator const open("/dev/fd");
    return static_cast<long>(std::distance(begin(open), end(open)));
}

/// Whoever works in it closes what it opens.
struct TidyFolder : TemporaryFolder
{
    ~TidyFolder() { EXPECT_EQ(CountOpenDescriptors(), descriptors); }

    long const descriptors = CountOpenDescriptors();
};
