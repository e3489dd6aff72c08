#include <vobase/objects/vodatanodebool.h>

template class VoDataNode<BxBool>;

BX_IMPLEMENT_RTTI(VoDataNodeBool, &VoDataNodeBase::RTTI)

VoDataNodeBool::VoDataNodeBool() : VoDataNodeBool(L"__noname") {}

VoDataNodeBool::VoDataNodeBool(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxBool>(name.c_str(), BxMakeSmartPointer<BxBool>(), serializeLeaves, mode)
{
}
