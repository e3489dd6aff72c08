#include "historytestoperations.h"

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/history/vohistory.h>
#include <vobase/objects/vonode.h>

#include <bxbase/threading/bxevent.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace HistoryTest;

namespace {

struct CLockedObjects
{
    VoDataManager manager;
    CObject object;
    BxSmartPointer<VoNode> other{new VoNode(L"other", true, VoNode::eTMM_Track)};

    CLockedObjects()
    {
        object.manager = &manager;
        object.node = BxSmartPointer<VoNode>(new VoNode(L"object", true, VoNode::eTMM_Track));
        EXPECT_TRUE(manager.InsertNode(manager.GetRootNode(), object.node));
        EXPECT_TRUE(manager.InsertNode(manager.GetRootNode(), other));
    }
};

/// Holds a write lock on `node` on its own thread from construction until Release().
class CWriter
{
public:
    CWriter(VoDataManager& manager, BxSmartPointer<VoNode> node)
        : m_thread([this, &manager, node] {
              VoDataHandleLockOnly<1> handle(manager, node);
              EXPECT_TRUE(manager.TryLock());
              m_holding.Set();
              m_release.Wait();
          })
    {
        m_holding.Wait();
    }
    ~CWriter() { Release(); }
    void Release()
    {
        m_release.Set();
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    BxEvent m_holding;
    BxEvent m_release;
    std::thread m_thread;
};

/// An addition that checks that it runs while its thread holds locks.
class CCheckedAdd : public COpAdd
{
public:
    CCheckedAdd(CObject& object, int delta) : COpAdd(object, delta), m_manager(*object.manager) {}
    bool Apply() override
    {
        sawLock = m_manager.IsCurrentThreadLocking();
        return COpAdd::Apply();
    }
    bool sawLock = false;

private:
    VoDataManager& m_manager;
};

}  // namespace

TEST(VoOperationLocking, RunsUnderTheNodeLocksAndReleasesThem)
{
    CLockedObjects objects;
    BxSmartPointer<CCheckedAdd> add(new CCheckedAdd(objects.object, 4));
    ASSERT_TRUE(add->ApplyWithLocking());
    EXPECT_TRUE(add->sawLock);
    EXPECT_EQ(objects.object.value, 4);
    EXPECT_FALSE(objects.manager.IsCurrentThreadLocking());
    ASSERT_TRUE(add->RevertWithLocking());
    EXPECT_EQ(objects.object.value, 0);
}

TEST(VoOperationLocking, RefusedLocksLeaveTheObjectAlone)
{
    CLockedObjects objects;
    CWriter writer(objects.manager, objects.object.node);
    // This thread already holds a lock, so it may not wait for new ones: refused at once.
    VoDataHandleLockOnly<0> mine(objects.manager, objects.other);
    ASSERT_TRUE(objects.manager.TryLock());

    BxSmartPointer<VoOperation> add(new COpAdd(objects.object, 4));
    EXPECT_FALSE(add->ApplyWithLocking());
    EXPECT_EQ(objects.object.value, 0);
    EXPECT_FALSE(add->RevertWithLocking());
    EXPECT_EQ(objects.object.value, 0);
    EXPECT_TRUE(objects.manager.IsCurrentThreadLocking());  // its own lock stays
}

TEST(VoOperationLocking, WaitsForAnotherThreadsWriteLock)
{
    CLockedObjects objects;
    CWriter writer(objects.manager, objects.object.node);
    std::atomic<bool> done{false};
    BxEvent started;
    std::thread editor([&] {
        BxSmartPointer<VoOperation> add(new COpAdd(objects.object, 4));
        started.Set();
        EXPECT_TRUE(add->ApplyWithLocking());
        done = true;
    });
    started.Wait();
    EXPECT_FALSE(done.load());  // cannot have run: the node is still write-locked
    writer.Release();
    editor.join();
    EXPECT_TRUE(done.load());
    EXPECT_EQ(objects.object.value, 4);
}

TEST(VoOperationLocking, UndoReportsRefusedLocks)
{
    CLockedObjects objects;
    VoHistory history;
    VoHistoryAction* action = history.BeginAction(L"add");
    BxSmartPointer<VoOperation> add(new COpAdd(objects.object, 4));
    ASSERT_TRUE(add->ApplyWithLocking());
    history.AddOperation(add.get(), &objects.object.id, VoHistoryAction::eAIF_Primary);
    history.EndAction(action);

    {
        CWriter writer(objects.manager, objects.object.node);
        VoDataHandleLockOnly<0> mine(objects.manager, objects.other);
        ASSERT_TRUE(objects.manager.TryLock());
        EXPECT_FALSE(history.Undo(1));
        EXPECT_EQ(objects.object.value, 4);
    }
}
