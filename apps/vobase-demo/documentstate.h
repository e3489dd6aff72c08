// A state of the document's workflow ("idle", "processing", "done"). Each
// time the workflow enters it, it appends its name to a journal, so that the
// path the document took can be checked and shown.
//
//   std::vector<std::wstring> journal;
//   BxSmartPointer<VoWorkflowState> idle(new CDocumentState(L"idle", journal));
#pragma once

#include <vobase/workflow/voworkflowstate.h>

#include <string>
#include <vector>

class CDocumentState : public VoWorkflowState
{
    BX_DECLARE_RTTI();

public:
    /// The state `name`, writing to `journal` (which must outlive the
    /// state and is touched on the workflow manager's thread only).
    CDocumentState(std::wstring name, std::vector<std::wstring>& journal);

    /// The state's name.
    const std::wstring& GetName() const noexcept { return m_name; }

    /// Appends the name to the journal.
    void onAfterEnter() override;

private:
    std::wstring m_name;
    std::vector<std::wstring>& m_journal;
};
