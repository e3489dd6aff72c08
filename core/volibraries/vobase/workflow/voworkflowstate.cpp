#include <vobase/workflow/voworkflowstate.h>

BX_IMPLEMENT_RTTI(VoWorkflowState)

void VoWorkflowState::AddCondition(BxSmartPointer<const VoWorkflowStateCondition> condition, bool value)
{
    m_conditions[std::move(condition)] = value;
}

bool VoWorkflowState::RemoveCondition(const BxSmartPointer<const VoWorkflowStateCondition>& condition)
{
    return m_conditions.erase(condition) != 0;
}
