#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxsignalt.h>
#include <bxbase/threading/bxsingleton.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxtimer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <bitset>
#include <set>
#include <string>
#include <thread>
#include <vector>

TEST(BxTimer, MeasuresInItsResolutionAndFreezesOnStop)
{
    BxTimer ms(1000);
    EXPECT_EQ(ms.GetElapsed(), 0u);
    BxTimer us(1000000);
    ms.Start();
    us.Start();
    BxEvent().Wait(20); // a real 20 ms pause
    us.Stop();
    ms.Stop();
    EXPECT_FALSE(ms.IsRunning());
    EXPECT_GE(ms.GetElapsed(), 20u);
    EXPECT_LT(ms.GetElapsed(), 5000u);
    EXPECT_GE(us.GetElapsed(), 20000u);
    std::uint64_t frozen = ms.GetElapsed();
    BxEvent().Wait(5);
    EXPECT_EQ(ms.GetElapsed(), frozen);
    EXPECT_NEAR(ms.GetElapsedSeconds(), frozen / 1000.0, 0.001);
    ms.Start();
    EXPECT_LT(ms.GetElapsed(), frozen); // restarted from zero
}

TEST(BxSignalT, ConnectEmitDisconnect)
{
    BxSignalT<int, const std::string&> signal;
    std::vector<std::string> calls;
    auto first = signal.Connect([&](int n, const std::string& s) { calls.push_back("a" + std::to_string(n) + s); });
    struct CReceiver
    {
        std::vector<std::string>* calls;
        void on(int n, const std::string& s) { calls->push_back("b" + std::to_string(n) + s); }
    } receiver{&calls};
    auto second = signal.Connect(&receiver, &CReceiver::on);
    EXPECT_NE(first, second);
    EXPECT_EQ(signal.GetCount(), 2u);

    signal.Emit(1, "x");
    EXPECT_EQ(calls, (std::vector<std::string>{"a1x", "b1x"}));
    EXPECT_TRUE(signal.Disconnect(first));
    EXPECT_FALSE(signal.Disconnect(first));
    signal(2, "y");
    EXPECT_EQ(calls.back(), "b2y");
    EXPECT_EQ(calls.size(), 3u);
    signal.DisconnectAll();
    signal.Emit(3, "z");
    EXPECT_EQ(calls.size(), 3u);
}

TEST(BxSignalT, SlotMayDisconnectItselfDuringEmit)
{
    BxSignalT<> signal;
    int calls = 0;
    BxSignalT<>::ConnectionId id = 0;
    id = signal.Connect([&] {
        ++calls;
        signal.Disconnect(id);
    });
    signal.Emit();
    signal.Emit();
    EXPECT_EQ(calls, 1);
}

TEST(BxSignalT, ConcurrentEmitAndConnect)
{
    BxSignalT<int> signal;
    std::atomic<int> total{0};
    signal.Connect([&](int n) { total += n; });
    std::thread emitter([&] {
        for (int i = 0; i < 1000; ++i)
            signal.Emit(1);
    });
    for (int i = 0; i < 100; ++i)
        signal.Disconnect(signal.Connect([](int) {}));
    emitter.join();
    EXPECT_EQ(total, 1000);
}

namespace
{
std::atomic<int> g_made{0};
struct CCounted
{
    CCounted() { ++g_made; }
    int value = 42;
};
} // namespace

TEST(BxSingleton, MadeOnceForAllThreads)
{
    std::vector<std::thread> threads;
    std::vector<CCounted*> seen(8);
    BxEvent go;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            go.Wait();
            seen[i] = &BxSingleton<CCounted>::GetInstance();
        });
    go.Set();
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(g_made, 1);
    for (CCounted* p : seen)
        EXPECT_EQ(p, seen[0]);
    EXPECT_EQ(seen[0]->value, 42);
}

namespace
{
struct CInner
{
    int value = 7;
};
struct COuter
{
    // A singleton whose constructor reaches another one under the singleton lock.
    int inner = BxSingleton<CInner>::GetInstance().value;
};
} // namespace

TEST(BxSingleton, ConstructorMayUseAnotherSingleton)
{
    EXPECT_EQ(BxSingleton<COuter>::GetInstance().inner, 7);
    EXPECT_EQ(&BxSingleton<CInner>::GetInstance(), &BxSingleton<CInner>::GetInstance());
}

TEST(BxThreadApi, ThreadIdsAreKernelIdsAndDistinct)
{
    DWORD mine = GetCurrentThreadId();
    EXPECT_NE(mine, 0u);
    EXPECT_EQ(mine, GetCurrentThreadId());
    DWORD other = 0;
    std::thread([&] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(other, 0u);
    EXPECT_NE(other, mine);
}

TEST(BxThreadApi, ProcessAffinityMask)
{
    DWORD_PTR process = 0, system = 0;
    ASSERT_TRUE(GetProcessAffinityMask(GetCurrentProcess(), &process, &system));
    EXPECT_NE(process, 0u);
    EXPECT_EQ(process & ~system, 0u); // the process runs on the system's CPUs
    EXPECT_LE(std::bitset<64>(process).count(), std::thread::hardware_concurrency());

    SetLastError(0);
    EXPECT_FALSE(GetProcessAffinityMask(nullptr, &process, &system));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(GetProcessAffinityMask(GetCurrentProcess(), nullptr, &system));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(BxThreadApi, LastErrorIsPerThread)
{
    SetLastError(1400);
    std::thread([] {
        EXPECT_EQ(GetLastError(), 0u);
        SetLastError(5);
    }).join();
    EXPECT_EQ(GetLastError(), 1400u);
}
