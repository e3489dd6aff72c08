// An undoable operation made from two callables, one that applies the edit
// and one that reverts it, so that a small edit needs no class of its own.
//
//   VoHistory history;
//   VoHistoryID textId;
//   std::wstring text = L"draft";
//   BxSmartPointer<VoOperation> rename = VoMakeOperation([&] { text = L"final"; }, [&] { text = L"draft"; });
//   rename->ApplyWithLocking();
//   VoHistoryAction* action = history.BeginAction(L"Rename");
//   history.AddOperation(rename.get(), &textId, VoHistoryAction::eAIF_Primary);
//   history.EndAction(action);
//   history.Undo(1);                                   // text is "draft" again
//
// Each callable takes nothing and returns bool (false: the step failed) or
// nothing (the step then succeeded). The operation is reversible and
// relative unless made absolute; SetDataManager and AddNodePointerToLock on
// the result name the nodes to lock as for any operation. The callables are
// stored by value and destroyed with the operation, when the history and
// every other owner have dropped it.
#pragma once

#include <vobase/history/vooperation.h>

#include <bxbase/bxsmartpointer.h>

#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

/// An undoable operation made from two callables, one that applies the edit and one that reverts it, so that a
/// small edit needs no class of its own.
template <class FApply, class FRevert>
class VoOperationT final : public VoOperation
{
    static_assert(std::is_invocable_v<FApply&> && std::is_invocable_v<FRevert&>,
                  "VoOperationT needs two callables taking no arguments");

public:
    /// Keeps both callables; `absolute` as for VoOperation(reversible, absolute).
    VoOperationT(FApply apply, FRevert revert, bool absolute = false)
        : VoOperation(true, absolute), m_apply(std::move(apply)), m_revert(std::move(revert))
    {
    }

    /// Calls the apply callable.
    bool Apply() override { return call(m_apply); }
    /// Calls the revert callable.
    bool Revert() override { return call(m_revert); }
    /// The base's bytes plus the two callables.
    std::size_t GetMemoryUsage() const override
    {
        return VoOperation::GetMemoryUsage() + sizeof(FApply) + sizeof(FRevert);
    }

private:
    template <class F>
    static bool call(F& step)
    {
        if constexpr (std::is_convertible_v<std::invoke_result_t<F&>, bool>)
            return static_cast<bool>(std::invoke(step));
        else
        {
            std::invoke(step);
            return true;
        }
    }

    FApply m_apply;
    FRevert m_revert;
};

/// Makes a reversible VoOperationT owning (decayed copies of) the two callables.
template <std::invocable FApply, std::invocable FRevert>
BxSmartPointer<VoOperation> VoMakeOperation(FApply&& apply, FRevert&& revert, bool absolute = false)
{
    return BxSmartPointer<VoOperation>(new VoOperationT<std::decay_t<FApply>, std::decay_t<FRevert>>(
        std::forward<FApply>(apply), std::forward<FRevert>(revert), absolute));
}
