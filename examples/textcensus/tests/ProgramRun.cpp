#include "ProgramRun.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr unsigned kDeadlineSeconds = 60;

int Checked(int result)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return result;
}

struct FilePointerCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The two ends of a pipe or a terminal: what is written to one is read from the other.
struct Ends
{
    int reading = -1;
    int writing = -1;
};

Ends MakePipe()
{
    int ends[2];
    Checked(::pipe(ends));
    return {ends[0], ends[1]};
}

Ends MakeTerminal()
{
    Ends ends;
    ends.reading = Checked(::posix_openpt(O_RDWR | O_NOCTTY));
    Checked(::grantpt(ends.reading));
    Checked(::unlockpt(ends.reading));
    ends.writing = Checked(::open(::ptsname(ends.reading), O_RDWR | O_NOCTTY));
    return ends;
}

/// Up to the end; a terminal that nobody writes to any more fails instead of ending.
std::string ReadToEnd(int descriptor)
{
    std::string bytes;
    char room[4096];
    ssize_t count;
    while ((count = ::read(descriptor, room, sizeof(room))) > 0) {
        bytes.append(room, static_cast<std::size_t>(count));
    }
    return bytes;
}

void ReplaceStdout(Stdout out, int captured)
{
    switch (out) {
    case Stdout::Captured:
        ::dup2(captured, STDOUT_FILENO);
        break;
    case Stdout::Closed:
        ::close(STDOUT_FILENO);
        break;
    case Stdout::BrokenPipe: {
        Ends const ends = MakePipe();
        ::dup2(ends.writing, STDOUT_FILENO);
        ::close(ends.reading);
        break;
    }
    case Stdout::FullDevice:
        ::dup2(Checked(::open("/dev/full", O_WRONLY)), STDOUT_FILENO);
        break;
    }
}

[[noreturn]] void BecomeProgram(fs::path const& folder, std::vector<std::string> const& arguments)
{
    std::vector<char*> words = {const_cast<char*>(TEXTCENSUS_PROGRAM)};
    for (std::string const& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    ::alarm(kDeadlineSeconds); // outlives the change of programs
    if (::chdir(folder.c_str()) == 0) {
        ::execv(words[0], words.data());
    }
    ::_exit(127);
}

} // namespace

ScratchFolder::ScratchFolder()
{
    std::string name = (fs::temp_directory_path() / "textcensus-test-XXXXXX").native();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    m_path = name;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void ScratchFolder::Write(fs::path const& name, std::string const& bytes) const
{
    fs::path const path = m_path / name;
    fs::create_directories(path.parent_path());
    if (!(std::ofstream(path, std::ios::binary) << bytes).flush()) {
        throw std::runtime_error("cannot write " + path.native());
    }
}

Outcome RunProgram(fs::path const& folder, std::vector<std::string> const& arguments, Stdout out,
                   Stderr err)
{
    std::unique_ptr<std::FILE, FilePointerCloser> const captured(std::tmpfile());
    Ends const errors = err == Stderr::Terminal ? MakeTerminal() : MakePipe();
    pid_t const child = Checked(::fork());
    if (child == 0) {
        ReplaceStdout(out, ::fileno(captured.get()));
        ::dup2(errors.writing, STDERR_FILENO);
        ::close(errors.writing);
        ::close(errors.reading);
        BecomeProgram(folder, arguments);
    }
    ::close(errors.writing);
    Outcome outcome;
    outcome.err = ReadToEnd(errors.reading);
    ::close(errors.reading);
    int status = 0;
    Checked(::waitpid(child, &status, 0));
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    ::lseek(::fileno(captured.get()), 0, SEEK_SET);
    outcome.out = ReadToEnd(::fileno(captured.get()));
    return outcome;
}
