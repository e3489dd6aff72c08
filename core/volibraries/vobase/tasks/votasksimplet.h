// A task of the simple work queues made from a callable, so that queueing a
// piece of work needs no class of its own.
//
//   BxSmartPointer<VoTaskManagerSequential> queue(
//       new VoTaskManagerSequential(VoTaskManagerSequential::EThreadPriority::eTP_Normal));
//   queue->AddTask(VoMakeTaskSimple([&] { writeLine(L"first"); }));
//
//   VoTaskManagerPooling thumbnails(
//       [](const CStringT<wchar_t>& path) { return VoMakeTaskSimple([path] { makeThumbnail(path); }); },
//       VoTaskManagerPooling::EThreadPriority::eTP_BelowNormal);
//
// The callable takes nothing and returns bool (the task's result) or
// nothing (the result is then true); the queues ignore the result. It is
// stored by value and destroyed with the task, once the queue has run it and
// dropped it.
#pragma once

#include <vobase/tasks/itasksimple.h>

#include <bxbase/bxreferencecountedobjectt.h>
#include <bxbase/bxsmartpointer.h>

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

/// A task of the simple work queues made from a callable, so that queueing a piece of work needs no class of its
/// own.
template <class F>
class VoTaskSimpleT final : public BxReferenceCountedObjectT<ITaskSimple>
{
    static_assert(std::is_invocable_v<F&>, "VoTaskSimpleT needs a callable taking no arguments");

public:
    /// Keeps the callable.
    explicit VoTaskSimpleT(F work) : m_work(std::move(work)) {}

    /// Calls the callable; its bool result, or true when it returns nothing else.
    bool Run() override
    {
        if constexpr (std::is_convertible_v<std::invoke_result_t<F&>, bool>)
            return static_cast<bool>(std::invoke(m_work));
        else
        {
            std::invoke(m_work);
            return true;
        }
    }

private:
    F m_work; ///< called by the one worker that runs the task
};

/// Makes a VoTaskSimpleT owning (a decayed copy of) `work`.
template <std::invocable F>
BxSmartPointer<ITaskSimple> VoMakeTaskSimple(F&& work)
{
    return BxSmartPointer<ITaskSimple>(new VoTaskSimpleT<std::decay_t<F>>(std::forward<F>(work)));
}
