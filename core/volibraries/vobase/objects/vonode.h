// The element of the application's data tree: a named, reference-counted node
// with an ordered list of children, a guarded link to its parent, a
// modification flag, the data manager that owns the tree, and per-thread read
// and write counters through which the data manager locks whole subtrees.
//
//   BxSmartPointer<VoNode> node(new VoNode(L"settings", true, VoNode::eTMM_Track));
//   node->SetModified(true, false);
//   node->ApplyRecursive([](BxSmartPointer<VoNode> n) { use(n->GetName()); });
//   BxStreamWriteASCIIStringT<CStringW> text;
//   node->dump(text);                          // "settings * [VoNode]\n"
//
// Nodes live in BxSmartPointer: ApplyRecursive and the tree operations hand
// out smart pointers to the node itself. A data manager (a friend) links nodes
// into its tree and locks subtrees through the protected and private
// interface below; a node outside a data tree has no parent and no manager.
//
// Locks: each node's critical section (m_lock) guards its children list, its
// counters and thread map, its name and the data manager pointer's writers.
// The children list of a managed node changes only under its data manager's
// lock as well (the tree edits of the manager), so that the manager's lock
// check can walk a subtree without node locks.
// Recursive operations (counters, modification, ApplyRecursive, dump) hold a
// node's lock while they descend, always parent before child. The parent link
// is guarded by the lock whose address is stored beside it (the parent's lock
// while linked, the node's own lock otherwise); a reader takes that lock,
// checks that the stored address did not change meanwhile (else retries), and
// takes a reference to the parent.
//
// Counters: a read or write lock on a node counts on its whole subtree. Each
// node keeps per-thread counts (VoNodeThreadCounts: inline entries for the
// first few threads, a map only beyond them), totals, and an "unlocked" event
// (manual reset, created set) that is reset while the node is locked and set
// when the lock goes; waiting lockers block on it. The event's state is kept
// as a flag beside the counters, and the event object itself is made the
// first time a locker asks for it (getUnlockedEvent): locking a subtree that
// nobody waits for touches no event. The lock, the totals, the children list,
// the flag and the first thread entries share two cache lines.
//
// Dump: one line per node, children indented below their parent:
//   Root [VoNode]
//    |-- a * [VoNode]
//    |   |-- b [VoDataNodeInt32]
// (" *" marks a modified node; the bracket holds the node's class name.)
#pragma once

#include <vobase/objects/vonodethreadcounts.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxiclassname.h>
#include <bxbase/bxidumpable.h>
#include <bxbase/bxreferencecounter.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/iobject.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <typeinfo>
#include <unordered_map>

class VoDataManager;

