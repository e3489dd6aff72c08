#include <vobase/objects/vodatanodeuint64.h>

template class VoDataNode<BxUInt64>;

BX_IMPLEMENT_RTTI(VoDataNodeUInt64, &VoDataNodeBase::RTTI)

VoDataNodeUInt64::VoDataNodeUInt64() : VoDataNodeUInt64(L"__noname") {}

VoDataNodeUInt64::VoDataNodeUInt64(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxUInt64>(name.c_str(), BxMakeSmartPointer<BxUInt64>(), serializeLeaves, mode)
{
}
