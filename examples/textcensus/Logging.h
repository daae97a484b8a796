/// Where the log of a census goes.

#pragma once

#include "korcoreplatform/main/core/logging/QtMessageBridge.h"

#include <memory>

namespace TLog {
class AsyncLogger;
class SizeRotateFileChannel;
} // namespace TLog

namespace TextCensus {

struct Options;

/// While one lives, the process has the logger that the options ask for, if any, and the warnings
/// of Qt are its records: where nothing is logged, they are not shown either.
///
/// Thread safety: made and ended while no other thread logs.
class Logging
{
public:
    /// Throws: `KorvelException` when the folder of the log cannot be written to, or the severities
    /// in its configuration are no texts.
    explicit Logging(Options const& options);
    Logging(Logging const&) = delete;
    Logging& operator=(Logging const&) = delete;
    ~Logging(); ///< Removes the logger, which writes what it holds.

    /// Removes the logger. Of a log in a file, tells on standard error how it went and how to read
    /// it.
    void Finish();

private:
    TLog::QtMessageBridge m_qtMessages;
    std::shared_ptr<TLog::SizeRotateFileChannel> m_file; ///< Null: there is no file.
    TLog::AsyncLogger* m_logger = nullptr;               ///< The process has it; null: none.
};

} // namespace TextCensus
