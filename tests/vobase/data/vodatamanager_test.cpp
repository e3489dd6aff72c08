#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/data/vodatamanagerlist.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthreadapi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Node = BxSmartPointer<VoNode>;
using ReadHandle = VoDataHandleLockOnly<0>;
using WriteHandle = VoDataHandleLockOnly<1>;

Node makeNode(const wchar_t* name) { return Node(new VoNode(name, true, VoNode::eTMM_Track)); }

Node insert(VoDataManager& manager, const Node& parent, const wchar_t* name)
{
    Node node = makeNode(name);
    EXPECT_TRUE(manager.InsertNode(parent, node));
    return node;
}

std::wstring dumpOf(const VoDataManager& manager)
{
    BxStreamWriteASCIIStringT<CStringW> text;
    manager.dump(text);
    return text.GetString();
}

/// The lock lines of the dump (between "Current data locks:" and the closing dash line).
std::wstring lockLines(const VoDataManager& manager)
{
    const std::wstring text = dumpOf(manager);
    const std::wstring header = L"Current data locks:\n";
    const std::size_t begin = text.find(header) + header.size();
    return text.substr(begin, text.find(L"----", begin) - begin);
}

std::wstring tid() { return std::to_wstring(GetCurrentThreadId()); }

/// Root -> A -> {A1, A2, A3}, Root -> B.
struct CTree
{
    VoDataManager manager;
    Node root = manager.GetRootNode();
    Node a = insert(manager, root, L"A");
    Node a1 = insert(manager, a, L"A1");
    Node a2 = insert(manager, a, L"A2");
    Node a3 = insert(manager, a, L"A3");
    Node b = insert(manager, root, L"B");
};

using Handles = std::vector<std::unique_ptr<VoDataHandleBase>>;

/// Runs `body` on another thread, which keeps the handles that body made until
/// Release() (or the holder's end) and then releases them on its own thread.
class CHolder
{
public:
    template <class Body>
    explicit CHolder(Body body)
        : m_thread([this, body] {
              Handles handles;
              body(handles);
              m_ready.Set();
              m_release.Wait();
              handles.clear();
          })
    {
        m_ready.Wait();
    }
    ~CHolder() { Release(); }

    void Release()
    {
        m_release.Set();
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    BxEvent m_ready;
    BxEvent m_release;
    std::thread m_thread;
};

class CRecorder : public DataManager::IInterceptorDataManager
{
public:
    void OnInsert(const DataManager::CContextNode& c) override { record(L"insert", c); }
    void OnMove(const DataManager::CContextNode& c) override { record(L"move", c); }
    void OnRemove(const DataManager::CContextNode& c) override { record(L"remove", c); }

    std::vector<std::wstring> events;
    std::vector<VoDataManager*> managers;

private:
    void record(const wchar_t* what, const DataManager::CContextNode& c)
    {
        events.push_back(std::wstring(what) + L" " + c.GetNode()->GetName());
        managers.push_back(&c.GetDataManager());
    }
};

}  // namespace

// --- requests, re-entry and lock status -------------------------------------

