// The work-stealing pool under load: every task once, no lost wake-up, help
// while waiting without running a task twice or an unrelated one, the
// priority order, deep nesting on two workers.
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxnohelpscope.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace
{
#if defined(__SANITIZE_THREAD__)
constexpr int kScale = 20; // ThreadSanitizer runs some twenty times slower
#else
constexpr int kScale = 1;
#endif

// Generous: only a hang (a lost wake-up, a deadlock) comes near it.
constexpr DWORD kHangMs = 60000;

class CFunctionTask : public BxTask
{
public:
    explicit CFunctionTask(std::function<bool()> work) : m_work(std::move(work)) {}

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { return m_work(); }

private:
    std::function<bool()> m_work;
};

BxSmartPointer<BxTask> makeTask(std::function<bool()> work)
{
    return BxSmartPointer<BxTask>(new CFunctionTask(std::move(work)));
}

// Keeps every worker of a pool busy until opened.
struct SGates
{
    std::promise<void> open;
    std::shared_future<void> opened = open.get_future().share();

    void occupy(BxThreadPool& pool, unsigned workers)
    {
        std::vector<BxEvent> entered(workers);
        for (unsigned i = 0; i < workers; ++i)
        {
            BxEvent in = entered[i];
            // The task keeps its own copy of the future: it may still be
            // returning from the wait when this object is gone.
            pool.AddTask(makeTask([gate = opened, in]() mutable {
                             in.Set();
                             gate.wait();
                             return true;
                         }),
                         BxThreadPool::ePriorityHigh);
        }
        for (auto& in : entered)
            in.Wait();
    }
};

// A tree of tasks: each inner task forks its children into the pool, then
// waits for them in forking order (the oldest is the likeliest stolen).
// Every task counts its run in runs[id].
struct STree
{
    BxThreadPool& pool;
    std::vector<std::atomic<int>>& runs;
    std::atomic<int>& nextId;
    int fanOut;

    BxSmartPointer<BxTask> make(int depth)
    {
        const int id = nextId++;
        return makeTask([this, id, depth] {
            ++runs[id];
            if (depth == 0)
                return true;
            std::vector<BxSmartPointer<BxTask>> children;
            children.reserve(fanOut);
            for (int i = 0; i < fanOut; ++i)
            {
                children.push_back(make(depth - 1));
                pool.AddTask(children.back(), i % 3);
            }
            bool ok = true;
            for (auto& child : children)
                ok = child->WaitUntilTerminate() && ok;
            return ok;
        });
    }
    static int size(int fanOut, int depth) { return depth == 0 ? 1 : 1 + fanOut * size(fanOut, depth - 1); }
};
} // namespace

TEST(BxThreadPoolStealing, FourOutsideThreadsForkAndWaitEveryTaskRunsOnce)
{
    // Roots of 1 + 8 + 64 tasks: 13,700 roots are about 1,000,000 tasks.
    constexpr int kFanOut = 8;
    constexpr int kDepth = 2;
    constexpr int kProducers = 4;
    const int rootsPerProducer = 3425 / kScale;
    const int perRoot = STree::size(kFanOut, kDepth);
    const int total = kProducers * rootsPerProducer * perRoot;

    BxThreadPool& pool = BxThreadPool::GetInstance();
    std::vector<std::atomic<int>> runs(total);
    std::atomic<int> nextId{0};
    STree tree{pool, runs, nextId, kFanOut};
    std::atomic<int> failedWaits{0};
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([&, p] {
            std::vector<BxSmartPointer<BxTask>> roots;
            roots.reserve(rootsPerProducer);
            for (int i = 0; i < rootsPerProducer; ++i)
            {
                roots.push_back(tree.make(kDepth));
                pool.AddTask(roots.back(), (i + p) % 3);
            }
            for (auto& root : roots)
                if (!root->WaitUntilTerminate(kHangMs) || !root->GetResult())
                    ++failedWaits;
        });
    for (auto& producer : producers)
        producer.join();

    EXPECT_EQ(failedWaits.load(), 0);
    EXPECT_EQ(nextId.load(), total);
    int wrong = 0;
    for (int id = 0; id < total; ++id)
        wrong += runs[id].load() != 1;
    EXPECT_EQ(wrong, 0) << "tasks that did not run exactly once";
}

