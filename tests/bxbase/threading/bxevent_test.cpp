#include <bxbase/threading/bxblockingscope.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

TEST(BxEvent, StateAndCopiesShareIt)
{
    BxEvent event;
    EXPECT_FALSE(event.IsSet());
    BxEvent copy = event;
    copy.Set();
    EXPECT_TRUE(event.IsSet());
    EXPECT_TRUE(event.Wait(0));
    event.Reset();
    EXPECT_FALSE(copy.IsSet());
    EXPECT_FALSE(copy.Wait(0));
    EXPECT_EQ(copy, event);
    EXPECT_FALSE(BxEvent() == event);
    EXPECT_TRUE(BxEvent(true).IsSet());
}

TEST(BxEvent, WaitTimesOutWhenNotSet)
{
    BxEvent event;
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.Wait(30));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST(BxEvent, SetReleasesEveryWaiter)
{
    BxEvent go, ready;
    std::atomic<int> released{0};
    std::atomic<int> waiting{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, go]() {
            if (++waiting == 4)
                ready.Set();
            if (go.Wait(INFINITE))
                ++released;
        });
    ASSERT_TRUE(ready.Wait(10000));
    go.Set();
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(released, 4);
}

TEST(BxEvent, PingPongKeepsOrder)
{
    BxEvent ping, pong;
    int counter = 0; // handed back and forth; the events order the accesses
    std::thread other([&] {
        for (int i = 0; i < 1000; ++i)
        {
            ping.Wait();
            ping.Reset();
            ++counter;
            pong.Set();
        }
    });
    for (int i = 0; i < 1000; ++i)
    {
        ++counter;
        ping.Set();
        pong.Wait();
        pong.Reset();
    }
    other.join();
    EXPECT_EQ(counter, 2000);
}

TEST(BxEvent, WaitForMultipleEvents)
{
    BxEvent a, b, c;
    EXPECT_EQ(BxEvent::WaitForMultipleEvents({a, b, c}, 0), BxEvent::eWaitTimeout);
    EXPECT_EQ(BxEvent::WaitForMultipleEvents({a, b, c}, 20), 2);
    b.Set();
    EXPECT_EQ(BxEvent::WaitForMultipleEvents({a, b, c}, 0), BxEvent::eWaitSignaled);
    b.Reset();

    // Woken by a set that happens while it waits; the same event twice is fine.
    std::thread setter([c]() mutable { c.Set(); });
    EXPECT_EQ(BxEvent::WaitForMultipleEvents({a, c, c}, INFINITE), 1);
    setter.join();

    std::vector<BxEvent> none;
    EXPECT_THROW(BxEvent::WaitForMultipleEvents(none, 0), BxExceptionPreconditionViolation);
}

TEST(BxEvent, ManyMultiWaitersAndSettersRace)
{
    // Several threads wait on overlapping sets of events while others set them.
    std::vector<BxEvent> events(4);
    std::vector<std::thread> threads;
    std::atomic<int> woken{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            std::vector<BxEvent> mine{events[i], events[(i + 1) % 4]};
            if (BxEvent::WaitForMultipleEvents(mine, INFINITE) == 1)
                ++woken;
        });
    for (int i = 0; i < 4; i += 2)
        threads.emplace_back([e = events[i]]() mutable { e.Set(); });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(woken, 4);
}

namespace
{
std::atomic<int> g_blocked{0};
void countBlocking(void*, bool blocked) { g_blocked += blocked ? 1 : -1; }
} // namespace

TEST(BxEvent, RealWaitsOpenABlockingScope)
{
    BxEvent event;
    BxEvent entered;
    std::thread waiter([&] {
        BxBlockingScope::SetThreadHook(&countBlocking, nullptr);
        EXPECT_FALSE(event.Wait(0)); // no real wait: no hook call
        EXPECT_EQ(g_blocked, 0);
        {
            BxBlockingScope outer; // nested scopes call the hook once
            EXPECT_EQ(g_blocked, 1);
            BxBlockingScope inner;
            EXPECT_EQ(g_blocked, 1);
        }
        EXPECT_EQ(g_blocked, 0);
        entered.Set();
        event.Wait();
        EXPECT_EQ(g_blocked, 0);
        BxBlockingScope::SetThreadHook(nullptr, nullptr);
    });
    entered.Wait();
    event.Set();
    waiter.join();
}

TEST(BxEvent, PlainAndMultipleWaitersOnOneEventWakeTogether)
{
    BxEvent shared, other, ready;
    std::atomic<int> waiting{0};
    std::atomic<int> woken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            if (++waiting == 4)
                ready.Set();
            const bool released = i % 2 ? shared.Wait(INFINITE)
                                        : BxEvent::WaitForMultipleEvents({other, shared}, INFINITE) == BxEvent::eWaitSignaled;
            if (released)
                ++woken;
        });
    ASSERT_TRUE(ready.Wait(10000));
    shared.Set();
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(woken, 4);
    EXPECT_FALSE(other.IsSet());
}

TEST(BxEvent, TimedOutWaitersLeaveTheEventAsItWas)
{
    BxEvent event;
    std::vector<std::thread> threads;
    std::atomic<int> timedOut{0};
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            if (!event.Wait(5) && BxEvent::WaitForMultipleEvents({event}, 5) == BxEvent::eWaitTimeout)
                ++timedOut;
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(timedOut, 3);
    EXPECT_FALSE(event.IsSet());
    event.Set();
    EXPECT_TRUE(event.IsSet());
    EXPECT_TRUE(event.Wait(0));
    event.Reset();
    event.Reset(); // twice is the same as once
    EXPECT_FALSE(event.Wait(0));
    std::thread setter([event]() mutable { event.Set(); });
    EXPECT_TRUE(event.Wait(INFINITE));
    setter.join();
}

// A Set that races with a thread about to sleep must never be lost: in each
// round the waiter announces itself and goes straight into Wait while this
// thread sets the event; a lost wake-up hangs the join.
TEST(BxEvent, SetRacingWithAStartingWaitIsNeverLost)
{
#if defined(__SANITIZE_THREAD__)
    constexpr int kRounds = 300;
#else
    constexpr int kRounds = 3000;
#endif
    for (int round = 0; round < kRounds; ++round)
    {
        BxEvent event;
        std::atomic<bool> arrived{false};
        std::thread waiter([&] {
            arrived.store(true);
            EXPECT_TRUE(event.Wait(INFINITE));
        });
        while (!arrived.load())
            std::this_thread::yield();
        event.Set();
        waiter.join();
    }
}
