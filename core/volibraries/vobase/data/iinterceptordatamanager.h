// The hooks through which outside code follows the tree edits of a data
// manager (insert, move and remove).
//
//   class CTreeLog : public DataManager::IInterceptorDataManager {
//   public:
//       void OnInsert(const DataManager::CContextNode& c) override { ... }
//       void OnMove(const DataManager::CContextNode& c) override { ... }
//       void OnRemove(const DataManager::CContextNode& c) override { ... }
//   };
//   manager.GetDispatcher()->Add(std::make_shared<CTreeLog>());
//
// Each hook is called on the thread that made the edit, after the edit took
// effect, while that thread still holds the handles it made the edit with.
// A hook may call back into the manager; it must not wait for another thread
// that needs the nodes the editing thread holds.
#pragma once

#include <vobase/data/ccontextnode.h>
#include <vobase/vobaseapi.h>

namespace DataManager {

/// The hooks through which outside code follows the tree edits of a data manager (insert, move and remove).
class VOBASE_API IInterceptorDataManager
{
public:
    virtual ~IInterceptorDataManager() = default;

    /// A node (with its subtree) was inserted under a parent.
    virtual void OnInsert(const CContextNode& context) = 0;
    /// A node (with its subtree) was moved to a new parent.
    virtual void OnMove(const CContextNode& context) = 0;
    /// A node (with its subtree) was removed from the tree.
    virtual void OnRemove(const CContextNode& context) = 0;
};

}  // namespace DataManager
