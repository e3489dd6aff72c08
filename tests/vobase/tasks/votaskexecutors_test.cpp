#include <vobase/algorithms/voalgorithm.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/tasks/votaskalgorithm.h>
#include <vobase/tasks/votaskfinalizer.h>
#include <vobase/tasks/votaskmanagerpooling.h>
#include <vobase/tasks/votaskmanagersequential.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxthreadpool.h>
#include <bxbase/windows/bxmessageloop.h>

#include <gtest/gtest.h>

#include <pthread.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A simple task that runs a function and signals `gone` when destroyed.
class CSimple : public ITaskSimple
{
public:
    explicit CSimple(std::function<void()> body, BxEvent gone = BxEvent()) : m_body(std::move(body)), m_gone(gone) {}
    ~CSimple() override { m_gone.Set(); }
    bool Run() override
    {
        m_body();
        return true;
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    std::function<void()> m_body;
    BxEvent m_gone;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

BxSmartPointer<ITaskSimple> simple(std::function<void()> body, BxEvent gone = BxEvent())
{
    return BxSmartPointer<ITaskSimple>(new CSimple(std::move(body), gone));
}

std::string currentThreadName()
{
    char name[32] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return name;
}

/// Records what ran, on which thread.
struct SJournal
{
    std::mutex mutex;
    std::vector<std::wstring> keys;
    std::vector<std::uint32_t> threads;
    std::vector<std::string> threadNames;
    void Note(const std::wstring& key)
    {
        std::lock_guard lock(mutex);
        keys.push_back(key);
        threads.push_back(GetCurrentThreadId());
        threadNames.push_back(currentThreadName());
    }
};

using Pooling = VoTaskManagerPooling;
using Sequential = VoTaskManagerSequential;

}  // namespace

// --- pooling queue ---------------------------------------------------------------

TEST(VoTaskManagerPooling, KeysPostedWhilePendingRunOnceAndAgainWhenPostedWhileRunning)
{
    SJournal journal;
    std::atomic<int> factoryCalls{0};
    BxEvent blockerEntered, openBlocker, kEntered, openK, done;
    std::atomic<int> kRuns{0};
    BxSmartPointer<Pooling> queue(new Pooling(
        [&](const CStringT<wchar_t>& key) {
            ++factoryCalls;
            // Events are captured by value: a copy keeps the state alive while Set finishes.
            return simple([&journal, &kRuns, key, blockerEntered, openBlocker, kEntered, openK, done]() mutable {
                journal.Note(key);
                if (key == L"blocker")
                {
                    blockerEntered.Set();
                    openBlocker.Wait(INFINITE);
                }
                else if (key == L"k" && ++kRuns == 1)
                {
                    kEntered.Set();
                    openK.Wait(INFINITE);
                }
                else if (key == L"k")
                    done.Set();
            });
        },
        Pooling::EThreadPriority::eTP_Normal));

    queue->AddTask(L"blocker");
    blockerEntered.Wait(INFINITE);
    for (int i = 0; i < 3; ++i)
        queue->AddTask(L"k");  // pending: one entry
    openBlocker.Set();
    kEntered.Wait(INFINITE);
    EXPECT_EQ(factoryCalls.load(), 2);
    queue->AddTask(L"k");  // its task runs: queued again
    openK.Set();
    done.Wait(INFINITE);
    EXPECT_EQ(factoryCalls.load(), 3);
    std::lock_guard lock(journal.mutex);
    EXPECT_EQ(journal.keys, (std::vector<std::wstring>{L"blocker", L"k", L"k"}));
    EXPECT_EQ(journal.threadNames.front(), "VoThreadPooling");  // the OS keeps 15 characters
}

TEST(VoTaskManagerPooling, FailingTasksAndAFactoryWithoutTaskDoNotWedgeTheQueue)
{
    BxEvent afterFailure, afterEmpty, blockerEntered, openBlocker;
    BxSmartPointer<Pooling> queue(new Pooling(
        [&](const CStringT<wchar_t>& key) -> BxSmartPointer<ITaskSimple> {
            if (key == L"none")
                return {};
            if (key == L"throws")
                return simple([] { throw std::runtime_error("task failure"); });
            if (key == L"blocker")
                return simple([blockerEntered, openBlocker]() mutable {
                    blockerEntered.Set();
                    openBlocker.Wait(INFINITE);
                });
            if (key == L"after")
                return simple([afterFailure]() mutable { afterFailure.Set(); });
            return simple([afterEmpty]() mutable { afterEmpty.Set(); });
        },
        Pooling::EThreadPriority::eTP_BelowNormal));
    queue->AddTask(L"blocker");
    blockerEntered.Wait(INFINITE);
    queue->AddTask(L"throws");
    openBlocker.Set();
    queue->AddTask(L"after");  // runs although the task before it threw
    afterFailure.Wait(INFINITE);

    queue->AddTask(L"none");   // the factory fails: that worker ends
    queue->AddTask(L"later");  // a later post still runs
    afterEmpty.Wait(INFINITE);
}

// --- sequential queue -----------------------------------------------------------

TEST(VoTaskManagerSequential, RunsInPostingOrderOnOneWorkerThread)
{
    SJournal journal;
    BxEvent open, last;
    BxSmartPointer<Sequential> queue(new Sequential(Sequential::EThreadPriority::eTP_Normal));
    queue->AddTask(simple([&journal, open] {
        open.Wait(INFINITE);
        journal.Note(L"0");
    }));
    for (int i = 1; i < 100; ++i)
        queue->AddTask(simple([&journal, i, last]() mutable {
            journal.Note(std::to_wstring(i));
            if (i == 99)
                last.Set();
        }));
    open.Set();
    last.Wait(INFINITE);
    std::lock_guard lock(journal.mutex);
    ASSERT_EQ(journal.keys.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(journal.keys[i], std::to_wstring(i));
    for (std::uint32_t thread : journal.threads)
        EXPECT_EQ(thread, journal.threads.front());
    EXPECT_NE(journal.threads.front(), GetCurrentThreadId());
    EXPECT_EQ(journal.threadNames.front(), "VoThreadSequent");
}

TEST(VoTaskManagerSequential, AfterTheLastTaskANewPostStartsANewWorker)
{
    SJournal journal;
    BxEvent firstGone, secondRan;
    BxSmartPointer<Sequential> queue(new Sequential(Sequential::EThreadPriority::eTP_Normal));
    // The worker drops its last task only after it found the queue empty and
    // marked itself gone: the task's destructor tells us that moment.
    queue->AddTask(simple([&] { journal.Note(L"first"); }, firstGone));
    firstGone.Wait(INFINITE);
    queue->AddTask(simple([&journal, secondRan]() mutable {
        journal.Note(L"second");
        secondRan.Set();
    }));
    secondRan.Wait(INFINITE);
    std::lock_guard lock(journal.mutex);
    ASSERT_EQ(journal.threads.size(), 2u);
    EXPECT_NE(journal.threads[0], journal.threads[1]);

    // An empty entry throws inside the worker; the tasks behind it run with the next post.
    BxEvent third;
    queue->AddTask(BxSmartPointer<ITaskSimple>());
    queue->AddTask(simple([third]() mutable { third.Set(); }));
    queue->AddTask(simple([] { throw std::runtime_error("swallowed"); }));
    queue->AddTask(simple([] {}));
    third.Wait(INFINITE);
}

// --- finalizer ------------------------------------------------------------------

namespace {

class VoTaskFinalizerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
        if (!dispatcher.IsRunning()) {
            ASSERT_TRUE(dispatcher.StartAndWait());
        }
    }
    /// Pumps this thread's messages until `done` holds.
    static void pumpUntil(const std::function<bool()>& done)
    {
        while (!done())
            BxMessageLoop::ProcessPending(INFINITE);
    }
};

/// A BxTask that records where it ran.
class CWork : public BxTask
{
public:
    std::atomic<std::uint32_t> thread{0};

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        thread = GetCurrentThreadId();
        return true;
    }
};

}  // namespace

