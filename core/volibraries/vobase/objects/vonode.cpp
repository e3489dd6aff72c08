#include <vobase/objects/vonode.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/threading/bxthreadapi.h>

#include <algorithm>
#include <mutex>

BX_IMPLEMENT_RTTI(VoNode)

namespace {

constexpr std::size_t c_childBlock = 10;
/// Child lists at least this long get a name index.
constexpr std::size_t c_childIndexThreshold = 32;

/// Adds delta to a total that only the node lock's holder writes; the new value.
std::uint32_t addTo(std::atomic<std::uint32_t>& total, std::int32_t delta) noexcept
{
    const std::uint32_t value = total.load(std::memory_order_relaxed) + static_cast<std::uint32_t>(delta);
    total.store(value, std::memory_order_relaxed);
    return value;
}

}  // namespace

VoNode::VoNode() : VoNode(L"__noname", true, eTMM_Track) {}

VoNode::VoNode(const wchar_t* name, bool serializeLeaves, ETrackModificationMode mode)
    : BxIClassName<0, CStringW>(name ? name : L""),
      m_serializeLeaves(serializeLeaves),
      m_trackModificationMode(mode),
      m_parentLock(&m_lock)
{
}

VoNode::~VoNode()
{
    BxCriticalSectionLocker lock(m_lock);
    for (BxSmartPointer<VoNode>& child : m_children) {
        // A child that still names this node as parent cannot own a reference
        // to it any more (this node is being destroyed): drop the link uncounted.
        if (child->m_parent.get() == this) {
            (void)child->m_parent.release();
            child->m_parentLock.store(&child->m_lock, std::memory_order_release);
        }
    }
    m_children.clear();
    updateChildListHint();
    m_childIndex.reset();
}

// --- children and parent ---------------------------------------------------

BxSmartPointer<VoNode> VoNode::FindChild(const CStringW& name)
{
    BxCriticalSectionLocker lock(m_lock);
    if (m_childIndex) {
        const auto entry = m_childIndex->find(name);
        return entry == m_childIndex->end() ? nullptr : BxSmartPointer<VoNode>(entry->second);
    }
    for (const BxSmartPointer<VoNode>& child : m_children)
        if (child->GetName() == name)
            return child;
    return nullptr;
}

BxSmartPointer<const VoNode> VoNode::FindChild(const CStringW& name) const
{
    return const_cast<VoNode*>(this)->FindChild(name);
}

VoNode::Children VoNode::GetChildren()
{
    BxCriticalSectionLocker lock(m_lock);
    return m_children;
}

VoNode::ConstChildren VoNode::GetChildren() const
{
    BxCriticalSectionLocker lock(m_lock);
    return ConstChildren(m_children.begin(), m_children.end());
}

std::uint32_t VoNode::GetChildrenCount() const
{
    BxCriticalSectionLocker lock(m_lock);
    return static_cast<std::uint32_t>(m_children.size());
}

bool VoNode::HasChildren() const { return GetChildrenCount() != 0; }

BxCriticalSection& VoNode::lockParentLink() const
{
    for (;;) {
        BxCriticalSection* guard = m_parentLock.load(std::memory_order_acquire);
        guard->Lock();
        if (m_parentLock.load(std::memory_order_acquire) == guard)
            return *guard;
        guard->Unlock();  // the link moved to another guard meanwhile
    }
}

BxSmartPointer<VoNode> VoNode::parentReference() const
{
    BxCriticalSection& guard = lockParentLink();
    BxSmartPointer<VoNode> parent = m_parent;
    guard.Unlock();
    return parent;
}

BxSmartPointer<VoNode> VoNode::GetParent() { return parentReference(); }
BxSmartPointer<const VoNode> VoNode::GetParent() const { return parentReference(); }

void VoNode::setParent(const BxSmartPointer<VoNode>& parent)
{
    BxSmartPointer<VoNode> previous;  // released after the guard, never under it
    BxCriticalSection& guard = lockParentLink();
    previous = std::exchange(m_parent, parent);
    m_parentLock.store(parent ? &parent->m_lock : &m_lock, std::memory_order_release);
    guard.Unlock();
}

void VoNode::addChild(BxSmartPointer<VoNode>& child)
{
    BxCriticalSectionLocker lock(m_lock);
    if (m_children.capacity() == m_children.size())
        m_children.reserve(m_children.size() + std::max(c_childBlock, m_children.size() / 2));
    m_children.push_back(child);
    updateChildListHint();
    if (m_childIndex)
        m_childIndex->emplace(child->GetName(), child.get());
    else if (m_children.size() >= c_childIndexThreshold) {
        m_childIndex = std::make_unique<std::unordered_map<CStringW, VoNode*>>();
        m_childIndex->reserve(m_children.size() * 2);
        for (const BxSmartPointer<VoNode>& each : m_children)
            m_childIndex->emplace(each->GetName(), each.get());
    }
}