TEST(VoDataManager, WriteHandleCoversChildReadGrantedWithoutTryLock)
{
    CTree tree;
    WriteHandle write(tree.manager, tree.a);
    EXPECT_FALSE(write.IsAccessGranted());
    ASSERT_TRUE(tree.manager.TryLock());
    EXPECT_TRUE(write.IsAccessGranted());
    EXPECT_TRUE(tree.manager.IsCurrentThreadLocking());

    ReadHandle read(tree.manager, tree.a1);
    EXPECT_TRUE(read.IsAccessGranted());  // re-entry, no TryLock needed
    WriteHandle again(tree.manager, tree.a);
    EXPECT_TRUE(again.IsAccessGranted());

    VoDataManager::ELockStatus status;
    EXPECT_TRUE(tree.manager.TryLockAndWait(0, status));
    EXPECT_EQ(status, VoDataManager::eLS_NoRequests);
    EXPECT_EQ(lockLines(tree.manager), L"- Root/A [" + tid() + L": r(0)/w(2)]\n- Root/A/A1 [" + tid() +
                                           L": r(1)/w(2)]\n- Root/A/A2 [" + tid() + L": r(0)/w(2)]\n- Root/A/A3 [" +
                                           tid() + L": r(0)/w(2)]\n");

    read.Unlock();
    again.Unlock();
    EXPECT_FALSE(read.IsAccessGranted());
    EXPECT_TRUE(tree.manager.IsCurrentThreadLocking());
    write.Unlock();
    EXPECT_FALSE(tree.manager.IsCurrentThreadLocking());
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, ReadLockNeverTurnsIntoWriteLock)
{
    CTree tree;
    ReadHandle read(tree.manager, tree.a);
    ASSERT_TRUE(tree.manager.TryLock());

    WriteHandle write(tree.manager, tree.a);  // waits in the request set
    EXPECT_FALSE(write.IsAccessGranted());
    WriteHandle other(tree.manager, tree.b);  // not held at all
    VoDataManager::ELockStatus status;
    EXPECT_FALSE(tree.manager.TryLockAndWait(1000, status));
    EXPECT_EQ(status, VoDataManager::eLS_ThreadIsLocking);
    EXPECT_FALSE(write.IsAccessGranted());
    EXPECT_FALSE(other.IsAccessGranted());

    // The request set was dropped: the next attempt has nothing to do.
    EXPECT_TRUE(tree.manager.TryLockAndWait(0, status));
    EXPECT_EQ(status, VoDataManager::eLS_NoRequests);
    EXPECT_FALSE(write.IsAccessGranted());
}

TEST(VoDataManager, AttemptWithoutHandlesSucceedsWithStatus2)
{
    VoDataManager manager;
    VoDataManager::ELockStatus status = VoDataManager::eLS_Exception;
    EXPECT_TRUE(manager.TryLockAndWait(0, status));
    EXPECT_EQ(status, VoDataManager::eLS_NoRequests);
    EXPECT_FALSE(manager.IsCurrentThreadLocking());
}

TEST(VoDataManager, HandleWithoutNodeIsGrantedAndLocksNothing)
{
    VoDataManager manager;
    WriteHandle handle(manager, nullptr);
    EXPECT_TRUE(handle.IsAccessGranted());
    EXPECT_FALSE(handle.IsValid());
    EXPECT_FALSE(manager.IsCurrentThreadLocking());
    handle.Unlock();
    EXPECT_EQ(lockLines(manager), L"");
}

TEST(VoDataManager, HandleOnForeignNodeIsInvalid)
{
    CTree tree;
    VoDataManager other;
    Node stranger = insert(other, other.GetRootNode(), L"X");
    Node loose = makeNode(L"loose");
    {
        WriteHandle handle(tree.manager, stranger);
        EXPECT_FALSE(handle.IsValid());
        VoDataManager::ELockStatus status;
        EXPECT_FALSE(tree.manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_InvalidHandle);
    }
    {
        ReadHandle handle(tree.manager, loose);
        ReadHandle good(tree.manager, tree.a);
        VoDataManager::ELockStatus status;
        EXPECT_FALSE(tree.manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_InvalidHandle);
        EXPECT_FALSE(good.IsAccessGranted());  // all or nothing
    }
    EXPECT_EQ(lockLines(tree.manager), L"");
    EXPECT_EQ(lockLines(other), L"");
}

TEST(VoDataManager, AllRequestsAreGrantedTogether)
{
    CTree tree;
    WriteHandle a1(tree.manager, tree.a1);
    ReadHandle b(tree.manager, tree.b);
    WriteHandle a3(tree.manager, tree.a3);
    ASSERT_TRUE(tree.manager.TryLock());
    EXPECT_TRUE(a1.IsAccessGranted());
    EXPECT_TRUE(b.IsAccessGranted());
    EXPECT_TRUE(a3.IsAccessGranted());
    EXPECT_EQ(lockLines(tree.manager), L"- Root/A/A1 [" + tid() + L": r(0)/w(1)]\n- Root/A/A3 [" + tid() +
                                           L": r(0)/w(1)]\n- Root/B [" + tid() + L": r(1)/w(0)]\n");
}

