#include "ProgressBar.h"

#include "Grouped.h"
#include "Output.h"

#include "korcoreplatform/main/string/TFormatString.h"

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

namespace TextCensus {
namespace {

constexpr int kBarWidth = 30;
constexpr int kDefaultColumns = 80;
constexpr std::chrono::milliseconds kInterval(80);

int TerminalColumns()
{
    if (::isatty(STDERR_FILENO) == 0) {
        return 0;
    }
    struct winsize size = {};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return kDefaultColumns;
    }
    return size.ws_col;
}

} // namespace

ProgressBar::ProgressBar(bool isShown) : m_columns(isShown ? TerminalColumns() : 0) {}

void ProgressBar::ShowListing(std::size_t found)
{
    if (IsDue(false)) {
        Draw(TFormat(u"looking for files: %1", Grouped(found)));
    }
}

void ProgressBar::ShowCounting(std::size_t done, std::size_t total, std::uint64_t bytes)
{
    if (IsDue(done == 0)) {
        std::size_t const divisor = std::max<std::size_t>(total, 1);
        TString const filled(u'#', static_cast<int>(done * kBarWidth / divisor));
        Draw(TFormat(u"[%1] %2 of %3 files, %4 MiB", filled.leftJustified(kBarWidth, u'.'),
                     Grouped(done), Grouped(total), Grouped(bytes >> 20)));
    }
}

void ProgressBar::Erase()
{
    if (m_drawnUnits > 0) {
        WriteToStandardError(u"\r" + TString(u' ', m_drawnUnits) + u"\r");
        m_drawnUnits = 0;
    }
}

bool ProgressBar::IsDue(bool isStart)
{
    if (m_columns == 0) {
        return false;
    }
    auto const now = std::chrono::steady_clock::now();
    if (now < m_nextTime && !isStart) {
        return false;
    }
    m_nextTime = now + kInterval;
    return true;
}

void ProgressBar::Draw(TString const& line)
{
    // The last column stays free: a character there can make the terminal scroll.
    TString const visible = line.left(m_columns - 1);
    WriteToStandardError(u"\r" + visible.leftJustified(m_drawnUnits));
    m_drawnUnits = visible.length();
}

} // namespace TextCensus
