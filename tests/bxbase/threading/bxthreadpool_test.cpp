#include <bxbase/bxexception.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace
{
// A task that runs a function.
class CFunctionTask : public BxTask
{
public:
    explicit CFunctionTask(std::function<bool()> work) : m_work(std::move(work)) {}

    std::atomic<int> afterRun{0};
    std::atomic<int> exceptions{0};
    std::string exceptionText; // written by onException before the termination event

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { return m_work(); }
    void onAfterRun() override { ++afterRun; }
    void onException(const std::exception& e) override
    {
        exceptionText = e.what();
        ++exceptions;
    }

private:
    std::function<bool()> m_work;
};

BxSmartPointer<CFunctionTask> makeTask(std::function<bool()> work)
{
    return BxSmartPointer<CFunctionTask>(new CFunctionTask(std::move(work)));
}

// Keeps a worker busy without a framework wait, so the pool does not
// compensate for it (as for a task that computes).
struct SBusyGate
{
    std::promise<void> open;
    std::shared_future<void> opened = open.get_future().share();
    BxEvent entered;

    BxSmartPointer<CFunctionTask> makeBlocker()
    {
        return makeTask([this] {
            entered.Set();
            opened.wait();
            return true;
        });
    }
};
} // namespace

TEST(BxTask, RunCallsHooksAndSetsTheTerminationEvent)
{
    auto ok = makeTask([] { return true; });
    EXPECT_FALSE(ok->GetTerminationEvent().IsSet()); // not run yet
    ok->Run();
    EXPECT_TRUE(ok->GetResult());
    EXPECT_EQ(ok->afterRun, 1);
    EXPECT_EQ(ok->exceptions, 0);
    EXPECT_TRUE(ok->WaitUntilTerminate(0));
    EXPECT_FALSE(ok->IsRunning());

    auto failing = makeTask([]() -> bool { throw std::runtime_error("broken"); });
    failing->Run();
    EXPECT_EQ(failing->afterRun, 0);
    EXPECT_EQ(failing->exceptions, 1);
    EXPECT_EQ(failing->exceptionText, "broken");
    EXPECT_FALSE(failing->GetResult());
    EXPECT_TRUE(failing->GetTerminationEvent().IsSet());

    auto odd = makeTask([]() -> bool { throw 5; });
    odd->Run();
    EXPECT_NE(odd->exceptionText.find("unknown exception"), std::string::npos);
}

TEST(BxThreadPool, RunsTasksAndRejectsBadInput)
{
    BxThreadPool& pool = BxThreadPool::GetInstance();
    EXPECT_GE(pool.GetWorkerCount(), 2u);
    std::atomic<int> count{0};
    std::vector<BxSmartPointer<CFunctionTask>> tasks;
    for (int i = 0; i < 100; ++i)
    {
        tasks.push_back(makeTask([&] {
            ++count;
            return true;
        }));
        EXPECT_TRUE(pool.AddTask(tasks.back(), i % 3));
    }
    for (auto& task : tasks)
        EXPECT_TRUE(task->WaitUntilTerminate());
    EXPECT_EQ(count, 100);
    for (auto& task : tasks)
        EXPECT_EQ(task->afterRun, 1);

    EXPECT_THROW(pool.AddTask(nullptr, 1), BxExceptionPreconditionViolation);
    EXPECT_THROW(pool.AddTask(makeTask([] { return true; }), 3), BxExceptionPreconditionViolation);
    EXPECT_THROW(pool.AddTask(makeTask([] { return true; }), -1), BxExceptionPreconditionViolation);
}

TEST(BxThreadPool, HigherPriorityFirstAndFifoWithinOne)
{
    BxThreadPool pool(1);
    SBusyGate gate;
    pool.AddTask(gate.makeBlocker(), 1);
    gate.entered.Wait(); // the only worker is busy: the rest queue up

    std::mutex lock;
    std::vector<int> order; // guarded by lock
    std::vector<BxSmartPointer<CFunctionTask>> tasks;
    const int priorities[] = {0, 1, 2, 0, 2, 1};
    for (int i = 0; i < 6; ++i)
    {
        tasks.push_back(makeTask([&, i] {
            std::lock_guard guard(lock);
            order.push_back(i);
            return true;
        }));
        pool.AddTask(tasks.back(), priorities[i]);
    }
    EXPECT_EQ(pool.GetQueuedCount(), 6u);
    gate.open.set_value();
    for (auto& task : tasks)
        task->WaitUntilTerminate();
    EXPECT_EQ(order, (std::vector<int>{2, 4, 1, 5, 0, 3}));
}

