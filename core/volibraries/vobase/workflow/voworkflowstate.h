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
    /// Each condition (shared) with the value it must evaluate to for the state to hold.
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

    /// The workflow starts in this state (`sleeping`: it started asleep). Manager's thread, under its lock.
    virtual void onInit(bool /*sleeping*/) {}
    /// This state has become the current one (at the start, after a transfer function, on a change found by
    /// continue or re-evaluate).
    virtual void onAfterEnter() {}
    /// A transfer function from another state is about to enter this one.
    virtual void onBeforeDifferentWFSReached() {}
    /// A transfer function has left this state for another one (`sleeping`: the workflow sleeps).
    virtual void onAfterDifferentWFSLeft(bool /*sleeping*/) {}
    /// The workflow wakes in this state (its messages are subscribed again).
    virtual void onContinue() {}
    /// The workflow goes to sleep in this state (its messages are no longer subscribed).
    virtual void onSleep() {}
    /// The workflow stops in this state.
    virtual void onExit() {}
    /// A re-evaluation found this state current; `changed`: it became current by that evaluation.
    virtual void onReevaluate(bool /*changed*/) {}
    /// A callback of this state threw: the BxException, or null for a foreign exception. The step fails
    /// afterwards as usual; this is only for the state's own clean-up.
    virtual void onException(const BxException* /*exception*/) {}

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    Conditions m_conditions;
};
