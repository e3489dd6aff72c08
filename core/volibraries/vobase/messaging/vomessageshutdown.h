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
    /// Copies nothing (the message has no fields); the copy is a new message with a fresh ID.
    VoMessageShutDown(const VoMessageShutDown&) = default;
    /// Moves nothing (the message has no fields); the new message gets a fresh ID.
    VoMessageShutDown(VoMessageShutDown&&) noexcept = default;
    /// Copies nothing (the message has no fields); this message takes a fresh ID.
    VoMessageShutDown& operator=(const VoMessageShutDown&) = default;
    /// Moves nothing (the message has no fields); this message takes a fresh ID.
    VoMessageShutDown& operator=(VoMessageShutDown&&) noexcept = default;
    ~VoMessageShutDown() override = default;
};
