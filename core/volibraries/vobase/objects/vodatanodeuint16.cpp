#include <vobase/objects/vodatanodeuint16.h>

template class VoDataNode<BxUInt16>;

BX_IMPLEMENT_RTTI(VoDataNodeUInt16, &VoDataNodeBase::RTTI)

VoDataNodeUInt16::VoDataNodeUInt16() : VoDataNodeUInt16(L"__noname") {}

VoDataNodeUInt16::VoDataNodeUInt16(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxUInt16>(name.c_str(), BxMakeSmartPointer<BxUInt16>(), serializeLeaves, mode)
{
}
