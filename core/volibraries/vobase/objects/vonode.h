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
// Recursive operations (counters, modification, ApplyRecursive, dump) hold a
// node's lock while they descend, always parent before child. The parent link
// is guarded by the lock whose address is stored beside it (the parent's lock
// while linked, the node's own lock otherwise); a reader takes that lock,
// checks that the stored address did not change meanwhile (else retries), and
// takes a reference to the parent.
//
// Counters: a read or write lock on a node counts on its whole subtree. Each
// node keeps per-thread counts, totals, and an "unlocked" event (manual reset,
// created set) that is reset while the node is locked and set when the lock
// goes; waiting lockers block on it.
//
// Dump: one line per node, children indented below their parent:
//   Root [VoNode]
//    |-- a * [VoNode]
//    |   |-- b [VoDataNodeInt32]
// (" *" marks a modified node; the bracket holds the node's class name.)
#pragma once

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
    struct SReadWriteCount
    {
        std::uint32_t readCount = 0;
        std::uint32_t writeCount = 0;
    };

    /// Per-thread counts, keyed by thread identifier.
    using ThreadManager = BxMap<unsigned int, SReadWriteCount>;
    using Children = BxListEx<BxSmartPointer<VoNode>>;
    using ConstChildren = BxListEx<BxSmartPointer<const VoNode>>;

    /// A node named "__noname" that serializes its leaves and tracks modifications.
    VoNode();
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
    BxSmartPointer<const VoNode> FindChild(const CStringW& name) const;
    /// A snapshot of the children, taken under the node lock.
    Children GetChildren();
    ConstChildren GetChildren() const;
    std::uint32_t GetChildrenCount() const;
    bool HasChildren() const;
    /// The parent (read with the parent-link protocol), or null.
    BxSmartPointer<VoNode> GetParent();
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
    bool IsSerializeLeaves() const noexcept { return m_serializeLeaves; }
    /// Whether the node's data is of the given class or derives from it (false without data type).
    bool IsKindOfData(const BxRTTI& rtti) const;

    /// Calls f on this node and then, in order, on every descendant (pre-order),
    /// holding each node's lock while its subtree is visited. An empty f does nothing.
    void ApplyRecursive(std::function<void(BxSmartPointer<VoNode>)> f);
    void ApplyRecursive(std::function<void(BxSmartPointer<const VoNode>)> f) const;

    /// Writes the tree dump of this subtree (see the top of this file).
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

    /// The registry record, registered as "VoNode".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
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
    /// The per-thread counts; the caller holds the node lock.
    const ThreadManager& getThreadManager() const noexcept { return m_threadManager; }
    /// The event that is set while the node is not locked.
    BxEvent& getUnlockedEvent() noexcept { return m_unlockedEvent; }
    /// Writes this node's line at `level` and then its children's.
    void dump(BxStreamWriteASCIIT<CStringW>& stream, int level) const;

    /// The thread's entry, created when missing (node lock held).
    SReadWriteCount& entryFor(unsigned int threadId);
    /// The thread's entry or null (node lock held).
    SReadWriteCount* findEntry(unsigned int threadId);
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
    /// Guarded by m_lock.
    Children m_children;
    /// Children by name, made once a node has c_childIndexThreshold children so
    /// that FindChild (and with it every insertion, which checks the name) does
    /// not scan long child lists; null below that. Guarded by m_lock.
    std::unique_ptr<std::unordered_map<CStringW, VoNode*>> m_childIndex;
    /// Guarded by the lock that m_parentLock points to.
    BxSmartPointer<VoNode> m_parent;
    /// The lock guarding m_parent: the parent's m_lock while linked, else m_lock.
    std::atomic<BxCriticalSection*> m_parentLock;
    mutable BxCriticalSection m_lock;
    BxEvent m_unlockedEvent{true};
    /// Guarded by m_lock.
    std::uint32_t m_totalRead = 0;
    /// Guarded by m_lock.
    std::uint32_t m_totalWrite = 0;
    /// The entry of m_threadManager used last, and its thread; guarded by m_lock.
    /// (Kept beside the counters: they share the node's hot cache lines.)
    SReadWriteCount* m_lastEntry = nullptr;
    unsigned int m_lastThread = 0;
    /// Guarded by m_lock. Entries are never erased: m_lastEntry points into it.
    ThreadManager m_threadManager;
};
