#include <vobase/data/vodatamanager.h>

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanagerlist.h>
#include <vobase/data/vodatatrace.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/diagnostics/bxtracehooks.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxnohelpscope.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxtimer.h>

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// A waiting attempt watches at most this many busy nodes.
constexpr std::size_t c_maxWaitEvents = 10;
/// Elements per block of the working lists' memory resources.
constexpr std::size_t c_plexBlockSize = 100;
constexpr std::size_t c_dashLineLength = 68;

/// The lock bookkeeping of a node is not part of its value: read handles hold
/// const nodes, yet granting them changes the node's counters.
VoNode* bookkeeping(const VoNode* node) noexcept { return const_cast<VoNode*>(node); }

BxSmartPointer<Logging::ILogger> defaultLogger()
{
    return BxSmartPointer<Logging::ILogger>(new Logging::CLogger(L"Core.DataManager"));
}

}  // namespace

VoDataManager::VoDataManager() : m_root(new VoNode(L"Root", true, VoNode::eTMM_Track)), m_logger(defaultLogger())
{
    m_root->setDataManager(this);
    initializePlexManagers();
    DataManagerListAdd(*this);
}

VoDataManager::~VoDataManager()
{
    DataManagerListRemove(*this);
    // Nodes that outlive the manager (held elsewhere) must not name it any
    // more. Parent and child hold references to each other, so the tree is
    // taken apart: otherwise no node of it would ever be destroyed.
    m_root->setDataManager(nullptr);
    m_root->unlinkChildren();
}

void VoDataManager::initializePlexManagers()
{
    const std::pmr::pool_options options{c_plexBlockSize, 0};
    BxCriticalSectionLocker locker(m_managerLock);
    m_handleRightsResource = std::make_unique<std::pmr::unsynchronized_pool_resource>(options);
    m_nodeRightsResource = std::make_unique<std::pmr::unsynchronized_pool_resource>(options);
}

// --- tree access -----------------------------------------------------------

BxSmartPointer<VoNode> VoDataManager::GetRootNode() { return m_root; }
BxSmartPointer<const VoNode> VoDataManager::GetRootNode() const { return m_root; }
BxSmartPointer<VoNode> VoDataManager::FindChild(const CStringW& name) { return m_root->FindChild(name); }

unsigned long long VoDataManager::GetNodeID(const VoNode& node) noexcept
{
    return static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&node));
}

BxSmartPointer<VoNode> VoDataManager::GetNode(unsigned long long id) const
{
    BxSmartPointer<VoNode> found;
    m_root->ApplyRecursive([&](BxSmartPointer<VoNode> node) {
        if (!found && GetNodeID(*node) == id)
            found = std::move(node);
    });
    return found;
}

// --- requests and grants -----------------------------------------------------

void VoDataManager::requestLock(VoDataHandleBase& handle)
{
    const VoNode* node = handle.getNode();
    if (!node) {
        handle.setAccessStatus(true);
        return;
    }
    const std::uint32_t threadId = handle.getThreadID();
    const bool write = handle.getAccessRights() == VoDataHandleBase::eAR_Write;
    bool reentry = false;
    {
        BxCriticalSectionLocker nodeLocker(node->m_lock);
        if (const VoNode::SReadWriteCount* counts = node->m_threadManager.Find(threadId))
            reentry = write ? counts->writeCount > 0 : counts->readCount > 0 || counts->writeCount > 0;
        // Re-entry: the thread already holds a lock that covers this one.
        if (reentry && write)
            bookkeeping(node)->incrementWriteCounter(threadId);
        else if (reentry)
            bookkeeping(node)->incrementReadCounter(threadId);
    }
    if (reentry) {
        // Only this thread's bookkeeping changes, so it need not be under the node lock.
        handle.setAccessStatus(true);
        countGrant(threadId, handle);
        if (BxTraceHooks::IsOn())
            VoDataTrace::RecordRequest(handle);
        return;
    }
    BxCriticalSectionLocker locker(m_requestsLock);
    auto& requests = m_requests[threadId];
    if (requests.empty())
        BxNoHelpScope::Raise(threadId);  // a thread with locks or requests never runs others' tasks in a wait
    requests.insert(&handle);
    if (BxTraceHooks::IsOn())
        VoDataTrace::RecordRequest(handle);
}

