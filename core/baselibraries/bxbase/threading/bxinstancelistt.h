// A process-wide register of the live instances of one class: each instance
// enters it when it is made and leaves it when it goes; observers learn about
// both through signals. The data and task managers keep their lists in one.
//
//   BxInstanceListT<CWidget>& widgets = widgetList();        // one per process, see below
//   widgets.Add(*this);                                   // in CWidget's constructor
//   auto id = widgets.GetAddSignal().Connect([](CWidget* w) { watch(*w); });
//   {
//       BxCriticalSectionLocker keep(widgets.GetCriticalSection()); // none goes meanwhile
//       for (CWidget* widget : widgets.GetSnapshot())
//           widget->Dump(trace);
//   }
//   widgets.Remove(*this);                                // in CWidget's destructor
//
// The signals are emitted while the list's critical section is held, so an
// observer sees additions and removals in the order they happened; a slot must
// not wait for another thread that makes or destroys an instance.
//
// The owner of the class makes its one list in a source file and hands it out
// through exported functions, never destroyed, since instances may go during
// static destruction:
//   BxInstanceListT<CWidget>& widgetList()
//   {
//       static auto* const list = new BxInstanceListT<CWidget>;
//       return *list;
//   }
//
// Locks: m_lock (recursive) guards m_instances and the emission of the signals.
#pragma once

#include <bxbase/bxcontainers.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxsignalt.h>

#include <algorithm>

/// A process-wide register of the live instances of one class: each instance enters it when it is made and leaves
/// it when it goes; observers learn about both through signals.
template <class T>
class BxInstanceListT
{
public:
    BxInstanceListT() = default;
    BxInstanceListT(const BxInstanceListT&) = delete;
    BxInstanceListT& operator=(const BxInstanceListT&) = delete;

    /// Enters an instance and emits the add signal.
    void Add(T& instance)
    {
        BxCriticalSectionLocker locker(m_lock);
        m_instances.push_back(&instance);
        m_added.Emit(&instance);
    }

    /// Takes an instance out and emits the remove signal; nothing when it is not in the list.
    void Remove(T& instance)
    {
        BxCriticalSectionLocker locker(m_lock);
        const auto entry = std::find(m_instances.begin(), m_instances.end(), &instance);
        if (entry == m_instances.end())
            return;
        m_instances.erase(entry);
        m_removed.Emit(&instance);
    }

    /// The instances, oldest first: a copy taken under the critical section.
    /// Hold the section while using them so that none is destroyed.
    BxList<T*> GetSnapshot() const
    {
        BxCriticalSectionLocker locker(m_lock);
        return m_instances;
    }

    /// The critical section guarding the list.
    BxCriticalSection& GetCriticalSection() const { return m_lock; }
    /// Emitted with each instance that enters the list.
    BxSignalT<T*>& GetAddSignal() { return m_added; }
    /// Emitted with each instance that leaves the list.
    BxSignalT<T*>& GetRemoveSignal() { return m_removed; }

private:
    mutable BxCriticalSection m_lock;
    BxList<T*> m_instances; ///< oldest first
    BxSignalT<T*> m_added;
    BxSignalT<T*> m_removed;
};
