// BxExceptionWrongFileVersion: a stream holds a version newer than the reader understands.
#pragma once

#include <bxbase/bxexception.h>

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, BxExceptionWrongFileVersion, BxException);
