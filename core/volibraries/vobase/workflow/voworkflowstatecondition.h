// A condition of workflow states: a state holds when each of its conditions
// evaluates to the value the state asks for (VoWorkflowState::AddCondition).
//
//   class CHasImage : public VoWorkflowStateCondition {
//   protected:
//       bool check() const override { return document.HasImage(); }
//       void dump(BxStreamWriteASCIIT<CStringW>& s) const override { s << L"has image"; }
//   };
//   condition->Evaluate();              // calls check, remembers the answer
//   condition->GetLatestEvaluation();   // eTS_True
//
// Evaluate is called by the workflow manager under its lock; the latest
// evaluation is an atomic, so any thread may read it.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxidumpable.h>
#include <bxbase/ireferencecounted.h>

#include <atomic>
#include <cstdint>

/// A condition of workflow states: a state holds when each of its conditions evaluates to the value the state
/// asks for (VoWorkflowState::AddCondition).
class VOBASE_API VoWorkflowStateCondition : public IReferenceCounted, public BxIDumpable<1>
{
public:
    /// The latest evaluation (32-bit).
    enum ETriState : std::uint32_t
    {
        eTS_NotEvaluated = 0,
        eTS_True = 1,
        eTS_False = 2
    };

    VoWorkflowStateCondition() = default;
    VoWorkflowStateCondition(const VoWorkflowStateCondition&) = delete;
    VoWorkflowStateCondition& operator=(const VoWorkflowStateCondition&) = delete;
    ~VoWorkflowStateCondition() override = default;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// Calls check, stores eTS_True or eTS_False and returns the answer.
    bool Evaluate() const;
    /// eTS_NotEvaluated until the first Evaluate, then its latest answer.
    ETriState GetLatestEvaluation() const noexcept { return m_latest.load(std::memory_order_acquire); }

protected:
    /// The test itself.
    virtual bool check() const = 0;
    /// Writes a description (default: "VoWorkflowStateCondition").
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    mutable std::atomic<ETriState> m_latest{eTS_NotEvaluated};
};
