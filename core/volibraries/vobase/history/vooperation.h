// An undoable edit of the data model. A derived class knows how to apply the
// edit and, when it is reversible, how to revert it; it lists the nodes it
// must hold write locks on while it runs.
//
//   class CSetGain : public VoOperation {
//   public:
//       CSetGain(VoDataManager& m, BxSmartPointer<VoNode> node, double gain) : m_gain(gain) {
//           SetDataManager(&m);
//           AddNodePointerToLock(node);
//       }
//       bool Apply() override { ...; return true; }
//       bool Revert() override { ...; return true; }
//   };
//
//   BxSmartPointer<VoOperation> op(new CSetGain(manager, node, 2.0));
//   if (op->ApplyWithLocking())                         // write-locks node, then applies
//       history.AddOperation(op.get(), &id, VoHistoryAction::eAIF_Primary);
//
// An absolute operation (second constructor argument, or VoOperationAbsolute)
// sets its object's state outright instead of changing it relative to the
// previous state; its revert restores the earlier state outright too. The
// history uses this to shorten undo and redo.
//
// Operations are reference counted and created with new; the history keeps a
// reference to every operation it records. An operation's fields are set up
// by the thread that creates it and are read-only afterwards.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/iobject.h>
#include <bxbase/ireferencecounted.h>

#include <cstddef>

class VoDataManager;
class VoNode;

/// An undoable edit of the data model.
class VOBASE_API VoOperation : public IReferenceCounted, public IObject
{
    BX_DECLARE_RTTI()

public:
    /// A reversible, relative operation.
    VoOperation();
    /// An operation that can (`reversible`) or cannot be reverted, and that
    /// sets its object's state outright (`absolute`) or changes it relatively.
    VoOperation(bool reversible, bool absolute);
    ~VoOperation() override;

    /// Carries the edit out; false when it failed.
    virtual bool Apply() = 0;
    /// Takes the edit back; false when it failed (or cannot be reverted).
    virtual bool Revert() = 0;
    /// Whether the operation has all it needs to run; true in the base class.
    virtual bool AreParametersSet() const { return true; }
    /// Bytes held by the operation.
    virtual std::size_t GetMemoryUsage() const;

    /// True when Revert can take the edit back; the history gives up a redo
    /// route through an operation that cannot.
    bool IsReversible() const noexcept { return m_reversible; }
    /// True when the operation sets its object's state outright; undo and redo
    /// may then start from it instead of replaying earlier operations.
    bool IsAbsolute() const noexcept { return m_absolute; }

    /// The data manager to lock the nodes in (null: no locking).
    void SetDataManager(VoDataManager* manager) noexcept { m_dataManager = manager; }
    /// The data manager the nodes are locked in, or null (not owned).
    VoDataManager* GetDataManager() const noexcept { return m_dataManager; }

    /// Adds a node to write-lock while the operation runs.
    void AddNodePointerToLock(BxSmartPointer<VoNode> node);
    /// The nodes write-locked while the operation runs, in the order added.
    const BxList<BxSmartPointer<VoNode>>& GetNodePointersToLock() const noexcept { return m_nodesToLock; }

    /// Write-locks every listed node in the data manager (waiting as long as
    /// needed), applies, and releases the locks. Without a manager or nodes it
    /// just applies. False when the locks were refused (nothing is applied
    /// then) or Apply failed.
    bool ApplyWithLocking();
    /// The same with Revert.
    bool RevertWithLocking();

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

private:
    bool runWithLocking(bool (VoOperation::*step)());

    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    bool m_reversible;
    bool m_absolute;
    VoDataManager* m_dataManager = nullptr; ///< not owned
    BxList<BxSmartPointer<VoNode>> m_nodesToLock;
};
