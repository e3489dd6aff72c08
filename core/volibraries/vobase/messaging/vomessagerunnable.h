// Carries an IRunnable to whichever handler subscribes to VoMessageRunnable;
// that handler typically runs it on its own thread.
//
//   BxSmartPointer<IRunnable> job(new CRefresh);
//   VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageRunnable(job)));
//   // in the subscriber's handleMessage:
//   if (message.IsKindOf(VoMessageRunnable::RTTI))
//       static_cast<const VoMessageRunnable&>(message).GetRunnable()->Run();
#pragma once

#include <vobase/messaging/irunnable.h>
#include <vobase/messaging/vomessage.h>

#include <bxbase/bxsmartpointer.h>

/// Carries an IRunnable to whichever handler subscribes to VoMessageRunnable; that handler typically runs it on
/// its own thread.
class VOBASE_API VoMessageRunnable : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    VoMessageRunnable() = default;
    /// Carries `runnable`, sharing its ownership; the message holds a reference until it is destroyed.
    explicit VoMessageRunnable(BxSmartPointer<IRunnable> runnable);
    /// Copies the runnable reference (both messages share the runnable); the copy is a new message with a fresh ID.
    VoMessageRunnable(const VoMessageRunnable&) = default;
    /// Moves the runnable reference (both messages share the runnable); the new message gets a fresh ID.
    VoMessageRunnable(VoMessageRunnable&&) noexcept = default;
    /// Copies the runnable reference (both messages share the runnable); this message takes a fresh ID.
    VoMessageRunnable& operator=(const VoMessageRunnable&) = default;
    /// Moves the runnable reference (both messages share the runnable); this message takes a fresh ID.
    VoMessageRunnable& operator=(VoMessageRunnable&&) noexcept = default;
    ~VoMessageRunnable() override = default;

    /// The carried runnable (may be null).
    const BxSmartPointer<IRunnable>& GetRunnable() const noexcept { return m_runnable; }

private:
    BxSmartPointer<IRunnable> m_runnable;
};
