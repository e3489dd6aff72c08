#include "messagingtestsupport.h"

namespace MessagingTest {
BX_IMPLEMENT_RTTI(CMsgA, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgB, &CMsgA::RTTI)
BX_IMPLEMENT_RTTI(CMsgC, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgDiamond, &CMsgA::RTTI, &CMsgC::RTTI)
BX_IMPLEMENT_RTTI(CMsgNobody, &VoMessage::RTTI)
}  // namespace MessagingTest
