// A work item made from a callable: the callable is the item's Run, Prepare
// does nothing and the item is always ready. It saves a class of its own for
// the common case of a step that just computes something.
//
//   VoTaskManager manager;
//   manager.Add("load", [&] { data = load(path); });               // see VoTaskManager::Add
//   manager.Add("scan", VoMakeWorkItem([&](TaskManager::SWorkItemStatus& status) {
//       for (auto& row : rows)
//           if (!status.breakEvent.IsSet()) scan(row);              // a long item polls the break event
//   }));
//
// The callable takes either nothing or the item's TaskManager::SWorkItemStatus;
// what it returns is ignored. It is stored by value (a copy or a move of what
// was given) and destroyed with the item, once the manager and every other
// owner have dropped it. It runs once each time a task reaches the item, on a
// pool thread; the task graph manager never runs one item on two threads at
// once, so the callable needs no lock of its own for that. An exception it
// throws fails the item's task like that of any other item (eCS_Failed).
#pragma once

#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/sworkitemstatus.h>

#include <bxbase/bxreferencecountedobjectt.h>
#include <bxbase/bxsmartpointer.h>

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

/// A callable that can be a work item: `void()` or `void(TaskManager::SWorkItemStatus&)`.
template <class F>
concept VoWorkItemCallable = std::invocable<std::decay_t<F>&> ||
                             std::invocable<std::decay_t<F>&, TaskManager::SWorkItemStatus&>;

/// A work item made from a callable: the callable is the item's Run, Prepare does nothing and the item is always
/// ready.
template <class F>
class VoWorkItemT final : public BxReferenceCountedObjectT<IWorkItem>
{
    static_assert(VoWorkItemCallable<F>, "VoWorkItemT needs a callable taking () or (TaskManager::SWorkItemStatus&)");

public:
    /// Keeps the callable.
    explicit VoWorkItemT(F work) : m_work(std::move(work)) {}

    /// Nothing to prepare.
    void Prepare(VoGraphNode&) override {}
    /// Always ready.
    bool IsReady() const override { return true; }
    /// Calls the callable, with the status when it takes one.
    void Run(TaskManager::SWorkItemStatus& status) override
    {
        if constexpr (std::is_invocable_v<F&, TaskManager::SWorkItemStatus&>)
            std::invoke(m_work, status);
        else
            std::invoke(m_work);
    }

private:
    F m_work; ///< only the task that runs the item calls it
};

/// Makes a VoWorkItemT owning (a decayed copy of) `work`.
template <VoWorkItemCallable F>
BxSmartPointer<IWorkItem> VoMakeWorkItem(F&& work)
{
    return BxSmartPointer<IWorkItem>(new VoWorkItemT<std::decay_t<F>>(std::forward<F>(work)));
}
