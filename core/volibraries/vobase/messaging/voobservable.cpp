#include <vobase/messaging/voobservable.h>

#include <vobase/messaging/voobserver.h>

#include <algorithm>
#include <utility>

namespace {
bool holds(const VoObservable::ObserverList& list, const VoObserver& observer)
{
    return std::any_of(list.begin(), list.end(), [&](const auto& info) { return info.observer == &observer; });
}
}  // namespace

VoObservable::VoObservable() = default;

VoObservable::~VoObservable()
{
    removeObservers();
}

std::size_t VoObservable::GetMemoryUsage() const
{
    std::size_t bytes = sizeof(*this);
    for (const auto& observers : m_observers)
        bytes += observers.capacity() * sizeof(VoObserverInfo);
    return bytes;
}

VoObservable::ObserverList& VoObservable::list(EMessageType type)
{
    return m_observers.at(static_cast<std::size_t>(type));
}

const VoObservable::ObserverList& VoObservable::list(EMessageType type) const
{
    return m_observers.at(static_cast<std::size_t>(type));
}

template <class MakeMessage>
void VoObservable::notify(EMessageType type, void* userData, bool honourOneShot, MakeMessage makeMessage)
{
    ObserverList& observers = list(type);
    ++m_nesting;
    // Entries appended by callbacks lie beyond `end` and wait for the next
    // notification; removed ones keep their place (observer null) until the purge.
    const std::size_t end = observers.size();
    for (std::size_t i = 0; i < end; ++i)
    {
        const VoObserverInfo info = observers[i];  // copied: callbacks may grow the list
        if (info.observer == nullptr)
            continue;
        try
        {
            if (honourOneShot && info.oneShot != 0)
                info.observer->Unobserve(*this, type);
            info.observer->onNotify(*this, makeMessage(info), userData);
        }
        catch (...)
        {
            // A failing observer does not stop the others.
        }
    }
    if (--m_nesting == 0)
        purge(observers);
}

void VoObservable::NotifyObservers(EMessageType type, void* userData)
{
    notify(type, userData, true, [type](const VoObserverInfo& info) { return VoObservableMessage(type, info.userData); });
}

void VoObservable::SendMessageW(const VoObservableMessage& message, void* userData)
{
    notify(message.GetType(), userData, false, [&message](const VoObserverInfo&) -> const VoObservableMessage& {
        return message;
    });
}

void VoObservable::purge(ObserverList& observers)
{
    std::erase_if(observers, [](const VoObserverInfo& info) { return info.observer == nullptr; });
}

int VoObservable::IsObserver(const VoObserver& observer) const
{
    return std::any_of(m_observers.begin(), m_observers.end(), [&](const auto& l) { return holds(l, observer); }) ? 1 : 0;
}

int VoObservable::IsObserver(const VoObserver& observer, EMessageType type) const
{
    return holds(list(type), observer) ? 1 : 0;
}

std::size_t VoObservable::GetObserverCount(EMessageType type) const
{
    return list(type).size();
}

const VoObservable::ObserverList& VoObservable::GetObserverList(EMessageType type) const
{
    return list(type);
}

bool VoObservable::addObserver(VoObserver& observer, EMessageType type, void* userData, int oneShot)
{
    ObserverList& observers = list(type);
    if (holds(observers, observer))
        return false;
    observers.push_back(VoObserverInfo{&observer, userData, oneShot});
    return true;
}

bool VoObservable::addObserver(VoObserver& observer, EMessageType type, int oneShot)
{
    return addObserver(observer, type, nullptr, oneShot);
}

bool VoObservable::addObserver(VoObserver& observer, void* userData, int oneShot)
{
    bool added = false;
    for (int type = 0; type < VoObservableMessage::eMessageTypeCount; ++type)
        added |= addObserver(observer, static_cast<EMessageType>(type), userData, oneShot);
    return added;
}

bool VoObservable::addObserver(VoObserver& observer, int oneShot)
{
    return addObserver(observer, nullptr, oneShot);
}

bool VoObservable::removeObserver(const VoObserver& observer, EMessageType type)
{
    ObserverList& observers = list(type);
    bool removed = false;
    for (auto& info : observers)
    {
        if (info.observer == &observer)
        {
            info.observer = nullptr;
            removed = true;
        }
    }
    if (removed && m_nesting == 0)
        purge(observers);
    return removed;
}

bool VoObservable::removeObserver(const VoObserver& observer)
{
    bool removed = false;
    for (int type = 0; type < VoObservableMessage::eMessageTypeCount; ++type)
        removed |= removeObserver(observer, static_cast<EMessageType>(type));
    return removed;
}

void VoObservable::removeObservers()
{
    for (auto& observers : m_observers)
    {
        for (auto& info : observers)
        {
            if (info.observer != nullptr)
                std::exchange(info.observer, nullptr)->forgetObservable(*this);
        }
        observers.clear();
    }
}