// --- several threads ---------------------------------------------------------

TEST(VoDataManager, ReadLockOnRootBlocksWritersOfEveryNode)
{
    CTree tree;
    CHolder reader([&](Handles& handles) {
        handles.push_back(std::make_unique<ReadHandle>(tree.manager, tree.root));
        ASSERT_TRUE(tree.manager.TryLock());
    });

    {
        WriteHandle write(tree.manager, tree.a2);
        VoDataManager::ELockStatus status;
        EXPECT_FALSE(tree.manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_Busy);
        EXPECT_FALSE(write.IsAccessGranted());
    }
    {
        WriteHandle write(tree.manager, tree.b);
        VoDataManager::ELockStatus status;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(tree.manager.TryLockAndWait(200, status));
        const auto waited = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(status, VoDataManager::eLS_Timeout);
        EXPECT_GE(waited, std::chrono::milliseconds(195));
        EXPECT_LT(waited, std::chrono::milliseconds(5000));
    }
    {
        ReadHandle read(tree.manager, tree.a);  // readers share
        VoDataManager::ELockStatus status;
        EXPECT_TRUE(tree.manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_Granted);
        EXPECT_NE(lockLines(tree.manager).find(L"- Root/A/A1 ["), std::wstring::npos);
    }
    reader.Release();
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, WriterWaitsUntilTheReaderLeaves)
{
    CTree tree;
    BxEvent readerHolds, writerWaits, writerDone;
    std::atomic<bool> granted{false};
    std::thread reader([&] {
        ReadHandle read(tree.manager, tree.a1);
        ASSERT_TRUE(tree.manager.TryLock());
        readerHolds.Set();
        writerWaits.Wait();
        EXPECT_FALSE(granted.load());  // still excluded while the read lock stands
    });
    readerHolds.Wait();
    std::thread writer([&] {
        WriteHandle write(tree.manager, tree.a);  // covers A1
        writerWaits.Set();
        VoDataManager::ELockStatus status;
        granted = bool(tree.manager.TryLockAndWait(INFINITE, status));
        EXPECT_EQ(status, VoDataManager::eLS_Granted);
        writerDone.Set();
    });
    reader.join();
    writer.join();
    EXPECT_TRUE(granted.load());
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, WaitWatchesTenBusyNodesAndRechecksAfterEachWake)
{
    VoDataManager manager;
    Node parent = insert(manager, manager.GetRootNode(), L"P");
    std::vector<Node> leaves;
    for (int i = 0; i < 12; ++i)
        leaves.push_back(insert(manager, parent, (L"C" + std::to_wstring(i)).c_str()));

    BxEvent held, requested;
    std::vector<BxEvent> release(12);
    std::atomic<bool> granted{false};
    std::thread owner([&] {
        std::vector<std::unique_ptr<WriteHandle>> handles;
        for (const Node& leaf : leaves)
            handles.push_back(std::make_unique<WriteHandle>(manager, leaf));
        ASSERT_TRUE(manager.TryLock());
        held.Set();
        requested.Wait();
        for (std::size_t i = 0; i < handles.size(); ++i) {
            EXPECT_FALSE(granted.load()) << "granted while leaf " << i << " was still held";
            handles[i].reset();
        }
    });
    held.Wait();
    std::thread waiter([&] {
        std::vector<std::unique_ptr<ReadHandle>> handles;
        for (const Node& leaf : leaves)
            handles.push_back(std::make_unique<ReadHandle>(manager, leaf));
        requested.Set();
        VoDataManager::ELockStatus status;
        granted = bool(manager.TryLockAndWait(INFINITE, status));
        EXPECT_EQ(status, VoDataManager::eLS_Granted);
        for (const auto& handle : handles)
            EXPECT_TRUE(handle->IsAccessGranted());
    });
    owner.join();
    waiter.join();
    EXPECT_TRUE(granted.load());
    EXPECT_EQ(lockLines(manager), L"");
}

