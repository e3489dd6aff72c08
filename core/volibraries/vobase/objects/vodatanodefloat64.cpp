#include <vobase/objects/vodatanodefloat64.h>

template class VoDataNode<BxFloat64>;

BX_IMPLEMENT_RTTI(VoDataNodeFloat64, &VoDataNodeBase::RTTI)

VoDataNodeFloat64::VoDataNodeFloat64() : VoDataNodeFloat64(L"__noname") {}

VoDataNodeFloat64::VoDataNodeFloat64(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxFloat64>(name.c_str(), BxMakeSmartPointer<BxFloat64>(), serializeLeaves, mode)
{
}
