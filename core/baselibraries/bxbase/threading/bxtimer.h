// A stopwatch on the monotonic clock. Elapsed time is counted in units of
// 1/resolution seconds: BxTimer(1000) counts milliseconds, BxTimer(1000000)
// microseconds.
//
//   BxTimer timer(1000);
//   timer.Start();
//   work();
//   remaining -= timer.GetElapsed();   // milliseconds so far (timer keeps running)
//   timer.Stop();                      // GetElapsed() is frozen from here on
//
// A timer is used by one thread at a time.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <chrono>
#include <cstdint>

/// A stopwatch on the monotonic clock.
class BXBASE_API BxTimer
{
public:
    /// resolution: units per second of GetElapsed (must be > 0; 0 is taken as 1000).
    explicit BxTimer(std::uint64_t resolution = 1000);

    /// Starts (or restarts) measuring from now.
    void Start();
    /// Stops measuring; the elapsed time stays as it is until the next Start.
    void Stop();
    /// True between Start and Stop.
    bool IsRunning() const { return m_running; }

    /// Time from Start to Stop (or to now while running), in 1/resolution seconds, rounded down.
    /// 0 before the first Start.
    std::uint64_t GetElapsed() const;
    /// The same in seconds.
    double GetElapsedSeconds() const;
    /// Units per second of GetElapsed, as given to the constructor (1000 when 0 was given).
    std::uint64_t GetResolution() const { return m_resolution; }

private:
    using Clock = std::chrono::steady_clock;
    Clock::duration elapsed() const;

    std::uint64_t m_resolution;
    Clock::time_point m_start{};
    Clock::time_point m_stop{};
    bool m_running = false;
};