// --- tree edits -------------------------------------------------------------

TEST(VoDataManager, InsertNodeRefusals)
{
    CTree tree;
    Node fresh = makeNode(L"fresh");
    EXPECT_FALSE(tree.manager.InsertNode(nullptr, fresh));
    EXPECT_FALSE(tree.manager.InsertNode(tree.a, nullptr));
    EXPECT_FALSE(tree.manager.InsertNode(fresh, fresh));
    EXPECT_FALSE(tree.manager.InsertNode(tree.b, tree.a1));           // already has a parent
    EXPECT_FALSE(tree.manager.InsertNode(tree.root, makeNode(L"A"))); // name taken

    Node top = makeNode(L"top");
    Node below = makeNode(L"below");
    ASSERT_TRUE(tree.manager.InsertNode(top, below));  // builds a loose subtree
    EXPECT_FALSE(tree.manager.InsertNode(below, top)); // would close a cycle

    // A locked node that has no parent: the root of another manager.
    VoDataManager other;
    {
        ReadHandle lock(other, other.GetRootNode());
        ASSERT_TRUE(other.TryLock());
        EXPECT_FALSE(tree.manager.InsertNode(tree.b, other.GetRootNode()));
    }
    EXPECT_EQ(tree.b->GetChildrenCount(), 0u);
    EXPECT_EQ(tree.root->GetChildrenCount(), 2u);
    // Into the tree, so that the manager takes the loose subtree apart at its end.
    EXPECT_TRUE(tree.manager.InsertNode(tree.root, top));
}

TEST(VoDataManager, InsertedNodeJoinsTheTreeLockedAsItsParent)
{
    CTree tree;
    tree.root->SetModified(false, true);
    WriteHandle write(tree.manager, tree.b);
    ASSERT_TRUE(tree.manager.TryLock());

    Node loose = makeNode(L"C");
    Node leaf = makeNode(L"C1");
    ASSERT_TRUE(tree.manager.InsertNode(loose, leaf));  // outside the tree: unmanaged
    EXPECT_FALSE(leaf->IsManaged());
    ASSERT_TRUE(tree.manager.InsertNode(tree.b, loose));
    EXPECT_EQ(leaf->GetDataManager(), &tree.manager);
    EXPECT_EQ(loose->GetParent(), tree.b);
    EXPECT_TRUE(tree.b->IsModified(false));
    EXPECT_EQ(lockLines(tree.manager), L"- Root/B [" + tid() + L": r(0)/w(1)]\n- Root/B/C [" + tid() +
                                           L": r(0)/w(1)]\n- Root/B/C/C1 [" + tid() + L": r(0)/w(1)]\n");
    write.Unlock();
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, RemoveNodeRefusesReadHandlesAndTheRoot)
{
    CTree tree;
    {
        ReadHandle read(tree.manager, tree.a);
        ASSERT_TRUE(tree.manager.TryLock());
        EXPECT_FALSE(tree.manager.RemoveNode(read));
    }
    {
        WriteHandle root(tree.manager, tree.root);
        ASSERT_TRUE(tree.manager.TryLock());
        EXPECT_FALSE(tree.manager.RemoveNode(root));
        WriteHandle moveRoot(tree.manager, tree.root);
        EXPECT_FALSE(tree.manager.MoveNode(moveRoot, tree.b));
    }
    {
        WriteHandle pending(tree.manager, tree.a);  // never granted
        EXPECT_FALSE(tree.manager.RemoveNode(pending));
    }
    EXPECT_EQ(tree.a->GetParent(), tree.root);
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, RemoveNodeReleasesTheThreadsHandlesInTheSubtree)
{
    CTree tree;
    auto recorder = std::make_shared<CRecorder>();
    tree.manager.GetDispatcher()->Add(recorder);
    tree.root->SetModified(false, true);

    WriteHandle write(tree.manager, tree.a);
    ASSERT_TRUE(tree.manager.TryLock());
    ReadHandle inside(tree.manager, tree.a2);
    ReadHandle outside(tree.manager, tree.b);  // not covered by A: must be requested
    EXPECT_FALSE(outside.IsAccessGranted());
    EXPECT_TRUE(inside.IsAccessGranted());

    ASSERT_TRUE(tree.manager.RemoveNode(write));
    EXPECT_TRUE(write.IsUsed());
    EXPECT_TRUE(inside.IsUsed());
    EXPECT_FALSE(write.IsAccessGranted());
    EXPECT_FALSE(inside.IsAccessGranted());
    EXPECT_FALSE(tree.a->IsManaged());
    EXPECT_FALSE(tree.a2->IsManaged());
    EXPECT_FALSE(tree.a->GetParent());
    EXPECT_EQ(tree.a->GetChildrenCount(), 3u);  // children kept
    EXPECT_TRUE(tree.root->IsModified(false));
    EXPECT_FALSE(tree.manager.IsCurrentThreadLocking());
    EXPECT_EQ(lockLines(tree.manager), L"");
    EXPECT_EQ(recorder->events, std::vector<std::wstring>{L"remove A"});
    EXPECT_EQ(recorder->managers, std::vector<VoDataManager*>{&tree.manager});

    // The removed subtree is unlocked and can go back into the tree.
    EXPECT_TRUE(tree.manager.InsertNode(tree.b, tree.a));
    EXPECT_EQ(recorder->events.back(), L"insert A");
}

