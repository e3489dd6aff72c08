#include <vobase/messaging/vomessagerunnable.h>

#include <utility>

BX_IMPLEMENT_RTTI(VoMessageRunnable, &VoMessage::RTTI)

VoMessageRunnable::VoMessageRunnable(BxSmartPointer<IRunnable> runnable) : m_runnable(std::move(runnable)) {}
