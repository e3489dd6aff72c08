// The data manager's view of a node, for the unit tests (VoNode names this
// class a friend): linking, unlinking and the per-thread counters.
#pragma once

#include <vobase/objects/vonode.h>

#include <bxbase/threading/bxthreadapi.h>

class VoNodeTestAccess
{
public:
    using Node = BxSmartPointer<VoNode>;

    static unsigned int ThisThread() { return GetCurrentThreadId(); }

    /// Appends child to parent and links it back, as inserting into a tree does.
    static void Link(const Node& parent, Node child)
    {
        child->setParent(parent);
        parent->addChild(child);
    }
    static void SetParent(const Node& node, const Node& parent) { node->setParent(parent); }
    static void Unlink(const Node& node, bool withChildren, bool clearDataManager)
    {
        node->unlink(withChildren, clearDataManager);
    }
    static void UnlinkRaw(VoNode* node, bool withChildren, bool clearDataManager)
    {
        node->unlink(withChildren, clearDataManager);
    }
    /// Breaks every parent link below node, so that the tree can be freed.
    static void Release(const Node& node) { node->unlinkChildren(); }
    static void SetDataManager(const Node& node, VoDataManager* manager) { node->setDataManager(manager); }
    static void AdaptCounters(const Node& node, const VoNode& from) { node->adaptCounters(from); }

    static void IncrementRead(const Node& node, unsigned int thread) { node->incrementReadCounter(thread); }
    static void IncrementWrite(const Node& node, unsigned int thread) { node->incrementWriteCounter(thread); }
    static void DecrementRead(const Node& node, unsigned int thread) { node->decrementReadCounter(thread); }
    static void DecrementWrite(const Node& node, unsigned int thread) { node->decrementWriteCounter(thread); }
    static void Reset(const Node& node, std::uint32_t read, std::uint32_t write)
    {
        node->resetReadWriteCounters(read, write);
    }

    static bool IsLocked(const Node& node) { return node->isLocked(); }
    static bool IsReadLocked(const Node& node) { return node->isReadLocked(); }
    static bool IsWriteLocked(const Node& node) { return node->isWriteLocked(); }
    static std::uint32_t TotalRead(const Node& node) { return Counts(node).first; }
    static std::uint32_t TotalWrite(const Node& node) { return Counts(node).second; }
    /// The thread's (read, write) entry; (0, 0) when it has none.
    static VoNode::SReadWriteCount Entry(const Node& node, unsigned int thread)
    {
        BxCriticalSectionLocker lock(node->getLock());
        const VoNode::SReadWriteCount* found = node->getThreadManager().Find(thread);
        return found ? *found : VoNode::SReadWriteCount{};
    }
    /// Entries of the node's thread counts (zero ones included) and whether
    /// they overflowed into the map.
    static std::size_t EntryCount(const Node& node)
    {
        BxCriticalSectionLocker lock(node->getLock());
        return node->getThreadManager().Size();
    }
    static bool HasOverflow(const Node& node)
    {
        BxCriticalSectionLocker lock(node->getLock());
        return node->getThreadManager().HasOverflow();
    }
    static BxEvent& UnlockedEvent(const Node& node) { return node->getUnlockedEvent(); }
    static void Dump(const Node& node, BxStreamWriteASCIIT<CStringW>& stream, int level) { node->dump(stream, level); }

private:
    static std::pair<std::uint32_t, std::uint32_t> Counts(const Node& node)
    {
        BxCriticalSectionLocker lock(node->getLock());
        return {node->totalRead(), node->totalWrite()};
    }
};
