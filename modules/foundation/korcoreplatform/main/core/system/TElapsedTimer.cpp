#include "korcoreplatform/main/core/system/TElapsedTimer.h"

#include <QElapsedTimer>

namespace {

constexpr double kNsecPerMsec = 1e6;
constexpr double kMsecPerSec = 1000.0;

TElapsedTimer const& SinceFirstUse()
{
    static TElapsedTimer const s_timer(true);
    return s_timer;
}

} // namespace

TElapsedTimer::TElapsedTimer(bool startNow) : m_timer(std::make_unique<QElapsedTimer>())
{
    if (startNow) {
        Start();
    }
}

TElapsedTimer::TElapsedTimer(TElapsedTimer const& other)
    : m_timer(std::make_unique<QElapsedTimer>(*other.m_timer))
{}

TElapsedTimer& TElapsedTimer::operator=(TElapsedTimer const& other)
{
    *m_timer = *other.m_timer; // m_frozenMsec stays: see the header.
    return *this;
}

TElapsedTimer::~TElapsedTimer() = default;

void TElapsedTimer::Start()
{
    m_timer->start();
    m_frozenMsec = 0.0;
}

std::int64_t TElapsedTimer::Reset()
{
    m_frozenMsec = 0.0;
    return m_timer->restart();
}

void TElapsedTimer::Stop()
{
    m_frozenMsec = ElapsedMsec(); // of a stopped timer: what is frozen already
    m_timer->invalidate();
}

bool TElapsedTimer::IsRunning() const
{
    return m_timer->isValid();
}

double TElapsedTimer::ElapsedMsec() const
{
    return IsRunning() ? static_cast<double>(m_timer->nsecsElapsed()) / kNsecPerMsec : m_frozenMsec;
}

double TElapsedTimer::ElapsedSec() const
{
    return ElapsedMsec() / kMsecPerSec;
}

std::int64_t TElapsedTimer::ElapsedTicksMs() const
{
    return m_timer->elapsed();
}

std::int64_t TElapsedTimer::GetElapsedTime() const
{
    return ElapsedTicksMs();
}

std::int64_t TElapsedTimer::AppElapsedMs()
{
    return SinceFirstUse().ElapsedTicksMs();
}

double TElapsedTimer::AppElapsedSec()
{
    return SinceFirstUse().ElapsedSec();
}
