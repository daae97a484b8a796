/// Takes the messages of Qt into the log.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

namespace TLog {

/// While one lives, what qDebug, qInfo, qWarning, qCritical and qFatal say becomes records of the
/// process-wide logger, at Debug, Info, Warn, Error and Fatal. A host that wants this makes one
/// when it has set its logger:
///
///     TLog::QtMessageBridge const bridge;
///
/// A record has the key "qt" and an object: "msg", and as far as Qt knows them "category" (but for
/// the default one), "file", "line" (a number) and "function". A message whose severity the logger
/// refuses is dropped.
///
/// The handler that was installed before gets what logging itself gives rise to, what could not be
/// logged and, behind their record, the messages of qFatal; an `AsyncLogger` has 0.9 s then to
/// write what it holds. It is put back at the end, unless another has been installed meanwhile.
///
/// Thread safety: may be made and destroyed on any thread; messages may come from any thread.
class KORCOREPLATFORM_EXPORT QtMessageBridge
{
public:
    QtMessageBridge(); ///< A second one at the same time changes nothing.
    QtMessageBridge(QtMessageBridge const&) = delete;
    QtMessageBridge& operator=(QtMessageBridge const&) = delete;
    ~QtMessageBridge();

    /// Gives the former handler what Qt says on this thread from now on. For threads that write a
    /// log: a record about each record would never end.
    static void ExcludeThisThread() noexcept;
};

} // namespace TLog