TEST(VoDataManager, MoveNodeRelinksAndRecountsTheSubtree)
{
    CTree tree;
    auto recorder = std::make_shared<CRecorder>();
    tree.manager.GetDispatcher()->Add(recorder);
    tree.root->SetModified(false, true);

    WriteHandle write(tree.manager, tree.a);
    ASSERT_TRUE(tree.manager.TryLock());
    ReadHandle inside(tree.manager, tree.a1);
    ASSERT_TRUE(inside.IsAccessGranted());

    EXPECT_FALSE(tree.manager.MoveNode(write, nullptr));
    EXPECT_FALSE(tree.manager.MoveNode(write, tree.a));   // itself
    EXPECT_FALSE(tree.manager.MoveNode(write, tree.a3));  // own descendant
    VoDataManager other;
    EXPECT_FALSE(tree.manager.MoveNode(write, other.GetRootNode()));
    Node clash = insert(tree.manager, tree.b, L"A");
    EXPECT_FALSE(tree.manager.MoveNode(write, tree.b));  // B has a child named A
    EXPECT_EQ(tree.a->GetParent(), tree.root);
    EXPECT_TRUE(recorder->events.size() == 1);           // the insertion of the clash only

    Node target = insert(tree.manager, tree.a2 /* inside: moving there is refused */, L"T");
    EXPECT_FALSE(tree.manager.MoveNode(write, target));
    Node dest = insert(tree.manager, tree.root, L"D");
    tree.root->SetModified(false, true);

    ASSERT_TRUE(tree.manager.MoveNode(write, dest));
    EXPECT_EQ(tree.a->GetParent(), dest);
    EXPECT_EQ(tree.root->FindChild(L"A"), nullptr);
    EXPECT_EQ(dest->FindChild(L"A"), tree.a);
    EXPECT_TRUE(tree.root->IsModified(false));  // the old parent
    EXPECT_TRUE(dest->IsModified(false));
    EXPECT_TRUE(inside.IsUsed());
    EXPECT_FALSE(inside.IsAccessGranted());
    EXPECT_TRUE(write.IsAccessGranted());
    EXPECT_EQ(recorder->events.back(), L"move A");
    EXPECT_EQ(lockLines(tree.manager), L"- Root/D/A [" + tid() + L": r(0)/w(1)]\n- Root/D/A/A1 [" + tid() +
                                           L": r(0)/w(1)]\n- Root/D/A/A2 [" + tid() + L": r(0)/w(1)]\n- Root/D/A/A2/T [" +
                                           tid() + L": r(0)/w(1)]\n- Root/D/A/A3 [" + tid() + L": r(0)/w(1)]\n");
    write.Unlock();
    EXPECT_EQ(lockLines(tree.manager), L"");
}

