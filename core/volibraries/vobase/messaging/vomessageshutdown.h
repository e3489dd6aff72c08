// Asks the message dispatcher to shut down: it unsubscribes every handler,
// empties its registry and ends its thread. Only the dispatcher understands
// it; use VoMessageDispatcher::ShutdownAndWait rather than sending it.
#pragma once

#include <vobase/messaging/vomessage.h>

/// Asks the message dispatcher to shut down: it unsubscribes every handler, empties its registry and ends its
/// thread.
class VOBASE_API VoMessageShutDown : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    VoMessageShutDown() = default;
    VoMessageShutDown(const VoMessageShutDown&) = default;
    VoMessageShutDown(VoMessageShutDown&&) noexcept = default;
    VoMessageShutDown& operator=(const VoMessageShutDown&) = default;
    VoMessageShutDown& operator=(VoMessageShutDown&&) noexcept = default;
    ~VoMessageShutDown() override = default;
};
