// An operation that sets its object's state outright (it is absolute by
// construction). VoHistory::GetLastAbsoluteOperation finds the latest one of
// an object, from which the object's current state can be read.
//
//   class CSetText : public VoOperationAbsolute {
//   public:
//       CSetText(CText& t, std::wstring text) : m_target(t), m_old(t.value), m_new(std::move(text)) {}
//       bool Apply() override { m_target.value = m_new; return true; }
//       bool Revert() override { m_target.value = m_old; return true; }
//       const std::wstring& GetText() const { return m_new; }
//       ...
//   };
#pragma once

#include <vobase/history/vooperation.h>
#include <vobase/vobaseapi.h>

/// An operation that sets its object's state outright (it is absolute by construction).
class VOBASE_API VoOperationAbsolute : public VoOperation
{
    BX_DECLARE_RTTI()

public:
    /// An absolute operation, reversible unless told otherwise.
    explicit VoOperationAbsolute(bool reversible = true) : VoOperation(reversible, true) {}
};
