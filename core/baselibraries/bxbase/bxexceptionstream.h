// BxExceptionStream: an input or output failure or a malformed format; every stream failure.
#pragma once

#include <bxbase/bxexception.h>

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, BxExceptionStream, BxException);
