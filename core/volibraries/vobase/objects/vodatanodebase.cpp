#include <vobase/objects/vodatanodebase.h>

BX_IMPLEMENT_RTTI(VoDataNodeBase, &VoNode::RTTI)

VoDataNodeBase::VoDataNodeBase() = default;

VoDataNodeBase::VoDataNodeBase(const wchar_t* name) : VoNode(name, true, eTMM_Track) {}

VoDataNodeBase::VoDataNodeBase(const wchar_t* name, bool serializeLeaves) : VoNode(name, serializeLeaves, eTMM_Track)
{
}

VoDataNodeBase::VoDataNodeBase(const wchar_t* name, bool serializeLeaves, ETrackModificationMode mode)
    : VoNode(name, serializeLeaves, mode)
{
}
