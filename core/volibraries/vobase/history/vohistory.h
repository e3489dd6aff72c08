// The undo history: operations recorded in actions, undone and redone by
// whole actions.
//
//   VoHistory history;
//   VoHistoryAction* action = history.BeginAction(L"Brighten");
//   BxSmartPointer<VoOperation> op(new CSetGain(manager, node, 2.0));
//   op->ApplyWithLocking();
//   history.AddOperation(op.get(), &image.m_historyId, VoHistoryAction::eAIF_Primary);
//   history.EndAction(action);
//   history.Undo(1);                        // reverts op (locking node)
//   history.Redo(1);                        // applies it again
//
// The undo list holds the actions done so far (oldest first, the active one
// last), the redo list those undone (the next to redo first). Undo and redo
// work object by object: for each object identifier, in the order the
// identifiers were first used, they carry out only that object's operations,
// and where an absolute operation (VoOperation::IsAbsolute) makes it shorter
// they start from it instead of walking every operation:
//   - redo re-applies an object's operations oldest first from the latest
//     absolute one of the redone actions; or, when an absolute operation in an
//     action beyond the redone ones is nearer, it reverts back from there;
//   - undo reverts an object's operations newest first down to the oldest
//     absolute one of the undone actions; or, when an absolute operation in an
//     action before the undone ones is nearer, it re-applies forward from there.
// An absolute operation must therefore restore the earlier state outright
// when reverted. Every operation runs with its node locks
// (ApplyWithLocking / RevertWithLocking).
//
// The history owns its actions and keeps a reference to each recorded
// operation. It is not thread-safe: one thread at a time uses it (the
// operations it runs lock their nodes for themselves).
#pragma once

#include <vobase/history/vohistoryaction.h>
#include <vobase/history/vohistoryid.h>
#include <vobase/history/vooperation.h>
#include <vobase/history/vooperationabsolute.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>
#include <bxbase/inoncopyable.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// The undo history: operations recorded in actions, undone and redone by whole actions.
class VOBASE_API VoHistory : public INonCopyable
{
public:
    VoHistory();
    ~VoHistory();

    /// Starts a new action at the end of the undo list; every action of the
    /// redo list is deleted. The history owns the action.
    VoHistoryAction* BeginAction(CStringT<wchar_t> description);
    /// Closes the action.
    void EndAction(VoHistoryAction* action);
    /// Removes the action from the undo list and deletes it with its
    /// operation records. The operations are not reverted. An action that is
    /// not in the undo list throws BxExceptionPreconditionViolation.
    void CancelAction(VoHistoryAction* action);

    /// Records `operation` (created with new; the history takes a reference)
    /// for the object `id` in `action`. The identifier is registered when no
    /// registered one has the same GetID(). Null arguments throw
    /// BxExceptionPreconditionViolation.
    void AddOperation(VoOperation* operation, VoHistoryAction* action, VoHistoryID* id,
                      VoHistoryAction::EActionInputFlag flag);
    /// The same for the active action (the end of the undo list); an empty
    /// undo list throws BxExceptionContainer.
    void AddOperation(VoOperation* operation, VoHistoryID* id, VoHistoryAction::EActionInputFlag flag);

    /// Undoes the last n closed actions (fewer when the list ends or an open
    /// action comes first). With an open action at the end nothing happens.
    /// False when an operation failed; the actions move to the redo list anyway.
    bool Undo(unsigned int n);
    /// Redoes the next n actions of the redo list (fewer when it ends).
    /// False when an operation failed; the actions move to the undo list anyway.
    bool Redo(unsigned int n);
    /// Undoes every action of the undo list (nothing with an open action at the end).
    bool UndoAll();
    /// Redoes every action of the redo list.
    bool RedoAll();

    /// True when the undo list holds an action (an open action counts, although
    /// Undo leaves it alone until it is closed).
    bool IsUndoApplicable() const noexcept { return !m_undo.empty(); }
    /// True when the redo list holds an action; BeginAction empties it.
    bool IsRedoApplicable() const noexcept { return !m_redo.empty(); }

    /// The descriptions of the undo list, oldest first.
    BxList<CStringT<wchar_t>> GetActionDescriptionsUndoList() const;
    /// The descriptions of the redo list, next to redo first.
    BxList<CStringT<wchar_t>> GetActionDescriptionsRedoList() const;

    /// The newest absolute operation (of class VoOperationAbsolute) recorded
    /// for the object in the undo list, or null.
    const VoOperationAbsolute* GetLastAbsoluteOperation(VoHistoryID* id) const;

    /// Bytes held by the history, its actions and their operations.
    std::size_t GetMemoryUsage() const;

protected:
    /// Deletes every action of both lists.
    void clear();

private:
    using ActionList = BxList<std::unique_ptr<VoHistoryAction>>;
    using Position = ActionList::iterator;
    /// Operations in gathering order.
    using Route = std::vector<VoOperation*>;

    void registerID(const VoHistoryID& id);
    bool redoUpTo(Position target);
    bool undoDownTo(Position target);
    bool redoID(std::uint32_t id, Position target);
    bool undoID(std::uint32_t id, Position target);

    BxList<std::uint32_t> m_ids;   ///< every identifier used, in order of first use
    BxSet<std::uint32_t> m_knownIds; ///< the same, for lookup
    ActionList m_undo;           ///< oldest first; the active action last
    ActionList m_redo;           ///< the next action to redo first
};
