#include "documentstate.h"

BX_IMPLEMENT_RTTI_ABSTRACT(CDocumentState, &VoWorkflowState::RTTI)

CDocumentState::CDocumentState(std::wstring name, std::vector<std::wstring>& journal)
    : m_name(std::move(name)), m_journal(journal)
{
}

void CDocumentState::onAfterEnter()
{
    m_journal.push_back(m_name);
}
