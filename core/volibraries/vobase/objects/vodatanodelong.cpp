#include <vobase/objects/vodatanodelong.h>

template class VoDataNode<BxLong>;

BX_IMPLEMENT_RTTI(VoDataNodeLong, &VoDataNodeBase::RTTI)

VoDataNodeLong::VoDataNodeLong() : VoDataNodeLong(L"__noname") {}

VoDataNodeLong::VoDataNodeLong(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxLong>(name.c_str(), BxMakeSmartPointer<BxLong>(), serializeLeaves, mode)
{
}
