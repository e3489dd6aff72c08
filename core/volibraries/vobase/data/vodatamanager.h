// The data manager: owns one tree of nodes (its root is named "Root") and
// grants threads read and write locks on subtrees of it.
//
//   VoDataManager manager;
//   BxSmartPointer<VoNode> doc(new VoNode(L"Document", true, VoNode::ETrackModificationMode(0)));
//   if (!manager.InsertNode(manager.GetRootNode(), doc))
//       return;
//
//   VoDataHandleLockOnly<1> write(manager, doc);     // declare what is needed...
//   VoDataHandleLockOnly<0> read(manager, other);
//   VoDataManager::ELockStatus status;
//   if (manager.TryLockAndWait(200, status)) {        // ...and take it all at once
//       edit(doc, other);
//   }                                                 // the handles release it
//
// A lock on a node covers its whole subtree. Many threads may read a subtree
// at once; a writer excludes everyone else. A thread collects requests
// (handles) and asks for all of them together; the grant is all-or-nothing,
// and a thread that already holds locks can only re-enter what it holds, so
// threads never wait for each other in a cycle. Waiting happens outside the
// manager's lock on the busy nodes' "unlocked" events; every wake-up re-checks.
//
// Tree edits go through the manager: InsertNode needs no handle, MoveNode and
// RemoveNode need a granted write handle on the node. Each edit is reported to
// the registered interceptors (DataManager::IInterceptorDataManager).
//
// Every manager is entered in a process-wide list (vodatamanagerlist.h) while
// it exists.
#pragma once

#include <vobase/data/iinterceptordatamanager.h>
#include <vobase/data/vodatahandlebase.h>
#include <vobase/objects/vonode.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcheckreturn.h>
#include <bxbase/bxcontainers.h>
#include <bxbase/bxidumpable.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/interceptor/cframework.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxevent.h>

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <vector>

class VoNode;
template <int N>
class VoDataHandleLockOnly;

