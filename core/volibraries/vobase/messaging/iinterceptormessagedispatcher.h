// The hooks of the message dispatcher: told of every subscription change, on
// the dispatcher's thread, after a handler was added to a subscriber list
// and before one is removed from it.
//
//   class CAudit : public Messaging::IInterceptorMessageDispatcher {
//       void OnSubscribe(const Messaging::CContext& c) override { ... }
//   };
//   VoMessageDispatcher::GetInstance().GetDispatcher()->Add(std::make_shared<CAudit>());
//
// Every hook is empty by default, so an interceptor overrides what it needs.
#pragma once

#include <vobase/messaging/ccontext.h>
#include <vobase/vobaseapi.h>

namespace Messaging {

/// The hooks of the message dispatcher: told of every subscription change, on the dispatcher's thread, after a
/// handler was added to a subscriber list and before one is removed from it.
class VOBASE_API IInterceptorMessageDispatcher
{
public:
    virtual ~IInterceptorMessageDispatcher() = default;

    /// A handler was subscribed to a class.
    virtual void OnSubscribe(const CContext&) {}
    /// A handler was subscribed to a command id.
    virtual void OnSubscribeCommand(const CContext&) {}
    /// A handler is about to be unsubscribed from a command id.
    virtual void OnUnsubscribeCommand(const CContext&) {}
    /// A handler is about to be unsubscribed from a class.
    virtual void OnUnsubscribe(const CContext&) {}
};

}  // namespace Messaging
