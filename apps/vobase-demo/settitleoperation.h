// Undoable edit: gives the document a new title. It is absolute (it sets the
// title outright), so reverting restores the title it replaced.
//
//   BxSmartPointer<VoOperation> rename(new CSetTitleOperation(manager, document.GetTitleNode(), L"New"));
//   rename->ApplyWithLocking();          // write-locks the title node
#pragma once

#include <vobase/history/vooperationabsolute.h>
#include <vobase/objects/vodatanodestring.h>

#include <string>

class CSetTitleOperation : public VoOperationAbsolute
{
public:
    /// Sets `node`'s text to `title`; `manager` guards the node.
    CSetTitleOperation(VoDataManager& manager, BxSmartPointer<VoDataNodeString> node, std::wstring title);

    /// Keeps the current title and sets the new one.
    bool Apply() override;
    /// Puts the kept title back; false before the first Apply.
    bool Revert() override;

private:
    BxSmartPointer<VoDataNodeString> m_node;
    std::wstring m_title;
    std::wstring m_previous;
    bool m_applied = false;
};
