#include <vobase/objects/vodatanodeint8.h>

template class VoDataNode<BxInt8>;

BX_IMPLEMENT_RTTI(VoDataNodeInt8, &VoDataNodeBase::RTTI)

VoDataNodeInt8::VoDataNodeInt8() : VoDataNodeInt8(L"__noname") {}

VoDataNodeInt8::VoDataNodeInt8(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxInt8>(name.c_str(), BxMakeSmartPointer<BxInt8>(), serializeLeaves, mode)
{
}
