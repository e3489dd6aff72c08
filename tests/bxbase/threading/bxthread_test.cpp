#include <bxbase/threading/bxthread.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <string>

namespace
{
class CWorker : public BxThread<CWorker, BxThreadPolicyMFC>
{
public:
    explicit CWorker(const CStringW& name = L"TestWorker", EThreadPriority priority = eTP_Normal)
        : BxThread(name, priority)
    {
        SetThreadFunction(&CWorker::work);
    }
    ~CWorker() { WaitUntilTerminate(); }

    BxEvent release;           // the thread ends when this is set
    BxEvent inside;            // set by the thread once it runs
    DWORD result = 7;
    bool throwInstead = false;
    std::string seenName;      // written by the thread before `inside`
    DWORD seenId = 0;
    int seenNice = 0;
    cpu_set_t seenAffinity{};

private:
    DWORD work()
    {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        seenName = name;
        seenId = GetCurrentThreadId();
        seenNice = getpriority(PRIO_PROCESS, 0);
        sched_getaffinity(0, sizeof(seenAffinity), &seenAffinity);
        inside.Set();
        release.Wait();
        if (throwInstead)
            throw std::runtime_error("failed");
        return result;
    }
};

std::atomic<int> g_deleted{0};
class CSelfDeleting : public BxThread<CSelfDeleting>
{
public:
    CSelfDeleting() { SetThreadFunction(&CSelfDeleting::work); }
    ~CSelfDeleting() { ++g_deleted; }

private:
    bool work() { return true; }
};
} // namespace

TEST(BxThread, LifecycleAndExitCode)
{
    CWorker worker;
    EXPECT_EQ(worker.GetExitCode(), 0u);
    EXPECT_TRUE(worker.WaitUntilTerminate(0)); // never started: nothing to wait for
    ASSERT_TRUE(worker.StartAndWait());
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_EQ(worker.GetExitCode(), STILL_ACTIVE);
    EXPECT_FALSE(worker.Start()); // already running
    EXPECT_FALSE(worker.WaitUntilTerminate(0));
    EXPECT_FALSE(worker.WaitUntilTerminate(10));
    worker.inside.Wait();
    EXPECT_EQ(worker.GetThreadId(), worker.seenId);
    EXPECT_NE(worker.seenId, GetCurrentThreadId());

    worker.release.Set();
    EXPECT_TRUE(worker.WaitUntilTerminate(INFINITE));
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(worker.GetExitCode(), 7u);

    // A thread object can run again.
    worker.result = 3;
    ASSERT_TRUE(worker.Start());
    EXPECT_TRUE(worker.WaitUntilTerminate());
    EXPECT_EQ(worker.GetExitCode(), 3u);
}

TEST(BxThread, ExceptionEndsTheThreadWithItsCode)
{
    CWorker worker;
    worker.throwInstead = true;
    worker.release.Set();
    ASSERT_TRUE(worker.Start());
    ASSERT_TRUE(worker.WaitUntilTerminate());
    EXPECT_EQ(worker.GetExitCode(), BxThreadCore::eExitCodeException);
}

TEST(BxThread, NameIsVisibleToTheSystem)
{
    CWorker worker(L"VoThreadPoolingWorker"); // longer than the 15 bytes the system keeps
    worker.release.Set();
    ASSERT_TRUE(worker.Start());
    worker.WaitUntilTerminate();
    EXPECT_EQ(worker.seenName, "VoThreadPooling");
    EXPECT_EQ(worker.GetName(), L"VoThreadPoolingWorker");

    CWorker renamed(L"Before");
    ASSERT_TRUE(renamed.Start());
    renamed.inside.Wait();
    renamed.SetName(L"Grüße");
    char name[16] = {};
    // The thread still runs (it waits for release), so its handle is valid.
    {
        std::string path = "/proc/self/task/" + std::to_string(renamed.GetThreadId()) + "/comm";
        FILE* f = fopen(path.c_str(), "r");
        ASSERT_NE(f, nullptr);
        ASSERT_NE(fgets(name, sizeof(name), f), nullptr);
        fclose(f);
    }
    renamed.release.Set();
    EXPECT_STREQ(name, "Grüße\n");
}

TEST(BxThread, PriorityAndAffinityAreApplied)
{
    CWorker low(L"Low", BxThreadCore::eTP_Lowest);
    DWORD_PTR process = 0, system = 0;
    ASSERT_TRUE(GetProcessAffinityMask(GetCurrentProcess(), &process, &system));
    DWORD_PTR first = process & (~process + 1); // the lowest CPU the process may use
    low.SetAffinityMask(first);
    low.release.Set();
    ASSERT_TRUE(low.Start());
    low.WaitUntilTerminate();
    EXPECT_EQ(low.GetPriority(), BxThreadCore::eTP_Lowest);
    EXPECT_EQ(low.seenNice, 10);
    EXPECT_EQ(CPU_COUNT(&low.seenAffinity), 1);
    EXPECT_EQ(low.GetAffinityMask(), first);
}

TEST(BxThread, DeletesItselfWhenAsked)
{
    auto* thread = new CSelfDeleting;
    thread->SetAutoDelete(true);
    BxEvent ended = thread->GetTerminatedEvent();
    ASSERT_TRUE(thread->Start());
    ASSERT_TRUE(ended.Wait());
    EXPECT_EQ(g_deleted, 1);
}

TEST(BxThread, StartWithoutFunctionThrows)
{
    class CEmpty : public BxThread<CEmpty>
    {
    };
    CEmpty empty;
    EXPECT_THROW(empty.Start(), BxExceptionPreconditionViolation);
}