void VoNode::unlink(bool withChildren, bool clearDataManager)
{
    BxSmartPointer<VoNode> self;  // the parent's list may hold the last reference
    if (BxSmartPointer<VoNode> parent = parentReference()) {
        self = this;
        BxSmartPointer<VoNode> previous;
        {
            BxCriticalSectionLocker lock(parent->m_lock);
            auto& siblings = parent->m_children;
            siblings.erase(std::remove(siblings.begin(), siblings.end(), self), siblings.end());
            parent->updateChildListHint();
            if (parent->m_childIndex) {
                const auto entry = parent->m_childIndex->find(GetName());
                if (entry != parent->m_childIndex->end() && entry->second == this)
                    parent->m_childIndex->erase(entry);
            }
            if (m_parent == parent) {
                previous = std::move(m_parent);
                m_parentLock.store(&m_lock, std::memory_order_release);
            }
        }
    }
    if (clearDataManager)
        setDataManager(nullptr);
    if (withChildren)
        unlinkChildren();
}

void VoNode::unlinkChildren()
{
    BxCriticalSectionLocker lock(m_lock);
    // This node's lock guards every child's parent link.
    Children children;
    children.swap(m_children);
    updateChildListHint();
    m_childIndex.reset();
    for (BxSmartPointer<VoNode>& child : children) {
        if (child->m_parent.get() == this) {
            child->m_parentLock.store(&child->m_lock, std::memory_order_release);
            child->m_parent.reset();  // this node's caller still holds a reference to it
        }
        child->unlinkChildren();
    }
}

void VoNode::setDataManager(VoDataManager* manager)
{
    BxCriticalSectionLocker lock(m_lock);
    for (const BxSmartPointer<VoNode>& child : m_children)
        child->setDataManager(manager);
    m_dataManager.store(manager, std::memory_order_release);
}

bool VoNode::isDescendantOf(const VoNode* ancestor) const
{
    if (!ancestor)
        return false;
    for (BxSmartPointer<const VoNode> node = GetParent(); node; node = node->GetParent())
        if (node.get() == ancestor)
            return true;
    return false;
}

bool VoNode::IsDescendantOf(BxSmartPointer<const VoNode> ancestor) const { return isDescendantOf(ancestor.get()); }

// --- names, modification, data type ----------------------------------------

void VoNode::SetName(const CStringW& name)
{
    if (IsManaged())
        BX_THROW(BxException, "VoNode::SetName", L"node \"" + GetName() + L"\" is in a data tree");
    // The parent-link guard is the parent's lock while there is a parent: it
    // also guards the parent's name index, which must follow the new name.
    BxCriticalSection& guard = lockParentLink();
    VoNode* parent = m_parent.get();
    if (parent != nullptr && parent->m_childIndex) {
        const auto entry = parent->m_childIndex->find(GetName());
        if (entry != parent->m_childIndex->end() && entry->second == this)
            parent->m_childIndex->erase(entry);
        parent->m_childIndex->emplace(name, this);
    }
    {
        BxCriticalSectionLocker lock(m_lock);
        setName(name);
    }
    guard.Unlock();
}

bool VoNode::isTrackModifications() const { return m_trackModificationMode == eTMM_Track; }

bool VoNode::isModified() const { return isTrackModifications() && m_modified.load(std::memory_order_relaxed); }

void VoNode::setModified(bool modified, bool recursive)
{
    m_modified.store(modified, std::memory_order_relaxed);
    if (!recursive)
        return;
    BxCriticalSectionLocker lock(m_lock);
    for (const BxSmartPointer<VoNode>& child : m_children)
        child->setModified(modified, recursive);
}

void VoNode::SetModified(bool modified, bool recursive) { setModified(modified, recursive); }

bool VoNode::IsModified(bool recursive) const
{
    if (!recursive || isModified())
        return isModified();
    BxCriticalSectionLocker lock(m_lock);
    for (const BxSmartPointer<VoNode>& child : m_children)
        if (child->IsModified(true))
            return true;
    return false;
}

bool VoNode::IsKindOfData(const BxRTTI& rtti) const
{
    const BxRTTI* data = getRTTIData();
    return data && data->IsKindOf(rtti);
}

// --- counters ----------------------------------------------------------------

BxEvent& VoNode::getUnlockedEvent()
{
    BxCriticalSectionLocker lock(m_lock);
    if (!m_unlockedEvent)
        m_unlockedEvent = std::make_unique<BxEvent>(m_unlocked);
    return *m_unlockedEvent;
}

void VoNode::incrementReadCounter(unsigned int threadId)
{
    BxCriticalSectionLocker lock(m_lock);
    prefetchChildren(true);
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        prefetchNextChildList(i);
        m_children[i]->incrementReadCounter(threadId);
    }
    ++m_threadManager.Get(threadId).readCount;
    if (addTo(m_totalRead, 1) == 1 && totalWrite() == 0)
        signalUnlocked(false);
}

