/// This program run once more, as a process of its own that may end in any way.

#pragma once

#include "korsys/main/system/TPathCore.h"
#include "korsys/main/system/TSystemCore.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

constexpr int kLongMs = 60000; ///< For waits that end early unless something is broken.

/// What `main` does when the program is started with `--child NAME FOLDER`: the exit code.
using ChildRoles = std::map<std::string, std::function<int(std::string const& folder)>>;

inline bool IsChild(int argc, char** argv)
{
    return argc == 4 && argv[1] == std::string("--child");
}

inline int RunChild(ChildRoles const& roles, char** argv)
{
    return roles.at(argv[2])(argv[3]);
}

/// The `main` of a test program that also runs as its own children.
inline int RunTestsOrChild(ChildRoles const& roles, int argc, char** argv)
{
    if (IsChild(argc, argv)) {
        return RunChild(roles, argv);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

/// Its standard input and output are pipes to this process. It is killed by the destructor, unless
/// it has ended.
class ChildProcess
{
public:
    ChildProcess(std::string role, std::string folder)
    {
        ::posix_spawn_file_actions_t actions;
        int in[2];
        Checked(::posix_spawn_file_actions_init(&actions));
        OpenPipe(in);
        OpenPipe(m_out);
        m_in = in[1];
        Checked(::posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO));
        Checked(::posix_spawn_file_actions_adddup2(&actions, m_out[1], STDOUT_FILENO));
        std::string program = TSystemCore::ExecutableFilename().GenericString().toStdString();
        std::string option = "--child";
        char* const arguments[] = {program.data(), option.data(), role.data(), folder.data(),
                                   nullptr};
        Checked(::posix_spawn(&m_id, program.c_str(), &actions, nullptr, arguments, environ));
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(m_out[1]);
    }
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;
    ~ChildProcess()
    {
        Kill();
        LetGo();
        ::close(m_out[0]);
    }

    /// The next line that it prints, or what it printed before its end.
    std::string ReadLine()
    {
        std::string line;
        for (char byte = 0; ReadByte(byte) && byte != '\n';) {
            line += byte;
        }
        return line;
    }

    /// Its standard input ends.
    void LetGo()
    {
        if (m_in >= 0) {
            ::close(m_in);
            m_in = -1;
        }
    }

    /// Waits for its end, and that of its children. Returns its exit code, or a signal's number
    /// below zero: that of SIGKILL when it took too long.
    int End()
    {
        for (char byte = 0; ReadByte(byte);) {}
        return Reap();
    }

    void Kill()
    {
        if (m_id > 0) {
            ::kill(m_id, SIGKILL);
            Reap();
        }
    }

private:
    static void Checked(int error)
    {
        if (error != 0) {
            throw std::system_error(error, std::generic_category(), "child process");
        }
    }

    static void OpenPipe(int (&ends)[2])
    {
        Checked(::pipe(ends) == 0 ? 0 : errno);
        for (int const end : ends) {
            ::fcntl(end, F_SETFD, FD_CLOEXEC);
        }
    }

    /// Returns false at the end of the output. A child that is silent for too long is killed.
    bool ReadByte(char& byte)
    {
        ::pollfd wanted = {m_out[0], POLLIN, 0};
        int ready = 0;
        do {
            ready = ::poll(&wanted, 1, kLongMs);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0) {
            Kill();
            return false;
        }
        return ::read(m_out[0], &byte, 1) == 1;
    }

    int Reap()
    {
        if (m_id > 0) {
            int status = 0;
            while (::waitpid(m_id, &status, 0) < 0 && errno == EINTR) {}
            m_id = 0;
            m_result = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
        }
        return m_result;
    }

    ::pid_t m_id = 0;
    int m_in = -1;
    int m_out[2] = {-1, -1};
    int m_result = 0;
};
