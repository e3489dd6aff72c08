// A signal that calls every connected slot when it is emitted, with the
// emitter's arguments.
//
//   BxSignalT<VoDataManager*> added;
//   auto id = added.Connect([](VoDataManager* m) { ... });
//   added.Emit(&manager);            // or added(&manager)
//   added.Disconnect(id);
//
// Thread-safe: Connect, Disconnect and Emit may be called from any thread.
// Emit calls the slots on the emitting thread, outside the signal's lock and
// in connection order, so a slot may connect or disconnect (the change takes
// effect at the next Emit). A slot disconnected while an Emit runs on another
// thread may still be called once by that Emit.
#pragma once

#include <bxbase/threading/bxmutex.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// A signal that calls every connected slot when it is emitted, with the emitter's arguments.
template <class... Args>
class BxSignalT
{
public:
    /// A connected callable; it receives the arguments of Emit.
    using Slot = std::function<void(Args...)>;
    using ConnectionId = std::size_t; ///< never 0 for a connection

    BxSignalT() = default;
    BxSignalT(const BxSignalT&) = delete;
    BxSignalT& operator=(const BxSignalT&) = delete;

    /// Connects a slot; the id disconnects it again.
    ConnectionId Connect(Slot slot)
    {
        BxMutexLocker locker(m_lock);
        auto slots = std::make_shared<SlotList>(*m_slots);
        slots->emplace_back(++m_lastId, std::make_shared<Slot>(std::move(slot)));
        m_slots = std::move(slots);
        return m_lastId;
    }

    /// Connects object.method; the object must outlive the connection.
    template <class T>
    ConnectionId Connect(T* object, void (T::*method)(Args...))
    {
        return Connect([object, method](Args... args) { (object->*method)(std::forward<Args>(args)...); });
    }

    /// Disconnects one slot; true when the id was connected.
    bool Disconnect(ConnectionId id)
    {
        BxMutexLocker locker(m_lock);
        auto slots = std::make_shared<SlotList>(*m_slots);
        auto it = std::find_if(slots->begin(), slots->end(), [id](const auto& entry) { return entry.first == id; });
        if (it == slots->end())
            return false;
        slots->erase(it);
        m_slots = std::move(slots);
        return true;
    }

    /// Disconnects every slot.
    void DisconnectAll()
    {
        BxMutexLocker locker(m_lock);
        m_slots = std::make_shared<SlotList>();
    }

    /// Number of connected slots.
    std::size_t GetCount() const
    {
        BxMutexLocker locker(m_lock);
        return m_slots->size();
    }

    /// Calls every connected slot with the arguments.
    void Emit(Args... args) const
    {
        std::shared_ptr<const SlotList> slots;
        {
            BxMutexLocker locker(m_lock);
            slots = m_slots;
        }
        for (const auto& entry : *slots)
            (*entry.second)(args...);
    }

    /// Emit(), so that the signal can be called like a function.
    void operator()(Args... args) const { Emit(std::forward<Args>(args)...); }

private:
    using SlotList = std::vector<std::pair<ConnectionId, std::shared_ptr<Slot>>>;

    mutable BxMutex m_lock;                                        ///< guards m_slots and m_lastId
    std::shared_ptr<const SlotList> m_slots = std::make_shared<SlotList>(); ///< replaced, never changed in place
    ConnectionId m_lastId = 0;
};
