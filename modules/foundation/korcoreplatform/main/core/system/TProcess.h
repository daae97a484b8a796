/// Child processes: as streams, run to their end, let go, or spawned with nothing but their
/// standard streams.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TIO.h"
#include "korcoreplatform/main/core/files/TSequentialIO.h"
#include "korcoreplatform/main/string/TString.h"

#include <iosfwd>
#include <memory>
#include <vector>

class QProcess;
class QStringList;
class TEnvironment;
class TPath;

/// A child process, run through Qt's `QProcess`. What is read comes from the current read channel,
/// its standard output unless told otherwise; what is written goes to its standard input. Bytes
/// arrive while one of the waiting functions runs, and no application object is needed for that.
///
///     TString version;
///     int exitCode = 0;
///     TProcess::RunWithOutput(TPath(u"/usr/bin/git"), {u"--version"}, version, exitCode, 5000);
///
/// A program without a "/" is looked up in the path of this process, but by `Spawn`. Programs,
/// arguments, names and values of variables are UTF-8 to the child. Times are in milliseconds, -1
/// is without end.
///
/// Thread safety: one object must not be used by two threads at once. The static functions may be
/// called from any thread; what `Set_FD_CLOEXEC_BeforeSpawn` says holds for `Spawn` too.
class KORCOREPLATFORM_EXPORT TProcess : public TSequentialIO
{
public:
    // The values are those of `QProcess`.

    enum ProcessChannel : int
    {
        StandardOutput = 0,
        StandardError = 1
    };

    enum ChannelMode : int
    {
        SeparateChannels = 0,
        MergedChannels = 1,    ///< All that the child writes is read as its standard output.
        ForwardedChannels = 2, ///< The child writes where this process does.
        ForwardedOutputChannel = 3,
        ForwardedErrorChannel = 4
    };

    enum ProcessError : int
    {
        FailedToStart = 0,
        Crashed = 1,
        TimedOut = 2,
        ReadError = 3,
        WriteError = 4,
        UnknownError = 5, ///< Also before anything went wrong.
        NoError = 1000    ///< Only from `RunWithOutput`.
    };

    enum ProcessExitStatus : int
    {
        NormalExit = 0,
        CrashExit = 1
    };

    using TIO::GetQIODevice;
    using TIO::Read;
    using TIO::Write;

    static constexpr int kDefaultWaitMs = 30000;

    TProcess();

    /// Closes the process if it is open.
    ~TProcess() override;

    // The stream

    /// Writes what is buffered for the child, then kills it. A child that never reads makes this
    /// wait for its end.
    void Close() override;
    QIODevice* GetQIODevice() override;
    bool IsOpen() const override;

    /// Starts the program that was set through `GetQProcess` and returns true.
    /// Throws: `Exception` with id AutoGen_0xC3D29B3D and the process's text when there is no
    /// program, or one is running.
    bool Open(OpenMode mode) override;

    /// Of what has arrived, as `AtEnd` tells of that alone; -1 for a failure. Neither waits for
    /// more: `WaitUntilExited` does, and `GetQProcess()->waitForReadyRead(ms)`.
    long long Read(void* buffer, long long max) override;
    long long Size() const override; ///< What has arrived and was not read.
    long long Write(void const* data, long long count) override; ///< -1 for a failure.

    QProcess* GetQProcess(); ///< Ownership: the object's.
    QProcess const* GetQProcess() const;

    // Running. Failures to start show in `WaitUntilStarted` and `Error`. To start one that is
    // running does nothing.

    void Start(TPath const& program, std::vector<TString> const& arguments,
               OpenMode mode = ReadWrite);

    /// False when the time is up, and when the process could not start or has ended before.
    bool WaitUntilStarted(int timeoutMs = kDefaultWaitMs);
    bool WaitUntilExited(int timeoutMs = kDefaultWaitMs);

    void Kill();
    void Terminate();      ///< Asks it to end.
    long long PID() const; ///< 0 while it does not run.
    ProcessError Error() const;
    int ExitCode() const; ///< Good after a normal exit.
    ProcessExitStatus ExitStatus() const;

