#include "msganswer.h"

BX_IMPLEMENT_RTTI(CMsgAnswer, &VoMessage::RTTI)
