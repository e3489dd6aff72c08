// Receives the notifications of the observables it registered with
// (VoObservable). It keeps one element per registration so that it can
// unregister itself; the destructor unregisters everything.
//
//   class CView : public VoObserver {
//   protected:
//       void onNotify(VoObservable& source, const VoObservableMessage& message, void* callerData) override;
//   };
//   view.Observe(document, 0);                                  // all 23 types
//   view.Observe(document, VoObservableMessage::eMT_4, &tag, 1); // one type, one shot
//   view.Unobserve(document, VoObservableMessage::eMT_4);        // true: it was registered
//
// Observing a type a second time changes nothing (the first user data and
// one-shot flag stay). Same thread as the observable only.
#pragma once

#include <vobase/messaging/voobservablemessage.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>

#include <cstddef>

class VoObservable;

/// Receives the notifications of the observables it registered with (VoObservable).
class VOBASE_API VoObserver
{
public:
    /// The notification types (0 to 22), as in VoObservableMessage.
    using EMessageType = VoObservableMessage::EMessageType;

    /// One registration: where, with which user data, for which type, one-shot or not.
    struct SObservableElement
    {
        /// The observable registered with (not owned; a dying observable removes the element).
        VoObservable* observable;
        /// The user data given at registration.
        void* userData;
        /// The notification type registered for.
        EMessageType type;
        /// Non-zero: the registration ends before its first notification is delivered.
        int oneShot;
    };

    VoObserver() = default;
    VoObserver(const VoObserver&) = delete;
    VoObserver& operator=(const VoObserver&) = delete;
    /// Unregisters from every observable.
    virtual ~VoObserver();

    /// Registers for all 23 types (0 to 22), user data null.
    void Observe(VoObservable& observable, int oneShot);
    /// Registers for all 23 types with the given user data.
    void Observe(VoObservable& observable, void* userData, int oneShot);
    /// Registers for one type, user data null.
    void Observe(VoObservable& observable, EMessageType type, int oneShot);
    /// Registers for one type with the given user data.
    void Observe(VoObservable& observable, EMessageType type, void* userData, int oneShot);

    /// Removes every registration; true when there was one.
    bool Unobserve();
    /// Removes the registrations for `type` at every observable.
    bool Unobserve(EMessageType type);
    /// Removes every registration at `observable`.
    bool Unobserve(VoObservable& observable);
    /// Removes the registration for `type` at `observable`.
    bool Unobserve(VoObservable& observable, EMessageType type);

    /// Number of registrations (one per observable and type).
    std::size_t GetObservableCount() const noexcept { return m_elements.size(); }

protected:
    /// Called by `observable`, on its thread, with the message and the
    /// notifying caller's user data.
    virtual void onNotify(VoObservable& observable, const VoObservableMessage& message, void* userData) = 0;

private:
    friend class VoObservable;

    /// Removes the matching elements and their registrations at the observables.
    template <class Match>
    bool unobserveIf(Match match);
    /// Called by a dying observable: drops the elements that refer to it.
    void forgetObservable(const VoObservable& observable);

    BxList<SObservableElement> m_elements;  ///< one per registration
};
