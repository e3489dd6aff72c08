// BxExceptionPreconditionViolation: an argument or the object's state breaks a documented precondition.
#pragma once

#include <bxbase/bxexception.h>

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, BxExceptionPreconditionViolation, BxException);