    // Its streams. Files, pipes, the directory and the variables are for the next start.

    void CloseReadChannel(ProcessChannel channel); ///< What arrives there is dropped from now on.
    void CloseWriteChannel(); ///< The child's standard input ends after what was written.
    ProcessChannel ReadChannel() const;
    void ReadChannel(ProcessChannel channel);
    ChannelMode ProcessChannelMode() const;
    void ProcessChannelMode(ChannelMode mode);
    void StdInFile(TPath const& path);

    /// `Truncate` empties the file first, `Append` writes to its end.
    void StdOutFile(TPath const& path, OpenMode mode = Truncate);
    void StdErrFile(TPath const& path, OpenMode mode = Truncate);

    /// The standard output becomes the standard input of `other`, which must be alive when either
    /// starts.
    void StdOutProcess(TProcess& other);

    TPath WorkingDirectory() const; ///< Empty: that of this process.
    void WorkingDirectory(TPath const& path);
    TEnvironment Environment() const;                  ///< Empty: that of this process.
    void Environment(TEnvironment const& environment); ///< Empty: that of this process.

    // Processes without an object

    /// Runs a program to its end on the standard streams of this process. Returns its exit code, -2
    /// when it could not start, -1 when it crashed.
    static int Execute(TPath const& program, std::vector<TString> const& arguments);

    /// Runs a program to its end and takes what it wrote to its standard output as local 8-bit
    /// text. Its standard input stays open and is empty.
    ///
    /// - `NoError`, or `UnknownError` when the exit code is not 0: `exitCode` is set, and `output`
    ///   is replaced unless nothing was written.
    /// - `Crashed`, or `TimedOut`, which also stands for one that could not start and after which
    ///   it is killed: neither argument changes.
    ///
    /// A process that ignores SIGCHLD learns of no exit code; each is 0 to it.
    ///
    /// Throws: as `ReadAll`.
    static ProcessError RunWithOutput(TPath const& program, std::vector<TString> const& arguments,
                                      TString& output, int& exitCode, int timeoutMs);

    /// Starts a process that this one has nothing to do with afterwards; whether that went well.
    static bool StartDetached(TPath const& program, std::vector<TString> const& arguments);

    /// The same in a working directory of its own, unless that is empty or missing. `pid` may be
    /// null, and means nothing after a failure.
    static bool StartDetached(TPath const& program, std::vector<TString> const& arguments,
                              TPath const& workingDirectory, unsigned int* pid);

    /// Starts a program that is given by its path, with no descriptor but 0, 1 and 2; see
    /// `Set_FD_CLOEXEC_BeforeSpawn`. Returns false when that failed; `errno` is ENOMEM when it was
    /// for memory, and else says nothing.
    ///
    /// A caller that gives `pid` has to wait for the child. Without it the library does when this
    /// process exits, however long the child takes. It then also waits for whatever child there is,
    /// once for each time that no program could be started without a `pid`.
    ///
    /// `environment` are "name=value" texts and a null at the end; null: that of this process.
    static bool Spawn(TPath const& program, std::vector<TString> const& arguments, int* pid,
                      char** environment);
    static bool Spawn(TPath const& program, QStringList const& arguments, int* pid);

    /// Whether a signal could be sent to the process: true for one that has ended until its parent
    /// has waited for it, false for one of another user. 0, and what is
    /// above 2^31 - 1, are not one process but a group of them, as `kill` has it.
    static bool IsProcessRunning(unsigned int pid);

    /// Marks every descriptor of this process but 0, 1 and 2 so that no program started later
    /// inherits it. One that another thread opens meanwhile may be missed.
    static void Set_FD_CLOEXEC_BeforeSpawn();

private:
    std::unique_ptr<QProcess> m_process;               ///< Never null.
    [[maybe_unused]] TString m_program;                ///< Reserved, empty.
    [[maybe_unused]] std::vector<TString> m_arguments; ///< Reserved, empty.
};

/// Writes the enumerator's name, "Unknown (7)" for a number without one.
KORCOREPLATFORM_EXPORT std::ostream& operator<<(std::ostream& out, TProcess::ProcessError error);
