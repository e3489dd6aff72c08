// Type records of the workflow tests' states and messages.
#include "workflowtestsupport.h"

namespace WorkflowTests {

BX_IMPLEMENT_RTTI(CImportStep, &VoWorkflowState::RTTI)
BX_IMPLEMENT_RTTI(CProcessStep, &VoWorkflowState::RTTI)
BX_IMPLEMENT_RTTI(CReviewStep, &VoWorkflowState::RTTI)
BX_IMPLEMENT_RTTI_CLONABLE(CMsgStep, &VoMessageWorkflowAction::RTTI)

}  // namespace WorkflowTests
