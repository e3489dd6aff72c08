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
    explicit VoMessageRunnable(BxSmartPointer<IRunnable> runnable);
    VoMessageRunnable(const VoMessageRunnable&) = default;
    VoMessageRunnable(VoMessageRunnable&&) noexcept = default;
    VoMessageRunnable& operator=(const VoMessageRunnable&) = default;
    VoMessageRunnable& operator=(VoMessageRunnable&&) noexcept = default;
    ~VoMessageRunnable() override = default;

    /// The carried runnable (may be null).
    const BxSmartPointer<IRunnable>& GetRunnable() const noexcept { return m_runnable; }

private:
    BxSmartPointer<IRunnable> m_runnable;
};