TEST_F(VoTaskFinalizerTest, CompletionRunsOnTheCreatingThreadAfterTheWork)
{
    std::atomic<std::uint32_t> workThread{0}, doneThread{0};
    std::atomic<bool> workDone{false}, workDoneSeenByCompletion{false};
    VoTaskFinalizer finalizer(
        false, [&] { workThread = GetCurrentThreadId(); workDone = true; },
        [&] {
            doneThread = GetCurrentThreadId();
            workDoneSeenByCompletion = workDone.load();
        });
    pumpUntil([&] { return finalizer.IsDone(); });
    EXPECT_TRUE(workDoneSeenByCompletion);
    EXPECT_EQ(doneThread.load(), GetCurrentThreadId());
    EXPECT_NE(workThread.load(), GetCurrentThreadId());

    BxSmartPointer<CWork> work(new CWork);
    std::atomic<int> completions{0};
    VoTaskFinalizer taskForm(false, BxSmartPointer<BxTask>(work), [&] { ++completions; });
    pumpUntil([&] { return taskForm.IsDone(); });
    EXPECT_EQ(completions.load(), 1);
    EXPECT_NE(work->thread.load(), 0u);
    EXPECT_NE(work->thread.load(), GetCurrentThreadId());
}

TEST_F(VoTaskFinalizerTest, SelfDeletingFinalizersAndFailingCompletionsFinish)
{
    std::atomic<int> completions{0};
    for (int i = 0; i < 5; ++i)
        new VoTaskFinalizer(true, [] {}, [&] { ++completions; });  // deletes itself when done
    new VoTaskFinalizer(true, [] { throw std::runtime_error("work failed"); }, [&] { ++completions; });
    new VoTaskFinalizer(true, [] {}, [&] {
        ++completions;
        throw std::runtime_error("completion failed");  // answered as 0x80004005, swallowed
    });
    pumpUntil([&] { return completions.load() == 7; });
    EXPECT_THROW(VoTaskFinalizer(false, std::function<void()>(), [] {}), BxException);
    EXPECT_THROW(VoTaskFinalizer(false, BxSmartPointer<BxTask>(), [] {}), BxException);
}

