#include <bxbase/threading/bxtimer.h>

BxTimer::BxTimer(std::uint64_t resolution) : m_resolution(resolution == 0 ? 1000 : resolution) {}

void BxTimer::Start()
{
    m_start = Clock::now();
    m_running = true;
}

void BxTimer::Stop()
{
    if (!m_running)
        return;
    m_stop = Clock::now();
    m_running = false;
}

BxTimer::Clock::duration BxTimer::elapsed() const
{
    return (m_running ? Clock::now() : m_stop) - m_start;
}

std::uint64_t BxTimer::GetElapsed() const
{
    auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed()).count();
    // Split to avoid overflow of ns * resolution for long runs.
    auto seconds = static_cast<std::uint64_t>(ns / 1000000000);
    auto rest = static_cast<std::uint64_t>(ns % 1000000000);
    return seconds * m_resolution + rest * m_resolution / 1000000000u;
}

double BxTimer::GetElapsedSeconds() const
{
    return std::chrono::duration<double>(elapsed()).count();
}
