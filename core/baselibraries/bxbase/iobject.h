// Root interface of the classes registered in the type registry.
//
// A registered class declares BX_DECLARE_RTTI() in its body and
// BX_IMPLEMENT_RTTI(...) in its source file (see bxrtti.h); it can then be
// asked for its record, its class name and whether it is of a given class.
//
//   std::unique_ptr<IObject> object = BxRTTI::Find(L"BxInt32")->CreateObject();
//   if (object->IsKindOf(BxInt32::RTTI)) { ... }
#pragma once

#include <bxbase/bxbaseapi.h>

class BxRTTI;

/// Root interface of the classes registered in the type registry.
class BXBASE_API IObject
{
public:
    virtual ~IObject() = default;

    /// The registry record of the object's dynamic class.
    virtual const BxRTTI& GetRTTI() const = 0;

    /// The wide name of the object's dynamic class, as registered.
    virtual const wchar_t* GetClassNameW() const;

    /// True when the object's class is exactly the record's class.
    bool Is(const BxRTTI& rtti) const;

    /// True when the object's class is the record's class or derives from it.
    bool IsKindOf(const BxRTTI& rtti) const;
};
