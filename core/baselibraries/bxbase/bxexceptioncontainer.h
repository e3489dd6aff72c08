// BxExceptionContainer: misuse of a container: an index out of range, a missing key, an empty container.
#pragma once

#include <bxbase/bxexception.h>

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, BxExceptionContainer, BxException);
