// Base of the lock handles through which a thread asks a data manager for
// read or write access to a node and its subtree.
//
//   VoDataHandleLockOnly<1> write(manager, node);      // requested here
//   VoDataHandleLockOnly<0> read(manager, other);
//   if (manager.TryLockAndWait(500))                    // both granted, or neither
//       edit(node, other);
//   // the destructors release the locks (or withdraw the requests)
//
// A handle belongs to the thread that made it: the manager keys all its
// bookkeeping by that thread's identifier. The concrete handles are
// VoDataHandleLockOnly<0> (read) and VoDataHandleLockOnly<1> (write).
//
// A handle is used by its own thread only; its fields need no lock.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxtypes.h>

#include <cstdint>

class VoDataManager;
class VoNode;

/// Base of the lock handles through which a thread asks a data manager for read or write access to a node and its
/// subtree.
class VOBASE_API VoDataHandleBase
{
public:
    /// What a handle asks for.
    enum EAccessRights
    {
        eAR_Read = 0,
        eAR_Write = 1
    };

    /// A handle for `manager`, made by the calling thread, not yet granted.
    explicit VoDataHandleBase(VoDataManager& manager);
    /// Copies the manager, the thread identifier and the granted and used
    /// marks; the copy is not registered with the manager.
    VoDataHandleBase(const VoDataHandleBase&) = default;
    /// Takes over the manager, the thread identifier and the granted and used
    /// marks of `other`; registrations with the manager do not change.
    VoDataHandleBase& operator=(const VoDataHandleBase&) = default;
    virtual ~VoDataHandleBase() = default;

    /// Read or write.
    EAccessRights GetAccessRights() const { return getAccessRights(); }
    /// True once the manager granted the request (and until it is released).
    bool IsAccessGranted() const noexcept { return m_accessGranted; }
    /// True when the manager released the handle on the thread's behalf
    /// (when its node was moved or removed through another handle).
    bool IsUsed() const noexcept { return m_used; }
    /// True when the handle has a node that belongs to the handle's manager.
    bool IsValid() const { return isValid(); }
    /// Releases a granted handle early; nothing happens when it is not
    /// granted or has no node.
    void Unlock();

    /// The manager the handle was made for.
    VoDataManager& GetDataManager() const noexcept { return *m_manager; }
    /// The identifier of the thread that made the handle.
    std::uint32_t getThreadID() const noexcept { return m_threadId; }

protected:
    friend class VoDataManager;
    friend class VoDataTrace;

    /// Read or write, as the concrete handle asks for; the manager reads it
    /// when it decides on the request.
    virtual EAccessRights getAccessRights() const = 0;
    /// True when the handle has a node and that node is managed by the
    /// handle's manager; a lock attempt with an invalid handle fails.
    virtual bool isValid() const = 0;
    /// The handle's node, or null.
    virtual const VoNode* getNode() const = 0;

    /// Marks the handle granted or not granted; called by the manager (under
    /// its own locks) when it grants or releases the handle.
    void setAccessStatus(bool granted) noexcept { m_accessGranted = granted; }
    /// Marks the handle as released by the manager on the thread's behalf
    /// (when a move or removal through another handle released it).
    void setUsed(bool used) noexcept { m_used = used; }

    /// What a concrete handle's destructor calls: unlock when granted,
    /// otherwise withdraw the request.
    void release() noexcept;

private:
    VoDataManager* m_manager; ///< not owned
    bool m_accessGranted = false;
    std::uint32_t m_threadId;
    bool m_used = false;
    std::uint8_t m_traceState = 0; ///< the trace's open span of this handle (VoDataTrace)
};
