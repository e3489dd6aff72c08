#include <vobase/objects/vodatanodeint32.h>

template class VoDataNode<BxInt32>;

BX_IMPLEMENT_RTTI(VoDataNodeInt32, &VoDataNodeBase::RTTI)

VoDataNodeInt32::VoDataNodeInt32() : VoDataNodeInt32(L"__noname") {}

VoDataNodeInt32::VoDataNodeInt32(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxInt32>(name.c_str(), BxMakeSmartPointer<BxInt32>(), serializeLeaves, mode)
{
}
