#include "settitleoperation.h"

CSetTitleOperation::CSetTitleOperation(VoDataManager& manager, BxSmartPointer<VoDataNodeString> node, std::wstring title)
    : m_node(std::move(node)), m_title(std::move(title))
{
    SetDataManager(&manager);
    AddNodePointerToLock(m_node);
}

bool CSetTitleOperation::Apply()
{
    if (!m_applied)
        m_previous = m_node->GetData()->Get();
    m_applied = true;
    m_node->GetData()->Set(m_title);
    return true;
}

bool CSetTitleOperation::Revert()
{
    if (!m_applied)
        return false;
    m_node->GetData()->Set(m_previous);
    return true;
}
