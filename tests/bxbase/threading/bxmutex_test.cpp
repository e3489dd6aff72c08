#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxmutex.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{
template <class TLock, class TLocker>
int countWithThreads(TLock& lock)
{
    int counter = 0; // guarded by lock
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i)
            {
                TLocker locker(lock);
                ++counter;
            }
        });
    for (auto& t : threads)
        t.join();
    return counter;
}
} // namespace

TEST(BxMutex, LockersExcludeOtherThreads)
{
    BxMutex mutex;
    EXPECT_EQ((countWithThreads<BxMutex, BxMutexLocker>(mutex)), 40000);
    EXPECT_EQ((countWithThreads<BxMutex, BxScopedLock<BxMutex>>(mutex)), 40000);
    BxCriticalSection section;
    EXPECT_EQ((countWithThreads<BxCriticalSection, BxCriticalSectionLocker>(section)), 40000);
}

TEST(BxMutex, TryLockAndEarlyUnlock)
{
    BxMutex mutex;
    {
        BxScopedLock<BxMutex> locker(mutex);
        std::thread([&] { EXPECT_FALSE(mutex.TryLock()); }).join();
        locker.Unlock();
        locker.Unlock(); // a second release does nothing
        std::thread([&] {
            EXPECT_TRUE(mutex.TryLock());
            mutex.Unlock();
        }).join();
    }
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
}

TEST(BxCriticalSection, IsRecursive)
{
    BxCriticalSection section;
    BxCriticalSectionLocker outer(section);
    EXPECT_TRUE(section.TryLock());
    section.Unlock();
    std::thread([&] { EXPECT_FALSE(section.TryLock()); }).join();
}