/// The data manager: owns one tree of nodes (its root is named "Root") and grants threads read and write locks on
/// subtrees of it.
class VOBASE_API VoDataManager
    : public BxIDumpable<1>,
      public Interceptor::CFramework<DataManager::IInterceptorDataManager,
                                     Interceptor::CDispatcher<DataManager::IInterceptorDataManager>>,
      public INonCopyable
{
public:
    /// Outcome of a lock attempt (TryLockAndWait).
    enum ELockStatus
    {
        eLS_Granted = 0,         ///< all pending requests granted
        eLS_Exception = 1,       ///< an exception occurred inside the attempt
        eLS_NoRequests = 2,      ///< the thread had no pending requests (the result is true)
        eLS_ThreadIsLocking = 3, ///< the thread holds locks and asked for something it does not hold
        eLS_InvalidHandle = 4,   ///< a pending handle is not valid
        eLS_Busy = 5,            ///< a requested node is busy and no time remains
        eLS_Timeout = 6          ///< the time-out elapsed
    };

    /// The result of a lock attempt or tree edit: the boolean outcome, which
    /// the caller must look at (an unchecked result asserts).
    using Result = BxCheckReturn<bool, BxCheckReturnPolicyAssert>;

    /// A manager with an empty tree; it enters the process-wide list.
    VoDataManager();
    /// Leaves the process-wide list and takes the tree apart: every node
    /// loses its manager, its parent and its children. No thread may hold or
    /// request locks any more.
    ~VoDataManager() override;

    /// The root of the tree (named "Root").
    BxSmartPointer<VoNode> GetRootNode();
    /// The root of the tree, read-only, for callers holding a const manager.
    BxSmartPointer<const VoNode> GetRootNode() const;
    /// The root's child of that name, or null.
    BxSmartPointer<VoNode> FindChild(const CStringW& name);

    /// The node whose identifier (GetNodeID) is `id`, when it is in the tree; else null.
    BxSmartPointer<VoNode> GetNode(unsigned long long id) const;
    /// The identifier of a node: its address.
    static unsigned long long GetNodeID(const VoNode& node) noexcept;

    /// Inserts `child` (with its subtree) as the last child of `parent`.
    /// False when either is null, they are the same node, the child already
    /// has a parent, the parent has a child of that name, or the child is
    /// locked. The child is at once locked as its new parent is.
    Result InsertNode(BxSmartPointer<VoNode> parent, BxSmartPointer<VoNode> child);
    /// Moves the node of a granted write handle under `newParent`. False when
    /// the handle is no write handle on a non-root node, newParent is null,
    /// of another manager, the node itself or one of its descendants, or has
    /// a child of the node's name. The thread's other handles inside the
    /// node's subtree are released (and marked used).
    Result MoveNode(VoDataHandleBase& handle, BxSmartPointer<VoNode> newParent);
    /// Removes the node of a granted write handle (with its subtree) from the
    /// tree. False for a read handle or the root. The thread's handles inside
    /// the subtree, this one included, are released and marked used.
    Result RemoveNode(VoDataHandleBase& handle);
    /// Takes a write lock on the root (waiting at most timeoutMs) and removes
    /// every node but the root. False when the lock was not granted.
    Result Reset(unsigned int timeoutMs);

    /// Grants all pending requests of the calling thread, or none; no waiting.
    Result TryLock() { return TryLockAndWait(0); }
    /// The same, waiting at most timeoutMs (INFINITE waits for ever) for busy nodes.
    Result TryLockAndWait(unsigned int timeoutMs);
    /// The same, also reporting how the attempt ended.
    Result TryLockAndWait(unsigned int timeoutMs, ELockStatus& status);

    /// True when the calling thread holds at least one granted handle.
    bool IsCurrentThreadLocking() const;

    /// Replaces the logger (null restores the default "Core.DataManager" logger).
    void SetLogger(BxSmartPointer<Logging::ILogger> logger);

    /// The tree and the current locks as text (see dumpLocks for the lock lines).
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

protected:
    template <int N>
    friend class VoDataHandleLockOnly;
    friend class VoDataHandleBase;

    /// Registers a new handle: grants it at once when the thread already holds
    /// a suitable lock on its node, otherwise adds it to the thread's requests.
    void requestLock(VoDataHandleBase& handle);
    /// Withdraws a pending request.
    void unrequestLock(VoDataHandleBase& handle);
    /// Releases a granted handle.
    void unlock(VoDataHandleBase& handle);
    /// Releases (and marks used) the thread's granted handles on the handle's
    /// node and below it; the handle itself only with includeThisHandle.
    void unlockHandlesCurrentThread(VoDataHandleBase& handle, bool includeThisHandle);
    /// True for a write handle whose node has a parent.
    bool checkAccessRightsRemove(const VoDataHandleBase& handle) const;
    /// The first node in the subtree of `node` (itself included, pre-order)
    /// whose locks forbid the request, or null. Locks on ancestors are seen
    /// too, since lock counts propagate into the subtree. The caller holds the
    /// manager lock; the walk takes no node locks.
    BxSmartPointer<const VoNode> checkReadWriteLocks(const VoNode* node, bool write) const;
    /// One line per locked node: "- Root/A/B [tid: r(1)/w(0)]...".
    void dumpLocks(BxStreamWriteASCIIT<CStringW>& stream) const;
    /// Makes fresh memory resources for the working lists of lock attempts.
    void initializePlexManagers();

private:
    using HandleSet = BxSet<VoDataHandleBase*>;
    using HandleSetMap = BxMap<std::uint32_t, HandleSet>;
    using Rights = VoDataHandleBase::EAccessRights;

    enum class EAttempt
    {
        eDone,
        eWait
    };

    /// One pass of a lock attempt under the manager lock: eDone with status
    /// and result, or eWait with the unlocked events of the busy nodes.
    EAttempt attemptGrant(std::uint32_t threadId, std::int64_t remaining, ELockStatus& status, bool& result,
                          std::vector<BxEvent>& events);
    void dropRequests(std::uint32_t threadId);
    void moveRequestsToGrants(std::uint32_t threadId);
    /// True for a granted, valid handle of this manager.
    bool ownsGrantedHandle(const VoDataHandleBase& handle) const;
    void countGrant(std::uint32_t threadId, VoDataHandleBase& handle);
    void uncountGrant(std::uint32_t threadId, VoDataHandleBase& handle);
    void notify(void (DataManager::IInterceptorDataManager::*hook)(const DataManager::CContextNode&),
                const BxSmartPointer<VoNode>& node);
    BxSmartPointer<Logging::ILogger> logger() const;
    static void dumpLocks(BxStreamWriteASCIIT<CStringW>& stream, const VoNode& node, const CStringW& path);
    /// checkReadWriteLocks on a node that is there (manager lock held).
    static const VoNode* findBlocker(const VoNode& node, bool write) noexcept;

    BxSmartPointer<VoNode> m_root;

    mutable BxCriticalSection m_loggerLock;  ///< guards m_logger
    BxSmartPointer<Logging::ILogger> m_logger;

    mutable BxCriticalSection m_requestsLock; ///< guards m_requests
    HandleSetMap m_requests;                  ///< thread -> pending handles

    mutable BxCriticalSection m_grantsLock;   ///< guards m_grants
    HandleSetMap m_grants;                    ///< thread -> granted handles

    mutable BxCriticalSection m_lockingThreadsLock;       ///< guards m_lockingThreads
    BxMap<std::uint32_t, std::uint32_t> m_lockingThreads; ///< thread -> number of granted handles

    /// Serialises lock decisions; guards the two memory resources.
    mutable BxCriticalSection m_managerLock;
    std::unique_ptr<std::pmr::unsynchronized_pool_resource> m_handleRightsResource; ///< handle -> rights lists
    std::unique_ptr<std::pmr::unsynchronized_pool_resource> m_nodeRightsResource;   ///< busy node -> rights lists
};
