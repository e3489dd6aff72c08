// A same-thread notifier: it calls every VoObserver registered for a
// notification type directly, inside NotifyObservers, in registration order.
// No queues, no threads, no dispatcher.
//
//   class CDocument : public VoObservable { ... };
//   class CView : public VoObserver {
//       void onNotify(VoObservable&, const VoObservableMessage& m, void* data) override { redraw(); }
//   };
//   CDocument document;  CView view;
//   view.Observe(document, VoObservableMessage::eMT_1, nullptr, 0);
//   document.NotifyObservers(VoObservableMessage::eMT_1, nullptr);   // view.onNotify runs now
//
// A walk notifies the entries present when it began; an observer added by a
// callback is first called by the next notification, one removed by a
// callback is skipped at once. Removed entries are only marked (observer set
// to null) while a notification runs, and unlinked when the outermost
// notification ends (the nesting counter, shared by all types, drops to 0);
// outside any notification they are unlinked at once. Callbacks may notify
// again (nesting). Not thread-safe: an observable and its observers belong to
// one thread.
#pragma once

#include <vobase/messaging/voobservablemessage.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>

#include <array>
#include <cstddef>

class VoObserver;

/// A same-thread notifier: it calls every VoObserver registered for a notification type directly, inside
/// NotifyObservers, in registration order.
class VOBASE_API VoObservable
{
public:
    /// The notification types (0 to 22), as in VoObservableMessage.
    using EMessageType = VoObservableMessage::EMessageType;

    /// One registration of an observer for one type.
    struct VoObserverInfo
    {
        VoObserver* observer;  ///< null once removed (unlinked by the next purge)
        void* userData;        ///< given at registration, handed back in every message
        int oneShot;           ///< non-zero: removed before its first notification is delivered
    };
    /// The registrations of one type, in registration order.
    using ObserverList = BxListEx<VoObserverInfo>;

    VoObservable();
    VoObservable(const VoObservable&) = delete;
    VoObservable& operator=(const VoObservable&) = delete;
    /// Unregisters every observer (they forget this observable).
    virtual ~VoObservable();

    /// Bytes held by the observable and its lists.
    virtual std::size_t GetMemoryUsage() const;

    /// Calls every observer of `type` with a message of (type, its registration
    /// user data) and `userData`; one-shot observers are unregistered first.
    void NotifyObservers(EMessageType type, void* userData);
    /// Calls every observer of the message's type with `message` as it is;
    /// the one-shot flag is not consulted.
    void SendMessageW(const VoObservableMessage& message, void* userData);

    /// Non-zero when `observer` is registered for any type.
    int IsObserver(const VoObserver& observer) const;
    /// Non-zero when `observer` is registered for `type`.
    int IsObserver(const VoObserver& observer, EMessageType type) const;

    /// Entries of the type's list, removed but not yet unlinked ones included.
    std::size_t GetObserverCount(EMessageType type) const;
    /// The type's list in registration order.
    const ObserverList& GetObserverList(EMessageType type) const;

private:
    friend class VoObserver;

    /// Appends a registration unless the observer is already in the type's
    /// list; true when it was appended.
    bool addObserver(VoObserver& observer, EMessageType type, void* userData, int oneShot);
    bool addObserver(VoObserver& observer, EMessageType type, int oneShot);
    /// Registers for all 23 types in order; true when anything was appended.
    bool addObserver(VoObserver& observer, void* userData, int oneShot);
    bool addObserver(VoObserver& observer, int oneShot);
    /// Removes the observer from every list (true when it was in one).
    bool removeObserver(const VoObserver& observer);
    /// Removes the observer from the type's list (true when it was there).
    bool removeObserver(const VoObserver& observer, EMessageType type);
    /// Removes every observer and makes each forget this observable.
    void removeObservers();

    template <class MakeMessage>
    void notify(EMessageType type, void* userData, bool honourOneShot, MakeMessage makeMessage);
    void purge(ObserverList& list);
    ObserverList& list(EMessageType type);
    const ObserverList& list(EMessageType type) const;

    std::array<ObserverList, VoObservableMessage::eMessageTypeCount> m_observers;
    unsigned int m_nesting = 0;  ///< notifications in progress, all types together
};
