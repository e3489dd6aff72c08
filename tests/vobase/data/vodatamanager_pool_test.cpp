// Data-manager locks are keyed by thread: a pool thread that holds them or
// has requests pending must not run other tasks while it waits.
#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxnohelpscope.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace {

using Node = BxSmartPointer<VoNode>;
using ReadHandle = VoDataHandleLockOnly<0>;
using WriteHandle = VoDataHandleLockOnly<1>;

class CFunctionTask : public BxTask
{
public:
    explicit CFunctionTask(std::function<bool()> work) : m_work(std::move(work)) {}

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { return m_work(); }

private:
    std::function<bool()> m_work;
};

struct CTree
{
    VoDataManager manager;
    Node root = manager.GetRootNode();
    Node a = Node(new VoNode(L"A", true, VoNode::eTMM_Track));
    CTree() { EXPECT_TRUE(manager.InsertNode(root, a)); }
};

}  // namespace

TEST(VoDataManagerPool, TheNoHelpMarkerFollowsRequestsAndLocks)
{
    CTree tree;
    ASSERT_FALSE(BxNoHelpScope::IsRaised());
    {
        WriteHandle write(tree.manager, tree.a);
        EXPECT_TRUE(BxNoHelpScope::IsRaised());  // a request is pending
        ASSERT_TRUE(tree.manager.TryLock());
        EXPECT_TRUE(BxNoHelpScope::IsRaised());  // granted
        {
            ReadHandle again(tree.manager, tree.a);  // re-entry
            EXPECT_TRUE(again.IsAccessGranted());
        }
        EXPECT_TRUE(BxNoHelpScope::IsRaised());
        write.Unlock();
        EXPECT_FALSE(BxNoHelpScope::IsRaised());
    }
    {
        WriteHandle write(tree.manager, tree.a);
        EXPECT_TRUE(BxNoHelpScope::IsRaised());
    }  // the request goes with its handle
    EXPECT_FALSE(BxNoHelpScope::IsRaised());

    // A refused attempt drops the requests, and the marker with them.
    WriteHandle other(tree.manager, tree.a);
    std::atomic<bool> refused{false};
    BxEvent locked;
    std::thread rival([&] {
        locked.Wait();
        ReadHandle read(tree.manager, tree.a);
        EXPECT_TRUE(BxNoHelpScope::IsRaised());
        refused = !tree.manager.TryLockAndWait(0);
        EXPECT_FALSE(BxNoHelpScope::IsRaised());
    });
    ASSERT_TRUE(tree.manager.TryLock());
    locked.Set();
    rival.join();
    EXPECT_TRUE(refused.load());
    other.Unlock();
    EXPECT_FALSE(BxNoHelpScope::IsRaised());
}

TEST(VoDataManagerPool, AWorkerWaitingWithAWriteLockNeverRunsATaskThatTakesIt)
{
    // One worker: the child can only run on that worker (inside its wait,
    // where it would re-enter the lock by thread id) or on a compensating one.
    BxThreadPool pool(1);
    for (int round = 0; round < 20; ++round) {
        CTree tree;
        std::atomic<std::uint32_t> waiterThread{0}, childThread{0};
        std::atomic<bool> childGranted{true};
        BxSmartPointer<BxTask> root(new CFunctionTask([&] {
            WriteHandle write(tree.manager, tree.a);
            if (!tree.manager.TryLockAndWait(0))
                return false;
            waiterThread = GetCurrentThreadId();
            BxSmartPointer<BxTask> child(new CFunctionTask([&] {
                childThread = GetCurrentThreadId();
                WriteHandle mine(tree.manager, tree.a);
                childGranted = tree.manager.TryLockAndWait(0);
                return true;
            }));
            pool.AddTask(child, round % 3);
            return child->WaitUntilTerminate();
        }));
        pool.AddTask(root, BxThreadPool::ePriorityNormal);
        ASSERT_TRUE(root->WaitUntilTerminate(60000));
        ASSERT_TRUE(root->GetResult());
        EXPECT_NE(childThread.load(), waiterThread.load());
        EXPECT_FALSE(childGranted.load());
    }
}
