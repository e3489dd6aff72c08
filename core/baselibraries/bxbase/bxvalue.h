// The framework's value classes: reference-counted, registered in the type
// registry under their class names, each holding one value.
//
//   BxBool bool           BxInt8  int8_t    BxUInt8  uint8_t    BxLong  int32_t (Windows long)
//   BxChar char           BxInt16 int16_t   BxUInt16 uint16_t   BxULong uint32_t (Windows unsigned long)
//   BxFloat32 float       BxInt32 int32_t   BxUInt32 uint32_t   BxString std::wstring
//   BxFloat64 double      BxInt64 int64_t   BxUInt64 uint64_t
//
//   std::unique_ptr<IObject> made = BxRTTI::CreateByName(L"BxFloat64");
//   auto* value = dynamic_cast<BxFloat64*>(made.get());
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxvaluet.h>

#include <cstdint>
#include <string>

#define BX_DECLARE_VALUE_CLASS(Name, Type)       \
    class BXBASE_API Name : public BxValueT<Type> \
    {                                            \
    public:                                      \
        using BxValueT<Type>::BxValueT;          \
        using BxValueT<Type>::operator=;         \
        BX_DECLARE_RTTI()                        \
    }

BX_DECLARE_VALUE_CLASS(BxBool, bool);
BX_DECLARE_VALUE_CLASS(BxChar, char);
BX_DECLARE_VALUE_CLASS(BxFloat32, float);
BX_DECLARE_VALUE_CLASS(BxFloat64, double);
BX_DECLARE_VALUE_CLASS(BxInt8, std::int8_t);
BX_DECLARE_VALUE_CLASS(BxInt16, std::int16_t);
BX_DECLARE_VALUE_CLASS(BxInt32, std::int32_t);
BX_DECLARE_VALUE_CLASS(BxInt64, std::int64_t);
BX_DECLARE_VALUE_CLASS(BxUInt8, std::uint8_t);
BX_DECLARE_VALUE_CLASS(BxUInt16, std::uint16_t);
BX_DECLARE_VALUE_CLASS(BxUInt32, std::uint32_t);
BX_DECLARE_VALUE_CLASS(BxUInt64, std::uint64_t);
BX_DECLARE_VALUE_CLASS(BxLong, std::int32_t);
BX_DECLARE_VALUE_CLASS(BxULong, std::uint32_t);
BX_DECLARE_VALUE_CLASS(BxString, std::wstring);

#undef BX_DECLARE_VALUE_CLASS
