#include <vobase/objects/vodatanodeuint32.h>

template class VoDataNode<BxUInt32>;

BX_IMPLEMENT_RTTI(VoDataNodeUInt32, &VoDataNodeBase::RTTI)

VoDataNodeUInt32::VoDataNodeUInt32() : VoDataNodeUInt32(L"__noname") {}

VoDataNodeUInt32::VoDataNodeUInt32(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxUInt32>(name.c_str(), BxMakeSmartPointer<BxUInt32>(), serializeLeaves, mode)
{
}