TEST_F(VoTaskFinalizerTest, DestroyingBeforeCompletionWaitsForTheWorkAndDropsTheCompletion)
{
    BxEvent open;
    std::atomic<bool> completed{false}, workEnded{false};
    {
        VoTaskFinalizer finalizer(false, [&] { open.Wait(INFINITE); workEnded = true; }, [&] { completed = true; });
        open.Set();
    }  // not pumped: the completion never comes
    EXPECT_TRUE(workEnded);
    BxMessageLoop::ProcessPending(0);
    EXPECT_FALSE(completed);
}

// --- algorithm task ---------------------------------------------------------------

namespace {

class CHalf : public VoAlgorithm
{
public:
    int input = 0;
    int output = 0;

protected:
    bool compute() override
    {
        if (input % 2 != 0)
            BX_THROW(BxException, "CHalf::compute", "odd input");
        output = input / 2;
        return true;
    }
};

}  // namespace

TEST(VoTaskAlgorithm, ReportsFailureByResultAndKeepsItInTheAlgorithm)
{
    CHalf half;
    half.input = 42;
    BxSmartPointer<VoTaskAlgorithm> task(new VoTaskAlgorithm(half));
    BxThreadPool::GetInstance().AddTask(task, 1);
    task->WaitUntilTerminate();
    EXPECT_TRUE(task->GetResult());
    EXPECT_EQ(half.output, 21);
    EXPECT_EQ(half.GetException(), nullptr);

    CHalf odd;
    odd.input = 7;
    VoTaskAlgorithm seed(odd);
    VoTaskAlgorithm copy(seed);
    EXPECT_EQ(&copy.GetAlgorithm(), &odd);
    BxSmartPointer<VoTaskAlgorithm> failing(new VoTaskAlgorithm(std::move(copy)));
    BxThreadPool::GetInstance().AddTask(failing, 2);
    failing->WaitUntilTerminate();
    EXPECT_FALSE(failing->GetResult());
    ASSERT_NE(odd.GetException(), nullptr);
    auto failure = std::dynamic_pointer_cast<const BxException>(odd.GetException());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetFunctionName(), "CHalf::compute");
}