TEST(VoDataManager, MoveUnderANodeThatAnotherThreadReads)
{
    CTree tree;
    CHolder reader([&](Handles& handles) {
        handles.push_back(std::make_unique<ReadHandle>(tree.manager, tree.b));
        ASSERT_TRUE(tree.manager.TryLock());
    });
    {
        WriteHandle write(tree.manager, tree.a1);
        ASSERT_TRUE(tree.manager.TryLock());
        ASSERT_TRUE(tree.manager.MoveNode(write, tree.b));
        // A1 is now read by the other thread (through B) and written by this one.
        const std::wstring lines = lockLines(tree.manager);
        EXPECT_NE(lines.find(L"- Root/B/A1 ["), std::wstring::npos) << lines;
        EXPECT_NE(lines.find(L"[" + tid() + L": r(0)/w(1)]"), std::wstring::npos) << lines;
    }
    reader.Release();
    EXPECT_EQ(lockLines(tree.manager), L"");  // both threads' counts went away
}

TEST(VoDataManager, ResetEmptiesTheTreeOnlyWhenTheRootCanBeLocked)
{
    CTree tree;
    {
        CHolder reader([&](Handles& handles) {
            handles.push_back(std::make_unique<ReadHandle>(tree.manager, tree.a3));
            ASSERT_TRUE(tree.manager.TryLock());
        });
        EXPECT_FALSE(tree.manager.Reset(0));
        EXPECT_EQ(tree.root->GetChildrenCount(), 2u);
    }
    ASSERT_TRUE(tree.manager.Reset(100));
    EXPECT_EQ(tree.root->GetChildrenCount(), 0u);
    EXPECT_FALSE(tree.a->IsManaged());
    EXPECT_FALSE(tree.a1->IsManaged());
    EXPECT_FALSE(tree.a1->GetParent());
    EXPECT_EQ(lockLines(tree.manager), L"");
    EXPECT_FALSE(tree.manager.IsCurrentThreadLocking());
    // A node taken out by Reset is not left locked.
    EXPECT_TRUE(tree.manager.InsertNode(tree.root, tree.b));
}

// --- lookup, dump and the manager list ---------------------------------------

TEST(VoDataManager, NodeIdentifiersFindNodesOfTheTree)
{
    CTree tree;
    EXPECT_EQ(tree.manager.GetNode(VoDataManager::GetNodeID(*tree.a2)), tree.a2);
    EXPECT_EQ(tree.manager.GetNode(VoDataManager::GetNodeID(*tree.root)), tree.root);
    Node loose = makeNode(L"loose");
    EXPECT_EQ(tree.manager.GetNode(VoDataManager::GetNodeID(*loose)), nullptr);
    EXPECT_EQ(tree.manager.FindChild(L"B"), tree.b);
    EXPECT_EQ(tree.manager.FindChild(L"A1"), nullptr);  // only the root's children
}

TEST(VoDataManager, DumpText)
{
    CTree tree;
    tree.root->SetModified(false, true);
    tree.b->SetModified(true, false);
    ReadHandle read(tree.manager, tree.a2);
    ASSERT_TRUE(tree.manager.TryLock());
    const std::wstring dashes(68, L'-');
    const std::wstring expected = L"\n" + dashes + L"\nCurrent data manager:\n\n"
                                  L"Root [VoNode]\n"
                                  L" |-- A [VoNode]\n"
                                  L" |   |-- A1 [VoNode]\n"
                                  L" |   |-- A2 [VoNode]\n"
                                  L" |   |-- A3 [VoNode]\n"
                                  L" |-- B * [VoNode]\n" +
                                  dashes + L"\nCurrent data locks:\n- Root/A/A2 [" + tid() + L": r(1)/w(0)]\n" +
                                  dashes + L"\n\n";
    EXPECT_EQ(dumpOf(tree.manager), expected);
}