void VoDataManager::unrequestLock(VoDataHandleBase& handle)
{
    BxCriticalSectionLocker locker(m_requestsLock);
    const auto entry = m_requests.find(handle.getThreadID());
    if (entry == m_requests.end())
        return;
    if (BxTraceHooks::IsOn())
        VoDataTrace::RecordWithdraw(handle);
    entry->second.erase(&handle);
    if (entry->second.empty()) {
        m_requests.erase(entry);
        BxNoHelpScope::Lower(handle.getThreadID());
    }
}

void VoDataManager::dropRequests(std::uint32_t threadId)
{
    BxCriticalSectionLocker locker(m_requestsLock);
    if (BxTraceHooks::IsOn())
        VoDataTrace::RecordWithdraw(m_requests, threadId);
    if (m_requests.erase(threadId) != 0)
        BxNoHelpScope::Lower(threadId);
}

void VoDataManager::countGrant(std::uint32_t threadId, VoDataHandleBase& handle)
{
    {
        BxCriticalSectionLocker locker(m_grantsLock);
        m_grants[threadId].insert(&handle);
    }
    BxCriticalSectionLocker locker(m_lockingThreadsLock);
    if (++m_lockingThreads[threadId] == 1)
        BxNoHelpScope::Raise(threadId);
}

void VoDataManager::uncountGrant(std::uint32_t threadId, VoDataHandleBase& handle)
{
    // The map locks are never nested: each is taken on its own.
    bool lastGrant = false;
    {
        BxCriticalSectionLocker locker(m_lockingThreadsLock);
        const auto locking = m_lockingThreads.find(threadId);
        if (locking != m_lockingThreads.end() && --locking->second == 0) {
            m_lockingThreads.erase(locking);
            BxNoHelpScope::Lower(threadId);
            lastGrant = true;
        }
    }
    BxCriticalSectionLocker locker(m_grantsLock);
    const auto grants = m_grants.find(threadId);
    if (grants == m_grants.end())
        return;
    grants->second.erase(&handle);
    if (lastGrant)
        m_grants.erase(grants);
}

bool VoDataManager::IsCurrentThreadLocking() const
{
    BxCriticalSectionLocker locker(m_lockingThreadsLock);
    const auto entry = m_lockingThreads.find(GetCurrentThreadId());
    return entry != m_lockingThreads.end() && entry->second > 0;
}

// Called under the manager lock only, which is what lets the walk go without
// node locks: every change of a managed node's children list holds the manager
// lock too, and a node can start to block only under it (grants and tree edits;
// a re-entry raises only totals of nodes that are write-locked already or whose
// read locks a write request would meet anyway). Each total is read once; one
// that drops meanwhile makes at worst a blocker whose event is already set, and
// the waiting attempt checks again.
BxSmartPointer<const VoNode> VoDataManager::checkReadWriteLocks(const VoNode* node, bool write) const
{
    return BxSmartPointer<const VoNode>(node ? findBlocker(*node, write) : nullptr);
}

const VoNode* VoDataManager::findBlocker(const VoNode& node, bool write) noexcept
{
    if (node.totalWrite() > 0 || (write && node.totalRead() > 0))
        return &node;
    node.prefetchChildren(false);
    for (std::size_t i = 0; i < node.m_children.size(); ++i) {
        node.prefetchNextChildList(i);
        if (const VoNode* blocker = findBlocker(*node.m_children[i], write))
            return blocker;
    }
    return nullptr;
}

VoDataManager::Result VoDataManager::TryLockAndWait(unsigned int timeoutMs)
{
    ELockStatus status;
    return TryLockAndWait(timeoutMs, status);
}

VoDataManager::Result VoDataManager::TryLockAndWait(unsigned int timeoutMs, ELockStatus& status)
{
    status = eLS_Exception;
    try {
        const std::uint32_t threadId = GetCurrentThreadId();
        const bool infinite = timeoutMs == INFINITE;
        std::int64_t remaining = timeoutMs;
        std::vector<BxEvent> events;
        for (;;) {
            if (remaining < 0) {
                dropRequests(threadId);
                status = eLS_Timeout;
                return false;
            }
            bool result = false;
            events.clear();
            if (attemptGrant(threadId, remaining, status, result, events) == EAttempt::eDone)
                return result;

            BxTimer timer(1000);
            timer.Start();
            const int wake = BxEvent::WaitForMultipleEvents(
                events, infinite ? INFINITE : static_cast<DWORD>(remaining));
            const std::uint64_t elapsed = timer.GetElapsed();
            if (wake == BxEvent::eWaitSignaled) {
                if (!infinite)
                    remaining = std::max<std::int64_t>(0, remaining - static_cast<std::int64_t>(elapsed));
                // An event that was already set (a node that stays busy after
                // one of its lock kinds went) must not turn the loop into a spin.
                if (elapsed == 0)
                    std::this_thread::yield();
            } else if (wake == BxEvent::eWaitTimeout) {
                remaining = -1;
            }
            // Any other result is a spurious wake: try again with the same time.
        }
    } catch (const std::exception& exception) {
        logger()->Error(__FILE__, __LINE__, "VoDataManager::TryLockAndWait", L"lock attempt failed: %S",
                        exception.what());
    } catch (...) {
        logger()->Error(__FILE__, __LINE__, "VoDataManager::TryLockAndWait", L"lock attempt failed");
    }
    status = eLS_Exception;
    return false;
}

