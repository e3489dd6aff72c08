// A lock handle on one node: VoDataHandleLockOnly<0> asks for read access,
// VoDataHandleLockOnly<1> for write access to the node and its subtree.
//
//   BxSmartPointer<VoNode> node = manager.FindChild(L"Settings");
//   {
//       VoDataHandleLockOnly<1> handle(manager, node);   // request
//       if (!manager.TryLockAndWait(1000))
//           return false;                                // nothing was granted
//       node->SetModified(true, false);
//   }                                                    // released here
//
// The constructor registers the request with the manager at once; a thread
// that already holds a suitable lock on the node (write for a write request,
// read or write for a read request) is granted at once, without TryLock. The
// destructor releases a granted handle or withdraws a pending request.
// Handles are not copied: the manager keeps their addresses.
#pragma once

#include <vobase/data/vodatahandlebase.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>

#include <type_traits>

/// A lock handle on one node: VoDataHandleLockOnly<0> asks for read access, VoDataHandleLockOnly<1> for write
/// access to the node and its subtree.
template <int N>
class VOBASE_API VoDataHandleLockOnly : public VoDataHandleBase
{
    static_assert(N == 0 || N == 1, "0 reads, 1 writes");

public:
    /// The node as the handle holds it: read-only for read handles.
    using NodePointer = std::conditional_t<N == 0, BxSmartPointer<const VoNode>, BxSmartPointer<VoNode>>;

    /// Requests access to `node` (a null node makes a handle that is granted
    /// at once and locks nothing).
    VoDataHandleLockOnly(VoDataManager& manager, NodePointer node);
    ~VoDataHandleLockOnly() override { release(); }

    VoDataHandleLockOnly(const VoDataHandleLockOnly&) = delete;
    VoDataHandleLockOnly& operator=(const VoDataHandleLockOnly&) = delete;

    /// The node the handle is for.
    const NodePointer& GetNode() const noexcept { return m_node; }

protected:
    /// eAR_Read for VoDataHandleLockOnly<0>, eAR_Write for VoDataHandleLockOnly<1>.
    EAccessRights getAccessRights() const override { return static_cast<EAccessRights>(N); }
    /// True when the node is set and belongs to the handle's manager (a node
    /// that was removed from the tree, or never inserted, is not valid).
    bool isValid() const override;
    const VoNode* getNode() const override { return m_node.get(); }

private:
    NodePointer m_node;
};

extern template class VoDataHandleLockOnly<0>;
extern template class VoDataHandleLockOnly<1>;
