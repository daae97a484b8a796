/// This program run once more, as a process of its own that may end in any way.

#pragma once

#include "korsys/main/system/TPathCore.h"
#include "korsys/main/system/TSystemCore.h"
#include "korsys/tests/support/KorTest.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

constexpr int kLongMs = 60000; ///< For waits that end early unless something is broken.

/// Whether nobody is left to wait for.
inline bool IsChildless()
{
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

/// What `main` does when the program is started with `--child NAME FOLDER`: the exit code.
using ChildRoles = std::map<std::string, std::function<int(std::string const& folder)>>;

/// The `main` of a test program that also runs as its own children.
inline int RunTestsOrChild(ChildRoles const& roles, int argc, char** argv)
{
    if (argc == 4 && argv[1] == std::string("--child")) {
        ::alarm(kLongMs / 1000); // a child that hangs is killed
        return roles.at(argv[2])(argv[3]);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

/// Its standard input and output lead to this process. It is killed by the destructor, unless it
/// has ended.
class ChildProcess
{
public:
    ChildProcess(std::string const& role, std::string const& folder)
    {
        std::string const program = TSystemCore::ExecutableFilename().GenericString().toStdString();
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
            throw std::system_error(errno, std::generic_category(), "child process");
        }
        ::fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        m_id = ::fork();
        if (m_id == 0) {
            ::dup2(ends[1], STDIN_FILENO);
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[1]);
            ::execl(program.c_str(), program.c_str(), "--child", role.c_str(), folder.c_str(),
                    nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        m_stream = ::fdopen(ends[0], "r");
    }
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;
    ~ChildProcess()
    {
        Kill();
        std::fclose(m_stream);
    }

    /// The next line that it prints, or what it printed before its end.
    std::string ReadLine()
    {
        std::string line;
        for (int byte; (byte = std::fgetc(m_stream)) != EOF && byte != '\n';) {
            line += static_cast<char>(byte);
        }
        return line;
    }

    /// Its standard input ends.
    void LetGo() { ::shutdown(::fileno(m_stream), SHUT_WR); }

    /// Waits for its end, and that of its children. Returns its exit code, or a signal's number
    /// below zero: that of SIGALRM when it took too long.
    int End()
    {
        while (std::fgetc(m_stream) != EOF) {}
        int status = -1;
        while (m_id > 0 && ::waitpid(m_id, &status, 0) < 0 && errno == EINTR) {}
        m_id = 0;
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

    void Kill()
    {
        if (m_id > 0) {
            ::kill(m_id, SIGKILL);
            End();
        }
    }

private:
    ::pid_t m_id;
    std::FILE* m_stream;
};