VoDataManager::EAttempt VoDataManager::attemptGrant(std::uint32_t threadId, std::int64_t remaining,
                                                    ELockStatus& status, bool& result, std::vector<BxEvent>& events)
{
    BxCriticalSectionLocker managerLocker(m_managerLock);

    // The working list handle -> rights of this attempt.
    std::pmr::vector<std::pair<VoDataHandleBase*, Rights>> handles(m_handleRightsResource.get());
    {
        BxCriticalSectionLocker locker(m_requestsLock);
        const auto requests = m_requests.find(threadId);
        if (requests == m_requests.end()) {
            status = eLS_NoRequests;
            result = true;
            return EAttempt::eDone;
        }
        handles.reserve(requests->second.size());
        for (VoDataHandleBase* handle : requests->second)
            handles.emplace_back(handle, handle->getAccessRights());
    }

    bool locking = false;
    {
        BxCriticalSectionLocker locker(m_lockingThreadsLock);
        const auto entry = m_lockingThreads.find(threadId);
        locking = entry != m_lockingThreads.end() && entry->second > 0;
    }
    if (locking) {
        // A thread that holds locks may only collect what it already holds.
        const bool allGranted = std::all_of(handles.begin(), handles.end(),
                                            [](const auto& entry) { return entry.first->IsAccessGranted(); });
        if (allGranted) {
            moveRequestsToGrants(threadId);
            status = eLS_Granted;
            result = true;
        } else {
            dropRequests(threadId);
            status = eLS_ThreadIsLocking;
            result = false;
        }
        return EAttempt::eDone;
    }

    // The working list busy node -> rights.
    std::pmr::vector<std::pair<BxSmartPointer<const VoNode>, Rights>> busy(m_nodeRightsResource.get());
    for (const auto& [handle, rights] : handles) {
        if (!handle->isValid()) {
            dropRequests(threadId);
            status = eLS_InvalidHandle;
            result = false;
            return EAttempt::eDone;
        }
        BxSmartPointer<const VoNode> blocker = checkReadWriteLocks(handle->getNode(), rights == VoDataHandleBase::eAR_Write);
        if (!blocker)
            continue;
        if (remaining == 0) {
            dropRequests(threadId);
            status = eLS_Busy;
            result = false;
            return EAttempt::eDone;
        }
        busy.emplace_back(std::move(blocker), rights);
    }

    if (busy.empty()) {
        for (const auto& [handle, rights] : handles) {
            VoNode* node = bookkeeping(handle->getNode());
            if (rights == VoDataHandleBase::eAR_Write)
                node->incrementWriteCounter(threadId);
            else
                node->incrementReadCounter(threadId);
            handle->setAccessStatus(true);
        }
        {
            BxCriticalSectionLocker locker(m_lockingThreadsLock);
            std::uint32_t& held = m_lockingThreads[threadId];
            if (held == 0)
                BxNoHelpScope::Raise(threadId);
            held += static_cast<std::uint32_t>(handles.size());
        }
        moveRequestsToGrants(threadId);
        status = eLS_Granted;
        result = true;
        return EAttempt::eDone;
    }

    const std::size_t watched = std::min(busy.size(), c_maxWaitEvents);
    events.reserve(watched);
    for (std::size_t i = 0; i < watched; ++i)
        events.push_back(bookkeeping(busy[i].first.get())->getUnlockedEvent());
    return EAttempt::eWait;
}

void VoDataManager::moveRequestsToGrants(std::uint32_t threadId)
{
    HandleSetMap::node_type requests;
    {
        BxCriticalSectionLocker locker(m_requestsLock);
        requests = m_requests.extract(threadId);
    }
    if (requests.empty())
        return;
    if (BxTraceHooks::IsOn())
        VoDataTrace::RecordGrant(requests.mapped());
    BxNoHelpScope::Lower(threadId);
    BxCriticalSectionLocker locker(m_grantsLock);
    const auto grants = m_grants.find(threadId);
    if (grants == m_grants.end())
        m_grants.insert(std::move(requests));
    else
        grants->second.merge(requests.mapped());
}

