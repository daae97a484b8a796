#include "FileCount.h"

#include "FileBytes.h"
#include "Phase.h"
#include "Session.h"
#include "TextCount.h"
#include "Unreadable.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <new>
#include <system_error>
#include <utility>

namespace TextCensus {
namespace {

constexpr std::size_t kMostBatches = 1024;
constexpr std::chrono::milliseconds kProgressInterval(80);

void LogFile(TPath const& path, TextCount const& count, TElapsedTimer const& timer)
{
    if (LoggerAcceptsSeverity(TLog::Severity::Trace, LogDetail::ListFilesTimings)) {
        LogMessage(LogDetail::ListFilesTimings, TLog::NonErrorSeverity(TLog::Severity::Trace),
                   u"file-counted",
                   {{u"path", path},
                    {u"bytes", TString::number(count.bytes)},
                    {u"milliseconds", TString::number(timer.ElapsedMsec(), 'f', 3)}});
    }
}

/// Adds the file to the totals, to the unreadable ones if that is what it is.
void CountFile(TPath const& path, FileBytes& bytes, Totals& totals)
{
    TElapsedTimer const timer(true);
    try {
        bytes.Read(path);
        TextCount const count = CountText(bytes.Data(), bytes.Size());
        totals.Add(path, count);
        LogFile(path, count, timer);
    } catch (KorvelException const& failure) {
        AddUnreadable(totals.unreadable, path, failure);
    } catch (std::system_error const& failure) {
        AddUnreadable(totals.unreadable, path, failure, TString::fromUtf8(failure.what()));
    } catch (std::bad_alloc const& failure) {
        AddUnreadable(totals.unreadable, path, failure, u"Not enough memory for it");
    }
}

/// The files in batches. Workers take the next batch each until none is left; the results are put
/// together in the order of the files.
class Count
{
public:
    explicit Count(std::vector<TPath> const& files)
        : m_files(files), m_batchSize(1 + files.size() / kMostBatches),
          m_batches((files.size() + m_batchSize - 1) / m_batchSize)
    {}

    /// What a worker does. Any number of threads may be in it.
    void Work(TString const& worker, TString const& roots)
    {
        WorkerSession const session({{u"worker", worker}, {u"roots", roots}});
        Phase phase(u"worker-finished");
        FileBytes bytes;
        std::uint64_t files = 0;
        std::size_t batch;
        while ((batch = m_nextBatch.fetch_add(1, std::memory_order_relaxed)) < m_batches.size()) {
            files += CountBatch(batch, bytes);
        }
        phase.Note(u"files", files);
    }

    Progress GetProgress() const
    {
        return {m_doneFiles.load(std::memory_order_relaxed),
                m_doneBytes.load(std::memory_order_relaxed)};
    }

    /// Requires: the workers are through.
    Totals Sum() const
    {
        Totals sum;
        for (Totals const& batch : m_batches) {
            sum.Append(batch);
        }
        return sum;
    }

private:
    std::size_t CountBatch(std::size_t batch, FileBytes& bytes)
    {
        Totals totals; // not in its place yet: workers do not share cache lines
        std::size_t const begin = batch * m_batchSize;
        std::size_t const end = std::min(begin + m_batchSize, m_files.size());
        for (std::size_t i = begin; i < end; ++i) {
            CountFile(m_files[i], bytes, totals);
        }
        m_doneFiles.fetch_add(end - begin, std::memory_order_relaxed);
        m_doneBytes.fetch_add(totals.all.bytes, std::memory_order_relaxed);
        m_batches[batch] = std::move(totals);
        return end - begin;
    }

    std::vector<TPath> const& m_files;
    std::size_t const m_batchSize;
    std::vector<Totals> m_batches; ///< Each is written by the worker that took its number.
    std::atomic<std::size_t> m_nextBatch{0};
    std::atomic<std::size_t> m_doneFiles{0};
    std::atomic<std::uint64_t> m_doneBytes{0};
};

} // namespace

Totals CountFiles(std::vector<TPath> const& files, unsigned int jobs, TString const& roots,
                  std::function<void(Progress const&)> const& onProgress)
{
    Phase phase(u"files-counted");
    Count count(files);
    onProgress({});
    std::vector<std::future<void>> workers;
    for (unsigned int i = 1; i <= jobs; ++i) {
        workers.push_back(std::async(
            std::launch::async, [&count, &roots, i] { count.Work(TString::number(i), roots); }));
    }
    for (std::future<void>& worker : workers) {
        while (worker.wait_for(kProgressInterval) != std::future_status::ready) {
            onProgress(count.GetProgress());
        }
        worker.get(); // throws what the worker threw
    }
    Totals totals = count.Sum();
    phase.Note(u"files", totals.all.files);
    phase.Note(u"bytes", totals.all.bytes);
    phase.Note(u"code-units", totals.all.codeUnits);
    phase.Note(u"lines", totals.all.lines);
    phase.Note(u"unreadable", totals.unreadable.size());
    return totals;
}

} // namespace TextCensus
