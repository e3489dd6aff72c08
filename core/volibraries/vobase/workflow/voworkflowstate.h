// A state of a workflow: it holds when each of its conditions evaluates to
// the value it asks for (a state without conditions always holds). The
// workflow manager calls its callbacks as the workflow enters, leaves,
// sleeps in or wakes in it.
//
//   class CReview : public VoWorkflowState {
//       BX_DECLARE_RTTI();
//   public:
//       void onAfterEnter() override { showReviewPanel(); }
//   };
//   manager.RegisterWorkflowState(review);
//   manager.RegisterWorkflowStateCondition(review, hasResult, true);
//
// Callbacks (all empty here), as the manager calls them: onInit(sleeping)
// when the workflow starts in the state; onAfterEnter whenever it has become
// the current state; onBeforeDifferentWFSReached before a transfer function
// from another state enters it; onAfterDifferentWFSLeft(sleeping) after a
// transfer function left it for another state; onSleep and onContinue when
// the workflow sleeps and wakes in it; onExit when the workflow stops in it;
// onReevaluate(changed) after a re-evaluation found it current
// (changed: it became current by that evaluation); onException with the
// exception a callback of this state threw (null for a foreign one).
//
// The conditions are changed only before the workflow starts and read under
// the manager's lock.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/workflow/voworkflowstatecondition.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/iobject.h>
#include <bxbase/ireferencecounted.h>

#include <map>

/// A state of a workflow: it holds when each of its conditions evaluates to the value it asks for (a state
/// without conditions always holds).
class VOBASE_API VoWorkflowState : public IReferenceCounted, public IObject
{
    BX_DECLARE_RTTI();

public:
    using Conditions = std::map<BxSmartPointer<const VoWorkflowStateCondition>, bool>;

    VoWorkflowState() = default;
    VoWorkflowState(const VoWorkflowState&) = delete;
    VoWorkflowState& operator=(const VoWorkflowState&) = delete;
    ~VoWorkflowState() override = default;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// Each condition with the value it must evaluate to.
    const Conditions& GetConditions() const noexcept { return m_conditions; }
    /// Asks `condition` to evaluate to `value` (replacing an earlier wish).
    void AddCondition(BxSmartPointer<const VoWorkflowStateCondition> condition, bool value);
    /// Forgets `condition`; false when it was not there.
    bool RemoveCondition(const BxSmartPointer<const VoWorkflowStateCondition>& condition);

    virtual void onInit(bool /*sleeping*/) {}
    virtual void onAfterEnter() {}
    virtual void onBeforeDifferentWFSReached() {}
    virtual void onAfterDifferentWFSLeft(bool /*sleeping*/) {}
    virtual void onContinue() {}
    virtual void onSleep() {}
    virtual void onExit() {}
    virtual void onReevaluate(bool /*changed*/) {}
    virtual void onException(const BxException* /*exception*/) {}

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    Conditions m_conditions;
};