void VoDataManager::unlock(VoDataHandleBase& handle)
{
    const VoNode* node = handle.getNode();
    if (!node)
        return;
    const std::uint32_t threadId = handle.getThreadID();
    if (handle.getAccessRights() == VoDataHandleBase::eAR_Write)
        bookkeeping(node)->decrementWriteCounter(threadId);
    else
        bookkeeping(node)->decrementReadCounter(threadId);
    handle.setAccessStatus(false);
    if (BxTraceHooks::IsOn())
        VoDataTrace::RecordRelease(handle);
    uncountGrant(threadId, handle);
}

void VoDataManager::unlockHandlesCurrentThread(VoDataHandleBase& handle, bool includeThisHandle)
{
    const VoNode* node = handle.getNode();
    const std::uint32_t threadId = handle.getThreadID();
    for (;;) {
        std::vector<VoDataHandleBase*> granted;
        {
            BxCriticalSectionLocker locker(m_grantsLock);
            const auto grants = m_grants.find(threadId);
            if (grants == m_grants.end())
                return;
            granted.assign(grants->second.begin(), grants->second.end());
        }
        // Node locks are taken outside the map locks.
        std::vector<VoDataHandleBase*> covered;
        for (VoDataHandleBase* other : granted) {
            if (other == &handle && !includeThisHandle)
                continue;
            const VoNode* otherNode = other->getNode();
            if (otherNode && (otherNode == node || otherNode->isDescendantOf(node)))
                covered.push_back(other);
        }
        if (covered.empty())
            return;
        for (VoDataHandleBase* other : covered) {
            other->setUsed(true);
            unlock(*other);
        }
    }
}

// --- tree edits --------------------------------------------------------------

bool VoDataManager::checkAccessRightsRemove(const VoDataHandleBase& handle) const
{
    if (handle.getAccessRights() != VoDataHandleBase::eAR_Write)
        return false;
    const VoNode* node = handle.getNode();
    return node && node->GetParent();
}

bool VoDataManager::ownsGrantedHandle(const VoDataHandleBase& handle) const
{
    return &handle.GetDataManager() == this && handle.IsAccessGranted() && handle.isValid();
}

VoDataManager::Result VoDataManager::InsertNode(BxSmartPointer<VoNode> parent, BxSmartPointer<VoNode> child)
{
    if (!parent || !child || parent == child)
        return false;
    {
        BxCriticalSectionLocker managerLocker(m_managerLock);
        // A parent inside the child's own subtree would close a cycle.
        if (child->GetParent() || child->isLocked() || parent->isDescendantOf(child.get()))
            return false;
        BxCriticalSectionLocker parentLocker(parent->m_lock);
        if (parent->FindChild(child->GetName()))
            return false;
        child->setParent(parent);
        child->setDataManager(parent->GetDataManager());
        if (child->isTrackModifications())
            parent->setModified(true, false);
        child->adaptCounters(*parent);
        parent->addChild(child);
    }
    notify(&DataManager::IInterceptorDataManager::OnInsert, child);
    return true;
}

VoDataManager::Result VoDataManager::MoveNode(VoDataHandleBase& handle, BxSmartPointer<VoNode> newParent)
{
    if (!newParent || !checkAccessRightsRemove(handle) || !ownsGrantedHandle(handle))
        return false;
    BxSmartPointer<VoNode> node(bookkeeping(handle.getNode()));
    {
        BxCriticalSectionLocker managerLocker(m_managerLock);
        if (node == newParent || node->GetDataManager() != newParent->GetDataManager() ||
            newParent->FindChild(node->GetName()) || newParent->isDescendantOf(node.get()))
            return false;
        const BxSmartPointer<VoNode> oldParent = node->GetParent();
        if (!oldParent)
            return false;

        unlockHandlesCurrentThread(handle, false);
        if (node->isTrackModifications())
            oldParent->setModified(true, false);
        // Leave the old parent before taking the new parent's lock: the two
        // may be siblings, and node locks are only ever nested parent first.
        node->unlink(false, false);
        BxCriticalSectionLocker parentLocker(newParent->m_lock);
        node->setParent(newParent);
        if (node->isTrackModifications())
            newParent->setModified(true, false);
        // The subtree is now locked as the new parent is, plus the write lock
        // of the moving handle; locks held through the old ancestors no
        // longer reach it.
        node->resetReadWriteCounters(0, 0);
        node->adaptCounters(*newParent);
        node->incrementWriteCounter(handle.getThreadID());
        newParent->addChild(node);
    }
    notify(&DataManager::IInterceptorDataManager::OnMove, node);
    return true;
}

