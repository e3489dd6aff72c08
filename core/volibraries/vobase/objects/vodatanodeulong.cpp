#include <vobase/objects/vodatanodeulong.h>

template class VoDataNode<BxULong>;

BX_IMPLEMENT_RTTI(VoDataNodeULong, &VoDataNodeBase::RTTI)

VoDataNodeULong::VoDataNodeULong() : VoDataNodeULong(L"__noname") {}

VoDataNodeULong::VoDataNodeULong(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxULong>(name.c_str(), BxMakeSmartPointer<BxULong>(), serializeLeaves, mode)
{
}
