// BxExceptionUnknownExtension: an extension or interface that the object does not offer was asked for.
#pragma once

#include <bxbase/bxexception.h>

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, BxExceptionUnknownExtension, BxException);