VoDataManager::Result VoDataManager::RemoveNode(VoDataHandleBase& handle)
{
    if (!checkAccessRightsRemove(handle) || !ownsGrantedHandle(handle))
        return false;
    BxSmartPointer<VoNode> node(bookkeeping(handle.getNode()));
    {
        BxCriticalSectionLocker managerLocker(m_managerLock);
        const BxSmartPointer<VoNode> parent = node->GetParent();
        if (!parent)
            return false;
        if (node->isTrackModifications())
            parent->setModified(true, false);
        node->unlink(false, true);
        unlockHandlesCurrentThread(handle, true);
        node->resetReadWriteCounters(0, 0);
    }
    notify(&DataManager::IInterceptorDataManager::OnRemove, node);
    return true;
}

VoDataManager::Result VoDataManager::Reset(unsigned int timeoutMs)
{
    try {
        VoDataHandleLockOnly<1> handle(*this, m_root);
        if (!TryLockAndWait(timeoutMs))
            return false;
        BxCriticalSectionLocker managerLocker(m_managerLock);
        for (const BxSmartPointer<VoNode>& child : m_root->GetChildren()) {
            // The root's write lock counts on the child; it leaves unlocked.
            child->resetReadWriteCounters(0, 0);
            child->unlink(true, true);
        }
        initializePlexManagers();
        return true;
    } catch (const std::exception& exception) {
        logger()->Error(__FILE__, __LINE__, "VoDataManager::Reset", L"reset failed: %S", exception.what());
    } catch (...) {
        logger()->Error(__FILE__, __LINE__, "VoDataManager::Reset", L"reset failed");
    }
    return false;
}

void VoDataManager::notify(void (DataManager::IInterceptorDataManager::*hook)(const DataManager::CContextNode&),
                           const BxSmartPointer<VoNode>& node)
{
    if (getDispatcher()->GetCount() == 0)
        return;
    dispatch(hook, DataManager::CContextNode(*this, node));
}

// --- logging and dumps -------------------------------------------------------

void VoDataManager::SetLogger(BxSmartPointer<Logging::ILogger> logger)
{
    BxCriticalSectionLocker locker(m_loggerLock);
    m_logger = logger ? std::move(logger) : defaultLogger();
}

BxSmartPointer<Logging::ILogger> VoDataManager::logger() const
{
    BxCriticalSectionLocker locker(m_loggerLock);
    return m_logger;
}

void VoDataManager::dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    const CStringW dashLine = CStringW(c_dashLineLength, L'-') + L"\n";
    BxStreamWriteASCIIStringT<CStringW> text;
    text << L"\n" << dashLine << L"Current data manager:\n" << L"\n";
    m_root->dump(text, 0);
    text << dashLine << L"Current data locks:\n";
    dumpLocks(text);
    text << dashLine << L"\n";
    stream << text.GetString();
}

void VoDataManager::dumpLocks(BxStreamWriteASCIIT<CStringW>& stream) const { dumpLocks(stream, *m_root, CStringW()); }

void VoDataManager::dumpLocks(BxStreamWriteASCIIT<CStringW>& stream, const VoNode& node, const CStringW& ancestors)
{
    BxCriticalSectionLocker nodeLocker(node.m_lock);
    const CStringW path = ancestors.empty() ? node.GetName() : ancestors + L"/" + node.GetName();
    if (node.totalRead() > 0 || node.totalWrite() > 0) {
        // Threads in identifier order, so that a dump reads the same every time.
        std::vector<std::pair<unsigned int, VoNode::SReadWriteCount>> threads;
        threads.reserve(node.m_threadManager.Size());
        node.m_threadManager.ForEach(
            [&threads](std::uint32_t threadId, const VoNode::SReadWriteCount& counts) {
                threads.emplace_back(threadId, counts);
            });
        std::sort(threads.begin(), threads.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        stream << L"- " << path << L" ";
        for (const auto& [threadId, counts] : threads)
            if (counts.readCount > 0 || counts.writeCount > 0)
                stream << L"[" << threadId << L": " << L"r(" << counts.readCount << L")/" << L"w("
                       << counts.writeCount << L")]";
        stream << L"\n";
    }
    for (const BxSmartPointer<VoNode>& child : node.m_children)
        dumpLocks(stream, *child, path);
}
