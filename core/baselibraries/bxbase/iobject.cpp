#include <bxbase/bxrtti.h>
#include <bxbase/iobject.h>

const wchar_t* IObject::GetClassNameW() const { return GetRTTI().GetName(); }

bool IObject::Is(const BxRTTI& rtti) const { return &GetRTTI() == &rtti; }

bool IObject::IsKindOf(const BxRTTI& rtti) const { return GetRTTI().IsKindOf(rtti); }