TEST(BxThreadPool, ATaskIsQueuedOnceAndCanBeAddedAgainAfterItRan)
{
    BxThreadPool pool(1);
    SBusyGate gate;
    std::atomic<int> runs{0};
    pool.AddTask(gate.makeBlocker(), 1);
    gate.entered.Wait();
    auto task = makeTask([&] {
        ++runs;
        return true;
    });
    EXPECT_TRUE(pool.AddTask(task, 1));
    EXPECT_TRUE(task->IsQueued());
    EXPECT_FALSE(task->WaitUntilTerminate(0)); // a zero time-out only looks
    EXPECT_FALSE(pool.AddTask(task, 2));
    gate.open.set_value();
    task->WaitUntilTerminate();
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(pool.AddTask(task, 1));
    task->WaitUntilTerminate();
    EXPECT_EQ(runs, 2);
}

namespace
{
// Fork-join: each level forks two children and waits for both with
// BxTask::WaitUntilTerminate (a queued child is run by the waiter).
bool forkJoin(BxThreadPool& pool, int depth, std::atomic<int>& leaves)
{
    if (depth == 0)
    {
        ++leaves;
        return true;
    }
    auto left = makeTask([&pool, depth, &leaves] { return forkJoin(pool, depth - 1, leaves); });
    auto right = makeTask([&pool, depth, &leaves] { return forkJoin(pool, depth - 1, leaves); });
    pool.AddTask(left, 1);
    pool.AddTask(right, 1);
    return left->WaitUntilTerminate() && right->WaitUntilTerminate() && left->GetResult() && right->GetResult();
}

// A chain in which each level waits on a plain event that only its child
// sets: the waiting workers can only be helped by compensating workers.
void eventChain(BxThreadPool& pool, int depth, std::atomic<int>& reached)
{
    ++reached;
    if (depth == 0)
        return;
    BxEvent childDone;
    pool.AddTask(makeTask([&pool, depth, &reached, childDone]() mutable {
                     eventChain(pool, depth - 1, reached);
                     childDone.Set();
                     return true;
                 }),
                 1);
    childDone.Wait();
}
} // namespace

TEST(BxThreadPool, NestedForkJoinDeeperThanTheWorkerCountCompletes)
{
    BxThreadPool pool(2);
    std::atomic<int> leaves{0};
    auto root = makeTask([&] { return forkJoin(pool, 6, leaves); });
    pool.AddTask(root, 1);
    ASSERT_TRUE(root->WaitUntilTerminate());
    EXPECT_TRUE(root->GetResult());
    EXPECT_EQ(leaves, 64);
}

TEST(BxThreadPool, WaitsOnEventsInsideTasksAreCompensated)
{
    BxThreadPool pool(2);
    std::atomic<int> reached{0};
    auto root = makeTask([&] {
        eventChain(pool, 12, reached);
        return true;
    });
    pool.AddTask(root, 2);
    ASSERT_TRUE(root->WaitUntilTerminate());
    EXPECT_EQ(reached, 13);
    EXPECT_GE(pool.GetThreadCount(), 2u);

    // Later waits reuse the surplus workers: the pool does not keep growing.
    for (int round = 0; round < 3; ++round)
    {
        reached = 0;
        auto again = makeTask([&] {
            eventChain(pool, 12, reached);
            return true;
        });
        pool.AddTask(again, 1);
        ASSERT_TRUE(again->WaitUntilTerminate());
        EXPECT_EQ(reached, 13);
        EXPECT_LE(pool.GetThreadCount(), 2u + 13u);
    }
}

TEST(BxThreadPool, EscapingExceptionIsDroppedAndThePoolGoesOn)
{
    class CRethrowing : public BxTask
    {
    protected:
        BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { throw std::runtime_error("child"); }
        void onException(const std::exception& e) override { BX_THROW(BxException, "CRethrowing::onException", e.what()); }
    };
    BxThreadPool pool(1);
    BxSmartPointer<BxTask> bad(new CRethrowing);
    pool.AddTask(bad, 1);
    EXPECT_TRUE(bad->WaitUntilTerminate());
    auto good = makeTask([] { return true; });
    pool.AddTask(good, 1);
    EXPECT_TRUE(good->WaitUntilTerminate());
    EXPECT_TRUE(good->GetResult());
}

TEST(BxThreadPool, ShutdownDropsQueuedTasksAndReleasesTheirWaiters)
{
    SBusyGate gate;
    auto queued = makeTask([] { return true; });
    auto running = gate.makeBlocker();
    std::thread opener;
    {
        BxThreadPool pool(1);
        pool.AddTask(running, 1);
        gate.entered.Wait();
        pool.AddTask(queued, 1);
        // Lets the running task finish once the shut-down has cancelled `queued`.
        opener = std::thread([&] {
            queued->WaitUntilTerminate();
            gate.open.set_value();
        });
    } // the destructor cancels `queued`, then joins the worker
    opener.join();
    EXPECT_TRUE(running->GetTerminationEvent().IsSet());
    EXPECT_TRUE(queued->GetTerminationEvent().IsSet());
    EXPECT_EQ(queued->afterRun, 0);
    EXPECT_EQ(running->afterRun, 1);
}
