// One user-visible step of the history ("Move layer", "Paint"): a description
// and the operations recorded for it, each tagged with the identifier of the
// object it changes.
//
//   VoHistoryAction* action = history.BeginAction(L"Move layer");
//   history.AddOperation(move.get(), action, &layer.m_historyId, VoHistoryAction::eAIF_Primary);
//   history.AddOperation(select.get(), action, &selection.m_historyId, VoHistoryAction::eAIF_Secondary);
//   history.EndAction(action);               // closed: it can be undone now
//
// An action keeps two lists: list 0 takes the operations added with
// eAIF_Primary, list 1 those added with eAIF_Secondary. Redo carries an
// action out as list 0 and then list 1, undo takes it back in the opposite
// order. Only the list 0 operations of an object are searched for absolute
// operations that can stand for the object's whole state.
//
// The action keeps a reference to each operation. Actions belong to their
// VoHistory, which is used by one thread at a time.
#pragma once

#include <vobase/history/vohistoryid.h>
#include <vobase/history/vooperation.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>

#include <cstddef>
#include <cstdint>

/// One user-visible step of the history ("Move layer", "Paint"): a description and the operations recorded for
/// it, each tagged with the identifier of the object it changes.
class VOBASE_API VoHistoryAction
{
public:
    /// Which of the action's two lists an operation goes to.
    enum EActionInputFlag
    {
        eAIF_Primary = 0,   ///< list 0
        eAIF_Secondary = 1  ///< list 1
    };

    /// One recorded operation and the identifier of the object it changes.
    struct SHistoryOperation
    {
        /// The recorded operation; the record keeps a reference to it.
        BxSmartPointer<VoOperation> operation;
        std::uint32_t id = 0; ///< VoHistoryID::GetID() of the object
    };
    /// One of the action's two lists of records, in the order they were added.
    using Operations = BxList<SHistoryOperation>;

    /// An open action with that description and no operations. Actions are
    /// normally made by VoHistory::BeginAction, which owns them.
    explicit VoHistoryAction(CStringT<wchar_t> description = {});
    VoHistoryAction(const VoHistoryAction&) = delete;
    VoHistoryAction& operator=(const VoHistoryAction&) = delete;

    /// The text shown for the step in undo and redo lists.
    const CStringT<wchar_t>& GetDescription() const noexcept { return m_description; }
    /// Replaces the text shown for the step.
    void SetDescription(const CStringT<wchar_t>& description) { m_description = description; }

    /// Records `operation` for the object `id` in list `flag`; any flag other
    /// than 0 and 1 records nothing. A null operation throws
    /// BxExceptionPreconditionViolation.
    void AddOperation(VoOperation* operation, const VoHistoryID& id, EActionInputFlag flag);
    /// List 0 (eAIF_Primary) or list 1 (eAIF_Secondary), in the order the operations were added.
    const Operations& GetOperations(EActionInputFlag flag) const { return m_operations[flag == eAIF_Secondary]; }

    /// True once the action was closed; only closed actions can be undone.
    bool IsClosed() const noexcept { return m_closed; }
    /// Closes the action.
    void close() noexcept { m_closed = true; }

    /// Bytes held by the action and its operations.
    std::size_t GetMemoryUsage() const;

private:
    CStringT<wchar_t> m_description;
    Operations m_operations[2];
    bool m_closed = false;
};
