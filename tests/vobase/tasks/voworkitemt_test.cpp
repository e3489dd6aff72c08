// Work items and simple tasks made from callables: they run like hand-written
// ones, once per start, report exceptions through the item's status and own
// their callables for exactly as long as the item lives.
#include <vobase/tasks/votaskmanager.h>
#include <vobase/tasks/votaskmanagersequential.h>
#include <vobase/tasks/votasksimplet.h>
#include <vobase/tasks/voworkitemt.h>

#include <bxbase/bxexception.h>
#include <bxbase/threading/bxevent.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using ITM = ITaskManager;

// Only callables of the two work-item signatures choose the template Add.
static_assert(VoWorkItemCallable<void (*)()>);
static_assert(VoWorkItemCallable<void (*)(TaskManager::SWorkItemStatus&)>);
static_assert(!VoWorkItemCallable<BxSmartPointer<IWorkItem>>);
static_assert(!VoWorkItemCallable<void (*)(int)>);

/// Signals `gone` when the last copy of the callable that holds it is destroyed.
struct CToken
{
    explicit CToken(BxEvent gone) : m_gone(gone) {}
    ~CToken() { m_gone.Set(); }
    BxEvent m_gone;
};

}  // namespace

TEST(VoWorkItemT, TheCallableRunsOncePerStartWithOrWithoutTheStatus)
{
    VoTaskManager manager;
    std::atomic<int> plain{0}, withStatus{0};
    manager.Add("plain", [&] { ++plain; });
    manager.Add("status", [&](TaskManager::SWorkItemStatus& status) {
        EXPECT_EQ(status.running.load(), 1u);
        ++withStatus;
    });
    manager.AddDependency("plain", "status");
    for (int start = 1; start <= 3; ++start) {
        manager.Start("plain", ITM::eP_Normal);
        manager.WaitUntilTerminate("status");
        EXPECT_EQ(plain, start);
        EXPECT_EQ(withStatus, start);
        EXPECT_EQ(manager.GetStatus("status"), ITM::eCS_Computed);
    }
    // Starting the dependent alone runs only it.
    manager.Start("status", ITM::eP_Normal);
    manager.WaitUntilTerminate("status");
    EXPECT_EQ(plain, 3);
    EXPECT_EQ(withStatus, 4);
}

TEST(VoWorkItemT, ExceptionsFailTheItemAndItsDependentsLikeAnyItem)
{
    VoTaskManager manager;
    std::atomic<int> after{0};
    manager.Add("std", [] { throw std::runtime_error("boom"); });
    manager.Add("after", [&] { ++after; });
    manager.AddDependency("std", "after");
    manager.Start("std", ITM::eP_Normal);
    manager.WaitUntilTerminate("after");
    EXPECT_EQ(manager.GetStatus("std"), ITM::eCS_Failed);
    EXPECT_EQ(manager.GetStatus("after"), ITM::eCS_Failed);
    EXPECT_EQ(after, 0);

    manager.Add("bx", [](TaskManager::SWorkItemStatus&) {
        throw BxExceptionPreconditionViolation(__FILE__, __LINE__, "test", L"bad");
    });
    manager.Start("bx", ITM::eP_Normal);
    manager.WaitUntilTerminate("bx");
    EXPECT_EQ(manager.GetStatus("bx"), ITM::eCS_Failed);

    // The item can run again afterwards and then succeed.
    bool fail = true;
    manager.Add("flaky", [&fail] {
        if (fail)
            throw std::runtime_error("first time");
    });
    manager.Start("flaky", ITM::eP_Normal);
    manager.WaitUntilTerminate("flaky");
    EXPECT_EQ(manager.GetStatus("flaky"), ITM::eCS_Failed);
    fail = false;
    manager.Start("flaky", ITM::eP_Normal);
    manager.WaitUntilTerminate("flaky");
    EXPECT_EQ(manager.GetStatus("flaky"), ITM::eCS_Computed);
}

