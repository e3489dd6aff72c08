// The context of the data manager's tree notifications: the manager and the
// node that was inserted, moved or removed.
//
//   void OnMove(const DataManager::CContextNode& context) override {
//       BxSmartPointer<VoNode> node = context.GetNode();
//       update_view(node->GetParent());       // the node's new parent
//   }
//
// The context only lives while the interceptors are called; keep the node
// (a smart pointer) if it is needed later.
#pragma once

#include <vobase/data/icontext.h>
#include <vobase/vobaseapi.h>

#include <vobase/objects/vonode.h>

#include <bxbase/bxsmartpointer.h>

class VoNode;

namespace DataManager {

/// The context of the data manager's tree notifications: the manager and the node that was inserted, moved or
/// removed.
class VOBASE_API CContextNode : public IContext
{
public:
    /// A context for a notification about `node` raised by `manager`; the
    /// context keeps a reference to the node while it lives.
    CContextNode(VoDataManager& manager, BxSmartPointer<VoNode> node) : IContext(manager), m_node(std::move(node)) {}

    /// The node that was inserted, moved or removed (for a removal it is no
    /// longer managed when the interceptors see it).
    const BxSmartPointer<VoNode>& GetNode() const noexcept { return m_node; }

private:
    BxSmartPointer<VoNode> m_node;
};

}  // namespace DataManager
