/// Runs the program under test as a user does.

#pragma once

#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>

struct Outcome
{
    int status; ///< The exit status; -1 when a signal ended the program.
    std::string out;
    std::string err;
};

/// Runs the program in the folder until it ends; after a minute of work it is ended. There is no
/// apostrophe in `arguments`; `redirections` are those of a shell, and come before the capture of
/// what is printed. Settings are those below XDG_CONFIG_HOME, and gone after the run without that.
inline Outcome RunProgram(TemporaryFolder const& folder, std::vector<std::string> const& arguments,
                          std::string const& redirections = "")
{
    TemporaryFolder const printed;
    std::string command = "ulimit -t 60; export XDG_CONFIG_HOME=\"${XDG_CONFIG_HOME:-" +
                          printed.Native("").string() + "}\"; cd '" + folder.Native("").string() +
                          "' && exec '" TEXTCENSUS_PROGRAM "' >'" + printed.Native("out").string() +
                          "' 2>'" + printed.Native("err").string() + "' " + redirections;
    for (std::string const& argument : arguments) {
        command += " '" + argument + "'";
    }
    int const status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, printed.Read("out"), printed.Read("err")};
}
