#include <vobase/objects/vodatanodechar.h>

template class VoDataNode<BxChar>;

BX_IMPLEMENT_RTTI(VoDataNodeChar, &VoDataNodeBase::RTTI)

VoDataNodeChar::VoDataNodeChar() : VoDataNodeChar(L"__noname") {}

VoDataNodeChar::VoDataNodeChar(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxChar>(name.c_str(), BxMakeSmartPointer<BxChar>(), serializeLeaves, mode)
{
}
