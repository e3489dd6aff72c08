// A transfer function moves a workflow from one state to another. It is
// triggered by an action message that equals its init message (the
// message's operator== decides). Derive from VoTransferFunctionAutomatic or
// VoTransferFunctionInteractive.
//
//   BxSmartPointer<const VoMessageWorkflowAction> init(new VoMessageCommand(ID_IMPORT));
//   tf->isInitMessage(VoMessageCommand(ID_IMPORT));   // true
//   tf->GetName();                                   // L"Import" (empty when none was given)
//
// The fields are set at construction and never change; the hooks run on the
// thread the workflow manager chooses (see VoWorkflowManager).
#pragma once

#include <vobase/messaging/vomessageworkflowaction.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>
#include <bxbase/ireferencecounted.h>

/// A transfer function moves a workflow from one state to another.
class VOBASE_API VoTransferFunction : public IReferenceCounted
{
public:
    /// A transfer function without a name, triggered by messages equal to `initMessage` (shared); `breakSupport`
    /// says whether it can be broken off. A null init message throws BxExceptionPreconditionViolation.
    VoTransferFunction(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport);
    /// The same with a name, which the manager's log lines and dumps show. A null init message throws
    /// BxExceptionPreconditionViolation.
    VoTransferFunction(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                       const CStringW& name);
    VoTransferFunction(const VoTransferFunction&) = delete;
    VoTransferFunction& operator=(const VoTransferFunction&) = delete;
    ~VoTransferFunction() override = default;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }
    /// The type record (L"VoTransferFunction"); derived classes may return their own.
    static const BxRTTI RTTI;
    /// The type record of the object's class (RTTI here; the automatic and interactive kinds return theirs).
    virtual const BxRTTI& GetRTTI() const { return RTTI; }

    /// The message that triggers this transfer function (never null).
    const BxSmartPointer<const VoMessageWorkflowAction>& GetInitMessage() const noexcept { return m_initMessage; }
    /// The name (empty when none was given).
    const CStringW& GetName() const noexcept { return m_name; }
    /// True when the transfer function can be broken off (Break, eM_Break).
    bool hasBreakSupport() const noexcept { return m_breakSupport; }
    /// True when the init message's operator== accepts `message`.
    bool isInitMessage(const VoMessageWorkflowAction& message) const { return *m_initMessage == message; }

    /// Called when the transfer function is registered with a manager; `started` tells whether that manager's
    /// workflow is running. Empty.
    virtual void onRegistration(bool /*started*/) {}
    /// Called when the transfer function is unregistered from a manager; `started` tells whether that manager's
    /// workflow is running. Empty.
    virtual void onUnregistration(bool /*started*/) {}
    /// Hook before a run, for derived classes that drive runs themselves; empty. The workflow manager does not
    /// call it.
    virtual void onBeforeRun() {}
    /// Hook after a run, the counterpart of onBeforeRun; empty. The workflow manager does not call it.
    virtual void onAfterRun() {}
    /// Asked to break off; empty here.
    virtual void onBreak() {}
    /// An exception of the run: the BxException, or null for a foreign one; empty.
    virtual void onException(const BxException* /*exception*/) {}

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    bool m_breakSupport;
    BxSmartPointer<const VoMessageWorkflowAction> m_initMessage;
    CStringW m_name;
};
