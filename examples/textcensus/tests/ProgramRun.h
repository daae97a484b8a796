/// Runs the program under test as a user does, in a folder of its own.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A folder for one test, removed with everything in it.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;

    std::filesystem::path const& Path() const { return m_path; }

    /// Writes a file, and first the folders on the way to it.
    void Write(std::filesystem::path const& name, std::string const& bytes) const;

private:
    std::filesystem::path m_path;
};

/// Where standard output leads.
enum class Stdout
{
    Captured,
    Closed,
    BrokenPipe, ///< Nobody reads.
    FullDevice
};

/// Where standard error leads; it is captured in any case.
enum class Stderr
{
    Pipe,
    Terminal
};

struct Outcome
{
    int status = -1; ///< The exit status; 1000 and the signal's number when one ended the program.
    std::string out;
    std::string err;
};

/// Runs the program in `folder` until it ends; after a minute it is ended.
Outcome RunProgram(std::filesystem::path const& folder, std::vector<std::string> const& arguments,
                   Stdout out = Stdout::Captured, Stderr err = Stderr::Pipe);
