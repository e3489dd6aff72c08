// Workflow condition: the document holds samples. The "idle" state asks for
// it, so a workflow can only start on a document that has something to process.
#pragma once

#include "document.h"

#include <vobase/workflow/voworkflowstatecondition.h>

class CDocumentHasSamples : public VoWorkflowStateCondition
{
public:
    /// A condition on `document`, which must outlive it.
    explicit CDocumentHasSamples(const CDocument& document) : m_document(document) {}

protected:
    /// True when the document has at least one sample (read under a lock).
    bool check() const override { return m_document.GetSampleCount() > 0; }
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override { stream << L"document has samples"; }

private:
    const CDocument& m_document;
};