TEST(VoDataManager, LockDumpListsEveryThreadOfANode)
{
    CTree tree;
    std::wstring otherId;
    CHolder reader([&](Handles& handles) {
        handles.push_back(std::make_unique<ReadHandle>(tree.manager, tree.a3));
        ASSERT_TRUE(tree.manager.TryLock());
        otherId = tid();
    });
    ReadHandle read(tree.manager, tree.a);
    ASSERT_TRUE(tree.manager.TryLock());
    const std::wstring mine = L"[" + tid() + L": r(1)/w(0)]";
    const std::wstring theirs = L"[" + otherId + L": r(1)/w(0)]";
    const std::wstring both = GetCurrentThreadId() < std::stoul(otherId) ? mine + theirs : theirs + mine;
    EXPECT_EQ(lockLines(tree.manager), L"- Root/A " + mine + L"\n- Root/A/A1 " + mine + L"\n- Root/A/A2 " + mine +
                                           L"\n- Root/A/A3 " + both + L"\n");
}

TEST(VoDataManager, ProcessWideListAndItsSignals)
{
    std::vector<VoDataManager*> added, removed;
    auto addId = DataManagerListGetAddSignal().Connect([&](VoDataManager* m) { added.push_back(m); });
    auto removeId = DataManagerListGetRemoveSignal().Connect([&](VoDataManager* m) { removed.push_back(m); });
    VoDataManager* address = nullptr;
    {
        VoDataManager manager;
        address = &manager;
        const BxList<VoDataManager*> list = DataManagerListGetIterator();
        EXPECT_NE(std::find(list.begin(), list.end(), &manager), list.end());
    }
    const BxList<VoDataManager*> list = DataManagerListGetIterator();
    EXPECT_EQ(std::find(list.begin(), list.end(), address), list.end());
    DataManagerListGetAddSignal().Disconnect(addId);
    DataManagerListGetRemoveSignal().Disconnect(removeId);
    EXPECT_EQ(added, std::vector<VoDataManager*>{address});
    EXPECT_EQ(removed, std::vector<VoDataManager*>{address});
}

namespace {

class CCapturingLogger : public Logging::ILogger
{
public:
    bool IsEnabled(Logging::ELogLevel) const override { return true; }
    void Log(Logging::ELogLevel level, const char*, int, const char* functionName, const std::wstring& message) override
    {
        lines.push_back({level, functionName, message});
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

    struct SLine
    {
        Logging::ELogLevel level;
        std::string function;
        std::wstring message;
    };
    std::vector<SLine> lines;

private:
    mutable BxReferenceCounter<unsigned int> m_counter;
};

/// A write handle whose validity check fails with an exception.
class CThrowingHandle : public VoDataHandleLockOnly<1>
{
public:
    using VoDataHandleLockOnly<1>::VoDataHandleLockOnly;

protected:
    bool isValid() const override { throw std::runtime_error("broken handle"); }
};

}  // namespace

TEST(VoDataManager, ExceptionsInsideAnAttemptBecomeStatus1AndAreLogged)
{
    CTree tree;
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger);
    tree.manager.SetLogger(logger);
    {
        CThrowingHandle handle(tree.manager, tree.a);
        VoDataManager::ELockStatus status = VoDataManager::eLS_Granted;
        EXPECT_FALSE(tree.manager.TryLockAndWait(100, status));
        EXPECT_EQ(status, VoDataManager::eLS_Exception);
        EXPECT_FALSE(handle.IsAccessGranted());
    }
    ASSERT_EQ(logger->lines.size(), 1u);
    EXPECT_EQ(logger->lines[0].level, Logging::eLL_Error);
    EXPECT_EQ(logger->lines[0].function, "VoDataManager::TryLockAndWait");
    EXPECT_NE(logger->lines[0].message.find(L"broken handle"), std::wstring::npos);
    // The handle withdrew its request: the next attempt has nothing to do.
    VoDataManager::ELockStatus status;
    EXPECT_TRUE(tree.manager.TryLockAndWait(0, status));
    EXPECT_EQ(status, VoDataManager::eLS_NoRequests);
    tree.manager.SetLogger(nullptr);  // back to the default logger
}
