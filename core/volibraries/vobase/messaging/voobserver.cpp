#include <vobase/messaging/voobserver.h>

#include <vobase/messaging/voobservable.h>

VoObserver::~VoObserver()
{
    Unobserve();
}

void VoObserver::Observe(VoObservable& observable, int oneShot)
{
    Observe(observable, nullptr, oneShot);
}

void VoObserver::Observe(VoObservable& observable, void* userData, int oneShot)
{
    for (int type = 0; type < VoObservableMessage::eMessageTypeCount; ++type)
        Observe(observable, static_cast<EMessageType>(type), userData, oneShot);
}

void VoObserver::Observe(VoObservable& observable, EMessageType type, int oneShot)
{
    Observe(observable, type, nullptr, oneShot);
}

void VoObserver::Observe(VoObservable& observable, EMessageType type, void* userData, int oneShot)
{
    if (observable.addObserver(*this, type, userData, oneShot))
        m_elements.push_back(SObservableElement{&observable, userData, type, oneShot});
}

template <class Match>
bool VoObserver::unobserveIf(Match match)
{
    bool removed = false;
    for (auto it = m_elements.begin(); it != m_elements.end();)
    {
        if (match(*it))
        {
            const SObservableElement element = *it;
            it = m_elements.erase(it);  // first: removal may re-enter this observer
            element.observable->removeObserver(*this, element.type);
            removed = true;
        }
        else
        {
            ++it;
        }
    }
    return removed;
}

bool VoObserver::Unobserve()
{
    return unobserveIf([](const SObservableElement&) { return true; });
}

bool VoObserver::Unobserve(EMessageType type)
{
    return unobserveIf([type](const SObservableElement& e) { return e.type == type; });
}

bool VoObserver::Unobserve(VoObservable& observable)
{
    return unobserveIf([&observable](const SObservableElement& e) { return e.observable == &observable; });
}

bool VoObserver::Unobserve(VoObservable& observable, EMessageType type)
{
    return unobserveIf(
        [&observable, type](const SObservableElement& e) { return e.observable == &observable && e.type == type; });
}

void VoObserver::forgetObservable(const VoObservable& observable)
{
    m_elements.remove_if([&observable](const SObservableElement& e) { return e.observable == &observable; });
}