TEST(BxThreadPoolStealing, NoLostWakeUpWhenWorkersGoToSleep)
{
    // Each round adds one task while the workers are spinning, falling
    // asleep or asleep; a wake-up lost in the hand-off leaves the task queued
    // beside sleeping workers and the wait runs into its time-out.
    BxThreadPool pool(2);
    const int rounds = 5000 / kScale;
    int missed = 0;
    for (int round = 0; round < rounds && missed == 0; ++round)
    {
        std::atomic<bool> ran{false};
        auto task = makeTask([&ran] {
            ran = true;
            return true;
        });
        pool.AddTask(task, round % 3);
        if (!task->WaitUntilTerminate(kHangMs) || !ran.load())
            ++missed;
        // Every few rounds give the workers the time to stop spinning and
        // sleep (the test holds either way; this covers the sleeping case).
        if (round % 16 == 0)
        {
            const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1);
            while (std::chrono::steady_clock::now() < until)
                std::this_thread::yield();
        }
    }
    EXPECT_EQ(missed, 0);

    // The same from inside the pool: a task adds the next one and ends, so
    // the adding worker is about to look for work when the next arrives.
    std::promise<void> chainDone;
    std::atomic<int> left{rounds};
    std::function<bool()> link = [&]() -> bool {
        if (--left == 0)
            chainDone.set_value();
        else
            pool.AddTask(makeTask(link), BxThreadPool::ePriorityNormal);
        return true;
    };
    pool.AddTask(makeTask(link), BxThreadPool::ePriorityNormal);
    EXPECT_EQ(chainDone.get_future().wait_for(std::chrono::milliseconds(kHangMs)), std::future_status::ready);
}

TEST(BxThreadPoolStealing, WaitersRacingForOneQueuedTaskRunItOnce)
{
    // Four waiting tasks (high priority, so they start first) all wait for
    // one low-priority task that is still queued: each tries to run it
    // itself, and idle workers may take it from the queue too.
    constexpr unsigned kWorkers = 4;
    BxThreadPool pool(kWorkers);
    const int rounds = 300 / kScale;
    for (int round = 0; round < rounds; ++round)
    {
        SGates gates;
        gates.occupy(pool, kWorkers);
        std::atomic<int> runs{0};
        auto awaited = makeTask([&runs] {
            ++runs;
            return true;
        });
        pool.AddTask(awaited, BxThreadPool::ePriorityLow);
        std::vector<BxSmartPointer<BxTask>> waiters;
        for (unsigned i = 0; i < kWorkers; ++i)
        {
            waiters.push_back(makeTask([awaited] { return awaited->WaitUntilTerminate(); }));
            pool.AddTask(waiters.back(), BxThreadPool::ePriorityHigh);
        }
        gates.open.set_value();
        for (auto& waiter : waiters)
        {
            ASSERT_TRUE(waiter->WaitUntilTerminate(kHangMs));
            EXPECT_TRUE(waiter->GetResult());
        }
        ASSERT_EQ(runs.load(), 1) << "round " << round;
    }
}

TEST(BxThreadPoolStealing, AWaiterRunsOnlyTheTaskItWaitsFor)
{
    // One worker, so that a task the waiter does not run itself can only run
    // on a compensating worker. The waiter's own queue holds an unrelated
    // task (forked after the awaited one, so the newest): helping must skip it.
    BxThreadPool pool(1);
    std::atomic<std::uint32_t> waiterThread{0}, awaitedThread{0}, unrelatedThread{0};
    BxEvent unrelatedMayRun;
    auto root = makeTask([&] {
        waiterThread = GetCurrentThreadId();
        auto awaited = makeTask([&] {
            awaitedThread = GetCurrentThreadId();
            return true;
        });
        auto unrelated = makeTask([&] {
            unrelatedThread = GetCurrentThreadId();
            return unrelatedMayRun.Wait(kHangMs);
        });
        pool.AddTask(awaited, BxThreadPool::ePriorityNormal);
        pool.AddTask(unrelated, BxThreadPool::ePriorityNormal);
        const bool ok = awaited->WaitUntilTerminate();
        unrelatedMayRun.Set();
        return ok && unrelated->WaitUntilTerminate(kHangMs);
    });
    pool.AddTask(root, BxThreadPool::ePriorityNormal);
    ASSERT_TRUE(root->WaitUntilTerminate(kHangMs));
    EXPECT_TRUE(root->GetResult());
    EXPECT_EQ(awaitedThread.load(), waiterThread.load()); // helped: ran right there
    EXPECT_NE(unrelatedThread.load(), waiterThread.load());
}

TEST(BxThreadPoolStealing, AWaiterWithTheNoHelpMarkerRunsNoTask)
{
    // The waiting task holds a recursive lock and raises its marker; its
    // child tries the lock. Run on the waiter's thread, the child would enter
    // the lock the waiter holds; run elsewhere, it finds the lock taken.
    BxThreadPool pool(1);
    for (int round = 0; round < 9; ++round)
    {
        BxCriticalSection lock;
        std::atomic<std::uint32_t> waiterThread{0}, childThread{0};
        std::atomic<bool> childEntered{false};
        auto root = makeTask([&] {
            BxCriticalSectionLocker held(lock);
            BxNoHelpScope noHelp;
            waiterThread = GetCurrentThreadId();
            auto child = makeTask([&] {
                childThread = GetCurrentThreadId();
                if (lock.TryLock())
                {
                    childEntered = true;
                    lock.Unlock();
                }
                return true;
            });
            pool.AddTask(child, round % 3);
            return child->WaitUntilTerminate();
        });
        pool.AddTask(root, BxThreadPool::ePriorityNormal);
        ASSERT_TRUE(root->WaitUntilTerminate(kHangMs));
        EXPECT_TRUE(root->GetResult());
        EXPECT_NE(childThread.load(), waiterThread.load());
        EXPECT_FALSE(childEntered.load());
    }
}