/// The element of the application's data tree: a named, reference-counted node with an ordered list of children,
/// a guarded link to its parent, a modification flag, the data manager that owns the tree, and per-thread read
/// and write counters through which the data manager locks whole subtrees.
class VOBASE_API VoNode : public IReferenceCounted,
                          public BxIClassName<0, CStringW>,
                          public INonCopyable,
                          public BxIDumpable<1>,
                          public IObject
{
public:
    /// Whether the node tracks modifications: 0 tracks, any other value does not.
    enum ETrackModificationMode : int
    {
        eTMM_Track = 0,
        eTMM_DontTrack = 1
    };

    /// The read and write counts of one thread on one node.
    using SReadWriteCount = VoNodeThreadCounts::SReadWriteCount;

    /// Per-thread counts, keyed by thread identifier.
    using ThreadManager = VoNodeThreadCounts;
    /// A snapshot of the children, in order (GetChildren).
    using Children = BxListEx<BxSmartPointer<VoNode>>;
    /// A read-only snapshot of the children, in order (GetChildren const).
    using ConstChildren = BxListEx<BxSmartPointer<const VoNode>>;

    /// A node named "__noname" that serializes its leaves and tracks modifications.
    VoNode();
    /// An unmanaged node without parent or children, named `name` (null gives
    /// the empty name). `serializeLeaves` is kept for the tree's serializers
    /// (IsSerializeLeaves); `mode` says whether modifications are tracked.
    VoNode(const wchar_t* name, bool serializeLeaves, ETrackModificationMode mode);
    /// Releases the children, clearing their parent links under the node lock.
    ~VoNode() override;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// False for a plain node; typed data nodes are serializable.
    virtual bool IsSerializable() const { return false; }
    /// Creates the node's fixed children; nothing for a plain node.
    virtual void CreateChildNodes() {}
    /// Creates the node's data by registered class name; nothing for a plain node.
    virtual void CreateData(const CStringW& className) {}
    /// The type of the node's data; typeid(void) when it carries none.
    virtual const std::type_info& GetDataTypeInfo() const { return typeid(void); }

    /// The first child with exactly this name, or null.
    BxSmartPointer<VoNode> FindChild(const CStringW& name);
    /// The same, read-only.
    BxSmartPointer<const VoNode> FindChild(const CStringW& name) const;
    /// A snapshot of the children, taken under the node lock.
    Children GetChildren();
    /// The same, read-only.
    ConstChildren GetChildren() const;
    /// The number of children (read under the node lock).
    std::uint32_t GetChildrenCount() const;
    /// True when the node has at least one child.
    bool HasChildren() const;
    /// The parent (read with the parent-link protocol), or null.
    BxSmartPointer<VoNode> GetParent();
    /// The same, read-only.
    BxSmartPointer<const VoNode> GetParent() const;

    /// The data manager that owns the tree, or null.
    VoDataManager* GetDataManager() const noexcept { return m_dataManager.load(std::memory_order_acquire); }
    /// True when a data manager owns the node.
    bool IsManaged() const noexcept { return GetDataManager() != nullptr; }
    /// True when `ancestor` is a proper ancestor of this node.
    bool IsDescendantOf(BxSmartPointer<const VoNode> ancestor) const;

    /// isModified(), or with `recursive` also whether any descendant is modified.
    bool IsModified(bool recursive) const;
    /// Sets the modified flag (virtual setModified), on the subtree with `recursive`.
    void SetModified(bool modified, bool recursive);

    /// Renames the node; a managed node throws BxException at "VoNode::SetName".
    void SetName(const CStringW& name);
    /// The serialize-leaves flag given at construction (true by default); the
    /// node itself does not act on it.
    bool IsSerializeLeaves() const noexcept { return m_serializeLeaves; }
    /// Whether the node's data is of the given class or derives from it (false without data type).
    bool IsKindOfData(const BxRTTI& rtti) const;

    /// Calls f on this node and then, in order, on every descendant (pre-order),
    /// holding each node's lock while its subtree is visited. An empty f does nothing.
    void ApplyRecursive(std::function<void(BxSmartPointer<VoNode>)> f);
    /// The same on a const node: f sees read-only nodes.
    void ApplyRecursive(std::function<void(BxSmartPointer<const VoNode>)> f) const;

    /// Writes the tree dump of this subtree (see the top of this file).
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

    /// The registry record, registered as "VoNode".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new, unmanaged VoNode named "__noname".
    static std::unique_ptr<IObject> CreateByFactory();

protected:
    /// The registry record of the node's data class; null for a node without data.
    virtual const BxRTTI* getRTTIData() const { return nullptr; }
    /// True when the mode is 0 and the modified flag is set.
    virtual bool isModified() const;
    /// Stores the flag and, with `recursive`, sets it on every child under the node lock.
    virtual void setModified(bool modified, bool recursive);
    /// True when the mode is 0.
    virtual bool isTrackModifications() const;

    /// Links this node to `parent` (null unlinks it) under the link's current guard.
    void setParent(const BxSmartPointer<VoNode>& parent);
    /// Appends `child` to the children list (the caller links the child's parent).
    void addChild(BxSmartPointer<VoNode>& child);
    /// Leaves the parent; with `clearDataManager` the subtree loses its manager,
    /// with `withChildren` the children are unlinked too (unlinkChildren).
    void unlink(bool withChildren, bool clearDataManager);
    /// Under the node lock: clears every child's parent link, unlinks the
    /// child's own children and removes the child from the list.
    void unlinkChildren();
    /// Sets the manager on every descendant (each under its own lock), then on this node.
    void setDataManager(VoDataManager* manager);
    /// Copies the counters of `from` (totals and every thread entry) and then
    /// applies the same to every child with this node as the source.
    void adaptCounters(const VoNode& from);
    /// True when `ancestor` is a proper ancestor of this node.
    bool isDescendantOf(const VoNode* ancestor) const;
    /// The node lock.
    BxCriticalSection& getLock() const noexcept { return m_lock; }

private:
    friend class VoDataManager;
    /// Gives the unit tests the data manager's view of a node.
    friend class VoNodeTestAccess;

    void incrementReadCounter(unsigned int threadId);
    void incrementWriteCounter(unsigned int threadId);
    void decrementReadCounter(unsigned int threadId);
    void decrementWriteCounter(unsigned int threadId);
    /// The calling thread's entry gets (read, write), every other entry 0; the
    /// totals become (read, write); the same on the whole subtree.
    void resetReadWriteCounters(std::uint32_t read, std::uint32_t write);
    bool isLocked() const;
    bool isReadLocked() const;
    bool isWriteLocked() const;
    /// The totals, readable with or without the node lock.
    std::uint32_t totalRead() const noexcept { return m_totalRead.load(std::memory_order_relaxed); }
    std::uint32_t totalWrite() const noexcept { return m_totalWrite.load(std::memory_order_relaxed); }
    /// Sets the totals (node lock held).
    void setTotals(std::uint32_t read, std::uint32_t write) noexcept
    {
        m_totalRead.store(read, std::memory_order_relaxed);
        m_totalWrite.store(write, std::memory_order_relaxed);
    }
    /// The per-thread counts; the caller holds the node lock.
    const ThreadManager& getThreadManager() const noexcept { return m_threadManager; }
    /// The event that is set while the node is not locked; made on the first
    /// call (under the node lock) in the state the counters gave it so far.
    BxEvent& getUnlockedEvent();
    /// Writes this node's line at `level` and then its children's.
    void dump(BxStreamWriteASCIIT<CStringW>& stream, int level) const;

    /// Asks the memory system early for what a counter pass will touch on
    /// every child (the lock line, and with `counters` the thread entries'
    /// line), so that the children's cache misses overlap instead of each
    /// waiting behind the previous child's lock (node lock held).
    void prefetchChildren(bool counters) const noexcept
    {
        for (const BxSmartPointer<VoNode>& child : m_children) {
            __builtin_prefetch(&child->m_lock, 1);
            if (counters)
                __builtin_prefetch(&child->m_threadManager, 1);
        }
    }
    /// Called before child `index` is visited: fetches the next child's
    /// children list meanwhile (through its hint, which needs no lock).
    void prefetchNextChildList(std::size_t index) const noexcept
    {
        if (index + 1 < m_children.size())
            if (const char* list = m_children[index + 1]->m_childListHint.load(std::memory_order_relaxed)) {
                __builtin_prefetch(list);
                __builtin_prefetch(list + 64);
            }
    }
    /// Records where the children list now lies (node lock held).
    void updateChildListHint() noexcept
    {
        m_childListHint.store(m_children.empty() ? nullptr : reinterpret_cast<const char*>(m_children.data()),
                              std::memory_order_relaxed);
    }
    /// Records the unlocked event's new state, and sets or resets the event
    /// when it exists (node lock held).
    void signalUnlocked(bool unlocked)
    {
        m_unlocked = unlocked;
        if (m_unlockedEvent)
            unlocked ? m_unlockedEvent->Set() : m_unlockedEvent->Reset();
    }
    /// Takes a reference to the parent with the parent-link protocol.
    BxSmartPointer<VoNode> parentReference() const;
    /// Locks the parent link's current guard; returns the lock taken.
    BxCriticalSection& lockParentLink() const;
    void applyRecursive(const std::function<void(BxSmartPointer<VoNode>)>& f);
    void applyRecursive(const std::function<void(BxSmartPointer<const VoNode>)>& f) const;

    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    const bool m_serializeLeaves;
    const ETrackModificationMode m_trackModificationMode;
    std::atomic<bool> m_modified{false};
    /// Written under the node lock; read without it.
    std::atomic<VoDataManager*> m_dataManager{nullptr};
    /// Children by name, made once a node has c_childIndexThreshold children so
    /// that FindChild (and with it every insertion, which checks the name) does
    /// not scan long child lists; null below that. Guarded by m_lock.
    std::unique_ptr<std::unordered_map<CStringW, VoNode*>> m_childIndex;
    /// Guarded by the lock that m_parentLock points to.
    BxSmartPointer<VoNode> m_parent;
    /// The lock guarding m_parent: the parent's m_lock while linked, else m_lock.
    std::atomic<BxCriticalSection*> m_parentLock;

    // What locking a subtree touches on every node, in two cache lines: the
    // lock, the totals and the children list's bounds in the first; the list's
    // capacity, the unlocked flag and event and the first thread entries in
    // the second.
    alignas(64) mutable BxCriticalSection m_lock;
    /// Written under m_lock. The data manager's lock check reads them without
    /// it (see VoDataManager::checkReadWriteLocks), hence atomic; relaxed
    /// loads and stores, plain moves on x86.
    std::atomic<std::uint32_t> m_totalRead{0};
    std::atomic<std::uint32_t> m_totalWrite{0};
    /// Guarded by m_lock; changed only while the data manager's lock is held
    /// too once the node is managed, so that the lock check can walk it.
    Children m_children;
    /// The unlocked event, made by getUnlockedEvent; null until then. Guarded by m_lock.
    std::unique_ptr<BxEvent> m_unlockedEvent;
    /// Where m_children keeps its elements (null while empty): written under
    /// m_lock, read by the parent's passes only to prefetch, never to follow.
    std::atomic<const char*> m_childListHint{nullptr};
    /// The unlocked event's state (set while not locked), kept whether or not
    /// the event exists. Guarded by m_lock.
    bool m_unlocked = true;
    /// Guarded by m_lock.
    VoNodeThreadCounts m_threadManager;
};
