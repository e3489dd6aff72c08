#include <vobase/objects/vodatanodeint16.h>

template class VoDataNode<BxInt16>;

BX_IMPLEMENT_RTTI(VoDataNodeInt16, &VoDataNodeBase::RTTI)

VoDataNodeInt16::VoDataNodeInt16() : VoDataNodeInt16(L"__noname") {}

VoDataNodeInt16::VoDataNodeInt16(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxInt16>(name.c_str(), BxMakeSmartPointer<BxInt16>(), serializeLeaves, mode)
{
}