TEST(VoWorkItemT, AStatusCallableSeesTheBreakEventOfAStop)
{
    VoTaskManager manager;
    BxEvent entered;
    std::atomic<bool> sawBreak{false};
    manager.Add("long", [entered, &sawBreak](TaskManager::SWorkItemStatus& status) mutable {
        entered.Set();
        status.breakEvent.Wait(INFINITE);
        sawBreak = true;
    });
    manager.Start("long", ITM::eP_Normal);
    entered.Wait(INFINITE);
    manager.Stop("long");
    manager.WaitUntilTerminate("long");
    EXPECT_TRUE(sawBreak);
    EXPECT_EQ(manager.GetStatus("long"), ITM::eCS_Stopped);
}

TEST(VoWorkItemT, TheItemOwnsACopyOfTheCallableUntilTheLastOwnerDropsIt)
{
    BxEvent copyGone, movedGone;
    auto original = std::make_shared<CToken>(copyGone);
    std::weak_ptr<CToken> watch = original;
    auto keepsCopy = [original] { return original.use_count(); };
    {
        VoTaskManager manager;
        manager.Add("copy", keepsCopy);   // an lvalue is copied: two owners now
        EXPECT_EQ(watch.use_count(), 3);   // `original`, `keepsCopy` and the item's copy
        manager.Add("moved", [token = std::make_shared<CToken>(movedGone)] { EXPECT_TRUE(token); });
        manager.AddDependency("copy", "moved");
        manager.Start("copy", ITM::eP_Normal);
        manager.WaitUntilTerminate("moved");
        EXPECT_FALSE(movedGone.IsSet());  // still held by the manager's item

        manager.Remove("copy");
        EXPECT_EQ(watch.use_count(), 2);  // the item's copy is gone
    }
    EXPECT_TRUE(movedGone.IsSet());  // destroyed with the manager
    original.reset();
    EXPECT_FALSE(copyGone.IsSet());   // the lambda given by reference still holds it
    EXPECT_EQ(keepsCopy(), 1);

    // An item made directly lives as long as its last smart pointer.
    BxEvent directGone;
    BxSmartPointer<IWorkItem> item = VoMakeWorkItem([token = std::make_shared<CToken>(directGone)] {});
    {
        VoTaskManager manager;
        manager.Add("direct", item);
    }
    EXPECT_FALSE(directGone.IsSet());
    item = nullptr;
    EXPECT_TRUE(directGone.IsSet());
}

TEST(VoTaskSimpleT, QueuedCallablesRunInOrderAndAThrowingOneDoesNotStopTheQueue)
{
    BxSmartPointer<VoTaskManagerSequential> queue(
        new VoTaskManagerSequential(VoTaskManagerSequential::EThreadPriority::eTP_Normal));
    std::vector<std::string> ran; // written only by the queue's one worker until `last`
    BxEvent last;
    queue->AddTask(VoMakeTaskSimple([&] { ran.push_back("first"); }));
    queue->AddTask(VoMakeTaskSimple([&]() -> bool { throw std::runtime_error("lost"); }));
    queue->AddTask(VoMakeTaskSimple([&ran, last]() mutable {
        ran.push_back("last");
        last.Set();
    }));
    last.Wait(INFINITE);
    EXPECT_EQ(ran, (std::vector<std::string>{"first", "last"}));
}

TEST(VoTaskSimpleT, RunGivesTheCallablesResultOrTrue)
{
    int calls = 0;
    EXPECT_TRUE(VoMakeTaskSimple([&] { ++calls; })->Run());
    EXPECT_FALSE(VoMakeTaskSimple([&] { return ++calls > 5; })->Run());
    EXPECT_TRUE(VoMakeTaskSimple([&] { return ++calls; })->Run());  // non-zero converts to true
    EXPECT_EQ(calls, 3);

    BxEvent gone;
    {
        BxSmartPointer<ITaskSimple> task = VoMakeTaskSimple([token = std::make_shared<CToken>(gone)] {});
        BxSmartPointer<ITaskSimple> second = task;
        task = nullptr;
        EXPECT_FALSE(gone.IsSet());
    }
    EXPECT_TRUE(gone.IsSet());
}
