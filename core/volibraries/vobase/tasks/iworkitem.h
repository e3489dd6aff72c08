// A unit of work of the task graph manager (VoTaskManager). Callers implement
// it; the manager holds it through BxSmartPointer<IWorkItem> on a graph node
// and, when a task reaches the node, calls Prepare, IsReady and Run on a pool
// thread, in that order.
//
//   class CLoad : public BxReferenceCountedObjectT<IWorkItem> ... or:
//   class CLoad : public IWorkItem {
//   public:
//       void Prepare(VoGraphNode&) override {}
//       bool IsReady() const override { return true; }
//       void Run(TaskManager::SWorkItemStatus& status) override {
//           while (more() && !status.breakEvent.IsSet()) step();   // a long item polls the break event
//       }
//       BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }
//   private:
//       mutable BxReferenceCounter<unsigned int> m_counter;
//   };
//   manager.Add("load", BxSmartPointer<IWorkItem>(new CLoad));
#pragma once

#include <vobase/tasks/sworkitemstatus.h>
#include <vobase/vobaseapi.h>

#include <bxbase/ireferencecounted.h>

class VoGraphNode;

/// A unit of work of the task graph manager (VoTaskManager).
class VOBASE_API IWorkItem : public IReferenceCounted
{
public:
    ~IWorkItem() override = default;

    /// Called first when a task reaches the item's node.
    virtual void Prepare(VoGraphNode& node) = 0;
    /// False makes the task abort at this node (state 4) without running it.
    virtual bool IsReady() const = 0;
    /// The work. A long item polls status.breakEvent and returns early when it is set.
    virtual void Run(TaskManager::SWorkItemStatus& status) = 0;
};
