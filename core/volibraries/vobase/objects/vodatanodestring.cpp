#include <vobase/objects/vodatanodestring.h>

template class VoDataNode<BxString>;

BX_IMPLEMENT_RTTI(VoDataNodeString, &VoDataNodeBase::RTTI)

VoDataNodeString::VoDataNodeString() : VoDataNodeString(L"__noname") {}

VoDataNodeString::VoDataNodeString(const CStringW& name, bool serializeLeaves, ETrackModificationMode mode)
    : VoDataNode<BxString>(name.c_str(), BxMakeSmartPointer<BxString>(), serializeLeaves, mode)
{
}
