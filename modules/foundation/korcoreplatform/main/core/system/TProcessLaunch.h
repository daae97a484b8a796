/// Running a program to its end and collecting what it writes, without an event loop.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A program with everything that it is to be started with. `Run` starts it, waits for its end and
/// tells what came of it; one object can be run any number of times.
///
///     TProcessLaunch launch(u"file", {u"--brief", u"--mime", path});
///     launch.Deadline(2000).OutputLimit(1 << 20);
///     TProcessLaunch::Result const result = launch.Run();
///     if (result.Succeeded()) {
///         Show(result.OutputText());
///     }
///
/// The child begins with signals unblocked and at their defaults, and with no descriptors but its
/// three standard streams: not even one that another thread opens meanwhile gets into it. Texts
/// become UTF-8 on their way to the system.
///
/// Thread safety: one object may be read, and run, by several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT TProcessLaunch
{
public:
    enum class End
    {
        Exited,     ///< By itself, with an exit code.
        Signaled,   ///< By a signal that was not sent for the deadline.
        TimedOut,   ///< The deadline passed, and the child was ended.
        NotStarted, ///< `Result::failure` and `Result::error` tell why.
        Unknown     ///< It ran, but something else in this process took its status: SIGCHLD is
                    ///< ignored here, or somebody waits for any child.
    };

    /// What it was that failed when nothing was started.
    enum class Failure
    {
        None,
        Request,          ///< A zero unit in a text, or a wrong environment entry: EINVAL.
        InputFile,        ///< It cannot be opened.
        Streams,          ///< Pipes or the null device, mostly EMFILE or ENFILE.
        WorkingDirectory, ///< It cannot be entered.
        Program           ///< It is not found or cannot be executed (ENOENT, EACCES, ENOEXEC, ...),
                          ///< or there cannot be another process (EAGAIN, ENOMEM).
    };

    struct Result;

    /// A program name without "/" is searched for in the PATH of this process. One with "/" that is
    /// relative is looked up from the child's working directory. Arguments may be any texts without
    /// zero units, empty ones too; no shell sees them.
    explicit TProcessLaunch(TPath const& program, std::vector<TString> const& arguments = {});

    /// The whole environment of the child, each entry "NAME=value" with a name that is not empty,
    /// in place of a copy of this process's, byte for byte, as it is when `Run` is called.
    TProcessLaunch& Environment(std::vector<TString> const& entries);

    /// One variable in place of what that environment has by the name. The name is not empty and
    /// has no "=".
    TProcessLaunch& Variable(TString const& name, TString const& value);

    /// Where the child starts; empty, as at first, for the working directory of this process.
    TProcessLaunch& WorkingDirectory(TPath const& directory);

    // What the child reads: nothing at first. The last of these calls counts. A child that does not
    // read all of it is no failure.

    TProcessLaunch& InputText(TString const& text); ///< As UTF-8.
    TProcessLaunch& InputBytes(std::string bytes);

    /// From the start of the file, which `Run` opens as `open` does: a FIFO is waited for.
    TProcessLaunch& InputFile(TPath const& file);

    /// How many bytes of its standard output the result keeps, from the first on. The others are
    /// read and dropped. No limit at first; then it is memory that sets one.
    TProcessLaunch& OutputLimit(std::size_t bytes);
    TProcessLaunch& ErrorLimit(std::size_t bytes); ///< The same of its standard error.

    /// Standard error goes where standard output goes, in the order in which it is written.
    TProcessLaunch& MergeErrorIntoOutput(bool isMerged = true);

    /// Whether the child leads a process group of its own, as it does at first: then the deadline
    /// ends the group with all that the child has started in it, and what a terminal sends to the
    /// group of this process (Ctrl-C) does not reach the child. Otherwise the deadline ends the
    /// child alone. When this process dies, its children live on, without a deadline.
    TProcessLaunch& OwnProcessGroup(bool isOwn);

    /// How long the child may run, counted from its start, in milliseconds. -1, as at first, or
    /// any other negative number is for ever. After that time it gets SIGTERM.
    TProcessLaunch& Deadline(int ms);

    /// How long the child may take to end after SIGTERM, in milliseconds, before it gets SIGKILL;
    /// 1000 at first, none when negative. A group gets SIGKILL in any case, when the time is over
    /// or the child has ended and nobody has its output open any more.
    TProcessLaunch& TerminationGrace(int ms);

    /// Starts the program, feeds it, reads both of its streams as they come, and returns when it
    /// has ended. What it leaves behind is not waited for, even if that has the streams open: the
    /// result has what was written up to the child's end. Nothing stays behind in this process.
    ///
    /// All failures are told in the result. Throws: `std::bad_alloc` or `std::length_error` when
    /// there is no room for the output; the child, or its group, has been killed then.
    Result Run() const;

private:
    enum class Input
    {
        Null,
        Bytes,
        File
    };

    bool IsWellFormed() const;
    std::vector<char const*> ArgumentVector() const;
    std::vector<char const*> EnvironmentVector(char const* const* inherited,
                                               std::vector<std::string>& ownEntries) const;
    bool IsReplaced(char const* entry) const;

    std::string m_program;
    std::vector<std::string> m_arguments;
    std::optional<std::vector<std::string>> m_environment;
    std::vector<std::pair<std::string, std::string>> m_variables; ///< Names are different.
    std::string m_workingDirectory;
    Input m_input = Input::Null;
    std::string m_inputText; ///< The bytes, or the name of the file.
    std::size_t m_outputLimit = static_cast<std::size_t>(-1);
    std::size_t m_errorLimit = static_cast<std::size_t>(-1);
    bool m_isMerged = false;
    bool m_isOwnGroup = true;
    int m_deadlineMs = -1;
    int m_graceMs = 1000;
};

/// What came of a run.
struct KORCOREPLATFORM_EXPORT TProcessLaunch::Result
{
    End end = End::NotStarted;
    int exitCode = -1; ///< 0 to 255, also that with which it answered the deadline; -1 for none.
    int signal = 0;    ///< What ended it, also for the deadline; 0 for none.

    Failure failure = Failure::None; ///< Something else only when nothing was started;
    int error = 0;                   ///< the error number is 0 otherwise.

    /// The child's, and that of its group if it leads one; -1 when nothing was started. Other than
    /// to reach such a group it is of no use: the child is gone, and its number may be another's.
    int pid = -1;

    std::string output; ///< The bytes as they came.
    std::string errorOutput;
    bool isOutputCut = false; ///< Was there more than the limit?
    bool isErrorCut = false;

    /// Did it exit by itself with 0?
    bool Succeeded() const noexcept { return end == End::Exited && exitCode == 0; }

    /// How it ended, for people: "exited with code 3", "could not be started: No such file or
    /// directory", and so on; after the program's name it is a sentence.
    TString Description() const;

    // The streams read as UTF-8: U+FFFD stands for what is none.
    // Throws: `StringException` with id AutoGen_0xC83B3D89 for more than a text can hold.

    TString OutputText() const;
    TString ErrorText() const;
};
