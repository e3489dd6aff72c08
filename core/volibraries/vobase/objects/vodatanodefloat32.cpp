#include <vobase/objects/vodatanodefloat32.h>

template class VoDataNode<BxFloat32>;

BX_IMPLEMENT_RTTI(VoDataNodeFloat32, &VoDataNodeBase::RTTI)

VoDataNodeFloat32::VoDataNodeFloat32() : VoDataNodeFloat32(L"__noname") {}

VoDataNodeFloat32::VoDataNodeFloat32(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxFloat32>(name.c_str(), BxMakeSmartPointer<BxFloat32>(), serializeLeaves, mode)
{
}
