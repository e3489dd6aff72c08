#include <vobase/history/vooperationabsolute.h>

BX_IMPLEMENT_RTTI_ABSTRACT(VoOperationAbsolute, &VoOperation::RTTI)
