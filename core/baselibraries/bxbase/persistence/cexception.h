// Persistence::CException: a failure of reading or writing the persistence
// form (malformed JSON, a missing entry, a value of the wrong type or range).
#pragma once

#include <bxbase/bxexception.h>

namespace Persistence {

BX_DEFINE_EXCEPTION_CLASS(BXBASE_API, CException, BxException);

}  // namespace Persistence