void VoNode::incrementWriteCounter(unsigned int threadId)
{
    BxCriticalSectionLocker lock(m_lock);
    prefetchChildren(true);
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        prefetchNextChildList(i);
        m_children[i]->incrementWriteCounter(threadId);
    }
    ++m_threadManager.Get(threadId).writeCount;
    if (addTo(m_totalWrite, 1) == 1)
        signalUnlocked(false);
}

// The entry found before the descent stays valid: the descent changes only the
// children's counts.
void VoNode::decrementReadCounter(unsigned int threadId)
{
    BxCriticalSectionLocker lock(m_lock);
    SReadWriteCount* entry = m_threadManager.Find(threadId);
    if (!entry || entry->readCount == 0)
        return;
    prefetchChildren(true);
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        prefetchNextChildList(i);
        m_children[i]->decrementReadCounter(threadId);
    }
    --entry->readCount;
    m_threadManager.Trim(threadId, *entry);
    if (addTo(m_totalRead, -1) == 0)
        signalUnlocked(true);
}

void VoNode::decrementWriteCounter(unsigned int threadId)
{
    BxCriticalSectionLocker lock(m_lock);
    SReadWriteCount* entry = m_threadManager.Find(threadId);
    if (!entry || entry->writeCount == 0)
        return;
    prefetchChildren(true);
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        prefetchNextChildList(i);
        m_children[i]->decrementWriteCounter(threadId);
    }
    --entry->writeCount;
    m_threadManager.Trim(threadId, *entry);
    if (addTo(m_totalWrite, -1) == 0)
        signalUnlocked(true);
}

void VoNode::adaptCounters(const VoNode& from)
{
    std::scoped_lock lock(from.m_lock, m_lock);
    setTotals(from.totalRead(), from.totalWrite());
    if (&from != this)
        from.m_threadManager.ForEach([this](std::uint32_t thread, const SReadWriteCount& counts) {
            SReadWriteCount& entry = m_threadManager.Get(thread);
            entry = counts;
            m_threadManager.Trim(thread, entry);
        });
    signalUnlocked(totalRead() == 0 && totalWrite() == 0);
    for (const BxSmartPointer<VoNode>& child : m_children)
        child->adaptCounters(*this);
}

void VoNode::resetReadWriteCounters(std::uint32_t read, std::uint32_t write)
{
    const unsigned int caller = GetCurrentThreadId();
    BxCriticalSectionLocker lock(m_lock);
    // Every other thread's entry drops to zero, which is the same as no entry.
    m_threadManager.Clear();
    if (read != 0 || write != 0)
        m_threadManager.Get(caller) = SReadWriteCount{read, write};
    setTotals(read, write);
    for (const BxSmartPointer<VoNode>& child : m_children)
        child->resetReadWriteCounters(read, write);
    signalUnlocked(read == 0 && write == 0);
}

bool VoNode::isLocked() const
{
    BxCriticalSectionLocker lock(m_lock);
    return totalRead() > 0 || totalWrite() > 0;
}

bool VoNode::isReadLocked() const
{
    BxCriticalSectionLocker lock(m_lock);
    return totalRead() > 0;
}

bool VoNode::isWriteLocked() const
{
    BxCriticalSectionLocker lock(m_lock);
    return totalWrite() > 0;
}

// --- traversal and dump -----------------------------------------------------

void VoNode::ApplyRecursive(std::function<void(BxSmartPointer<VoNode>)> f)
{
    if (f)
        applyRecursive(f);
}

void VoNode::ApplyRecursive(std::function<void(BxSmartPointer<const VoNode>)> f) const
{
    if (f)
        applyRecursive(f);
}

void VoNode::applyRecursive(const std::function<void(BxSmartPointer<VoNode>)>& f)
{
    BxCriticalSectionLocker lock(m_lock);
    f(BxSmartPointer<VoNode>(this));
    // By index: f may add children to a node it visits (the lock is recursive).
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        const BxSmartPointer<VoNode> child = m_children[i];  // f may also remove it
        child->applyRecursive(f);
    }
}

void VoNode::applyRecursive(const std::function<void(BxSmartPointer<const VoNode>)>& f) const
{
    BxCriticalSectionLocker lock(m_lock);
    f(BxSmartPointer<const VoNode>(this));
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        const BxSmartPointer<const VoNode> child = m_children[i];
        child->applyRecursive(f);
    }
}

void VoNode::dump(BxStreamWriteASCIIT<CStringW>& stream, int level) const
{
    BxCriticalSectionLocker lock(m_lock);
    if (level > 0) {
        for (int i = 0; i < level - 1; ++i)
            stream << L" |  ";
        stream << L" |-- ";
    }
    stream << GetName();
    if (isModified())
        stream << L" *";
    stream << L" [" << GetRTTI().GetName() << L"]\n";
    for (const BxSmartPointer<VoNode>& child : m_children)
        child->dump(stream, level + 1);
}

void VoNode::dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    BxStreamWriteASCIIStringT<CStringW> text;
    dump(text, 0);
    stream << text.GetString();
}
