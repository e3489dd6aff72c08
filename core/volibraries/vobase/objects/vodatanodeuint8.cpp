#include <vobase/objects/vodatanodeuint8.h>

template class VoDataNode<BxUInt8>;

BX_IMPLEMENT_RTTI(VoDataNodeUInt8, &VoDataNodeBase::RTTI)

VoDataNodeUInt8::VoDataNodeUInt8() : VoDataNodeUInt8(L"__noname") {}

VoDataNodeUInt8::VoDataNodeUInt8(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxUInt8>(name.c_str(), BxMakeSmartPointer<BxUInt8>(), serializeLeaves, mode)
{
}
