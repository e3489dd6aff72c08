// What the message dispatcher tells its interceptors at a subscription
// change: the handler and the type record (VoMessageCommand::RTTI for
// command subscriptions).
//
//   void CAudit::OnSubscribe(const Messaging::CContext& c) override {
//       log(c.GetMessageHandler()->GetName(), c.GetRTTI()->GetName());
//   }
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/interceptor/icontext.h>

class BxRTTI;
class VoMessageHandlerBase;

namespace Messaging {

/// What the message dispatcher tells its interceptors at a subscription change: the handler and the type record
/// (VoMessageCommand::RTTI for command subscriptions).
class VOBASE_API CContext : public Interceptor::IContext
{
public:
    /// The context of one subscription change of `handler` for the type record `rtti`; neither is owned.
    CContext(VoMessageHandlerBase* handler, const BxRTTI* rtti) noexcept : m_handler(handler), m_rtti(rtti) {}

    /// The handler that subscribes or unsubscribes; valid during the interceptor call.
    VoMessageHandlerBase* GetMessageHandler() const noexcept { return m_handler; }
    /// The message class concerned; VoMessageCommand::RTTI for a subscription by command id.
    const BxRTTI* GetRTTI() const noexcept { return m_rtti; }

private:
    VoMessageHandlerBase* m_handler;
    const BxRTTI* m_rtti;
};

}  // namespace Messaging
