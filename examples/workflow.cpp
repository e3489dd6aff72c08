// A workflow idle -> review -> done, driven by command messages: "Import" is
// an automatic transfer function that runs on the thread pool; "Edit" is an
// interactive one that stays open until the application ends it. The main
// thread owns the workflow manager and pumps its messages.
#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/voworkflowmanager.h>

#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/windows/bxmessageloop.h>

#include <cstdio>
#include <functional>

constexpr std::uint64_t c_Import = 0x8101, c_Edit = 0x8102;  // command ids

struct CState : VoWorkflowState  // a named state that reports when it is entered
{
    explicit CState(const char* name) : name(name) {}
    void onAfterEnter() override { std::printf("state: %s\n", name); }
    const char* name;
    BX_DECLARE_RTTI()
};
BX_IMPLEMENT_RTTI_ABSTRACT(CState, &VoWorkflowState::RTTI)

class CImport : public VoTransferFunctionAutomatic
{
public:
    explicit CImport(const VoMessageHandlerBase& manager)
        : VoTransferFunctionAutomatic(manager, new VoMessageCommand(c_Import), false, false, L"Import") {}
protected:
    void execute(const VoMessageWorkflowAction&) override { std::printf("Import runs on pool thread %u\n", GetCurrentThreadId()); }
};

class CEdit : public VoTransferFunctionInteractive
{
public:
    CEdit() : VoTransferFunctionInteractive(new VoMessageCommand(c_Edit), false, true, L"Edit") {}
    void onInit(const VoMessageWorkflowAction& message) override { VoTransferFunctionInteractive::onInit(message), std::printf("Edit: editor open\n"); }
    void onExit() override { std::printf("Edit: editor closed\n"), VoTransferFunctionInteractive::onExit(); }
};

/// Pumps this thread's messages until `done` holds.
void pumpUntil(const std::function<bool()>& done)
{
    while (!done())
        BxMessageLoop::ProcessPending(INFINITE);
}

int main()
{
    if (!VoMessageDispatcher::GetInstance().StartAndWait())
        return 1;
    BxSmartPointer<VoWorkflowState> idle(new CState("idle")), review(new CState("review")), done(new CState("done"));
    VoWorkflowManager manager(L"ExampleWorkflow", VoWorkflowManager::eWMF_BufferMessages);
    BxSmartPointer<CEdit> edit(new CEdit);
    for (const auto& state : {idle, review, done})
        manager.RegisterWorkflowState(state);  // the first one whose conditions hold is where it starts
    manager.RegisterTransferFunction(idle, review, BxSmartPointer<VoTransferFunctionAutomatic>(new CImport(manager)));
    manager.RegisterTransferFunction(review, done, BxSmartPointer<VoTransferFunctionInteractive>(edit));
    if (!manager.initMessageHandler() || manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Get() != 1)
        return 1;

    std::printf("main thread %u posts Import\n", GetCurrentThreadId());
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageCommand(c_Import)));
    pumpUntil([&] { return manager.GetCurrentState() == review; });

    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageCommand(c_Edit)));
    pumpUntil([&] { return edit->IsRunning(); });
    std::printf("the user finishes editing\n");
    VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
    pumpUntil([&] { return manager.GetCurrentState() == done; });

    const bool reached = manager.GetCurrentState() == done;  // then shut down in order
    manager.Stop();
    manager.UnsubscribeAll();
    manager.destroyMessageHandler().Ignore();
    VoMessageDispatcher::GetInstance().ShutdownAndWait(INFINITE);
    std::printf("workflow finished in done: %s\n", reached ? "yes" : "no");
    return reached ? 0 : 1;
}
