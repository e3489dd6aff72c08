#include <vobase/objects/vodatanodeint64.h>

template class VoDataNode<BxInt64>;

BX_IMPLEMENT_RTTI(VoDataNodeInt64, &VoDataNodeBase::RTTI)

VoDataNodeInt64::VoDataNodeInt64() : VoDataNodeInt64(L"__noname") {}

VoDataNodeInt64::VoDataNodeInt64(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxInt64>(name.c_str(), BxMakeSmartPointer<BxInt64>(), serializeLeaves, mode)
{
}