namespace
{
// Level n forks a leaf and level n - 1, and waits for the deeper one first.
bool nestedForkJoin(BxThreadPool& pool, int depth, std::atomic<int>& leaves)
{
    if (depth == 0)
    {
        ++leaves;
        return true;
    }
    auto leaf = makeTask([&leaves] {
        ++leaves;
        return true;
    });
    auto deeper = makeTask([&pool, depth, &leaves] { return nestedForkJoin(pool, depth - 1, leaves); });
    pool.AddTask(deeper, BxThreadPool::ePriorityNormal);
    pool.AddTask(leaf, BxThreadPool::ePriorityNormal);
    return deeper->WaitUntilTerminate() && leaf->WaitUntilTerminate() && deeper->GetResult();
}
} // namespace

TEST(BxThreadPoolStealing, NestedForkJoinTwentyLevelsDeepCompletesOnTwoWorkers)
{
    BxThreadPool pool(2);
    for (int round = 0; round < 50; ++round)
    {
        std::atomic<int> leaves{0};
        auto root = makeTask([&] { return nestedForkJoin(pool, 20, leaves); });
        pool.AddTask(root, BxThreadPool::ePriorityNormal); // from this thread, outside the pool
        ASSERT_TRUE(root->WaitUntilTerminate(kHangMs));
        EXPECT_TRUE(root->GetResult());
        EXPECT_EQ(leaves.load(), 21);
    }
    // The same depth when no level may help: every wait blocks and is compensated.
    std::atomic<int> leaves{0};
    auto root = makeTask([&] {
        BxNoHelpScope noHelp;
        return nestedForkJoin(pool, 20, leaves);
    });
    pool.AddTask(root, BxThreadPool::ePriorityNormal);
    ASSERT_TRUE(root->WaitUntilTerminate(kHangMs));
    EXPECT_TRUE(root->GetResult());
    EXPECT_EQ(leaves.load(), 21);
}

TEST(BxThreadPoolStealing, HigherPriorityFirstAndFifoWithinOneUnderLoad)
{
    // One worker drains what four threads add at once. Every event takes a
    // tick of one clock: a task records when its AddTask returned, when it
    // started and when it ended. When the worker looks for work (after the
    // previous task ended) it must take the highest priority queued, and
    // within one priority one thread's tasks start in the order added.
    struct SRecord
    {
        int producer = 0, sequence = 0, priority = 0;
        std::uint64_t added = 0, started = 0, ended = 0;
    };
    constexpr int kProducers = 4;
    const int perProducer = 4000 / kScale;
    std::atomic<std::uint64_t> clock{0};
    // The task writes started and ended, its producer the other fields.
    std::vector<SRecord> records(kProducers * perProducer);
    BxThreadPool pool(1);
    std::vector<std::vector<BxSmartPointer<BxTask>>> tasks(kProducers);
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([&, p] {
            std::mt19937 random(p);
            for (int i = 0; i < perProducer; ++i)
            {
                SRecord& record = records[p * perProducer + i];
                record.producer = p;
                record.sequence = i;
                record.priority = static_cast<int>(random() % 3);
                auto task = makeTask([&record, &clock] {
                    record.started = ++clock;
                    record.ended = ++clock;
                    return true;
                });
                tasks[p].push_back(task);
                pool.AddTask(task, record.priority);
                record.added = ++clock;
            }
        });
    for (auto& producer : producers)
        producer.join();
    for (auto& list : tasks)
        for (auto& task : list)
            ASSERT_TRUE(task->WaitUntilTerminate(kHangMs));

    std::vector<const SRecord*> byStart;
    for (const auto& record : records)
        byStart.push_back(&record);
    std::sort(byStart.begin(), byStart.end(), [](auto* a, auto* b) { return a->started < b->started; });
    int inversions = 0, reorders = 0;
    for (std::size_t i = 1; i < byStart.size(); ++i)
    {
        const SRecord& taken = *byStart[i];
        const std::uint64_t looked = byStart[i - 1]->ended;
        for (std::size_t j = i + 1; j < byStart.size(); ++j)
        {
            const SRecord& later = *byStart[j];
            if (later.added < looked && later.priority > taken.priority)
                ++inversions; // it was queued, with a higher priority, when the worker looked
            if (later.producer == taken.producer && later.priority == taken.priority &&
                later.sequence < taken.sequence)
                ++reorders;
        }
    }
    EXPECT_EQ(inversions, 0);
    EXPECT_EQ(reorders, 0);
}
