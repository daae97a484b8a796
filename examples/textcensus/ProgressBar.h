/// Shows how far a census is.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace TextCensus {

/// One line at the bottom of the terminal that standard error leads to, redrawn in place a few
/// times a second and erased at the end. Does nothing when standard error is no terminal, nor when
/// it is not to be shown.
class ProgressBar
{
public:
    explicit ProgressBar(bool isShown);
    ~ProgressBar() { Erase(); }
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    void ShowListing(std::size_t found);
    void ShowCounting(std::size_t done, std::size_t total, std::uint64_t bytes);
    void Erase();

private:
    bool IsDue(bool isStart);
    void Draw(TString const& line);

    int m_columns = 0;    ///< What the terminal has; 0: there is none.
    int m_drawnUnits = 0; ///< What there is to erase.
    std::chrono::steady_clock::time_point m_nextTime;
};

} // namespace TextCensus
