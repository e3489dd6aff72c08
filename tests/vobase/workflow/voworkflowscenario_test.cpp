// Workflow manager in a whole run: a document is imported on the pool,
// annotated step by step while 100 action messages arrive from another
// thread, reviewed interactively, and repaired by an error handler when it
// is closed during review.
#include "workflowtestsupport.h"

#include <vobase/messaging/vomessagecommand.h>

#include <thread>

using namespace WorkflowTests;

namespace {

constexpr int kLoad = 1;
constexpr int kReview = 2;
constexpr int kMessages = 100;

// Posts CMsgStep(first) .. CMsgStep(first + count - 1) through the
// dispatcher from a thread of its own, in that order.
void postStepsFromAnotherThread(int first, int count)
{
    std::thread producer([first, count] {
        for (int i = first; i < first + count; ++i)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgStep(i)));
    });
    producer.join();
}

std::size_t countOf(const std::vector<std::wstring>& lines, const std::wstring& text)
{
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), text));
}

std::ptrdiff_t indexOf(const std::vector<std::wstring>& lines, const std::wstring& text)
{
    const auto it = std::find(lines.begin(), lines.end(), text);
    return it == lines.end() ? -1 : it - lines.begin();
}

void runDocumentScenario(bool buffering, const wchar_t* name)
{
    CProbeManager manager(name, buffering ? VoWorkflowManager::eWMF_BufferMessages : VoWorkflowManager::eWMF_None);
    ASSERT_TRUE(manager.initMessageHandler());
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger);
    manager.SetLogger(logger);
    CJournal journal;

    // What the dispatcher delivered of the CMsgStep messages, with the manager's answers.
    std::vector<int> deliveredValues;
    std::vector<LRESULT> answers;
    manager.delivered = [&](const VoMessage& message, LRESULT answer) {
        if (!message.IsKindOf(CMsgStep::RTTI))
            return;
        deliveredValues.push_back(static_cast<const CMsgStep&>(message).value);
        answers.push_back(answer);
    };

    // import: nothing loaded; process: loaded, not yet reviewed; review: loaded and reviewed.
    BxSmartPointer<CFlag> loaded(new CFlag(false, L"loaded")), reviewed(new CFlag(false, L"reviewed"));
    BxSmartPointer<CJournalState> import(new CImportStep), process(new CProcessStep), review(new CReviewStep);
    for (const auto& state : {import, process, review}) {
        state->journal = &journal;
        manager.RegisterWorkflowState(state);
    }
    manager.RegisterWorkflowStateCondition(import, loaded, false);
    manager.RegisterWorkflowStateCondition(import, reviewed, false);
    manager.RegisterWorkflowStateCondition(process, loaded, true);
    manager.RegisterWorkflowStateCondition(process, reviewed, false);
    manager.RegisterWorkflowStateCondition(review, loaded, true);
    manager.RegisterWorkflowStateCondition(review, reviewed, true);

    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(kLoad), false, false, L"Load",
                                                     [&](const VoMessageWorkflowAction&) { loaded->value = true; }));
    load->gate.Reset();  // the import lasts until the test has sent its messages
    BxSmartPointer<CScriptedTF> annotate(new CScriptedTF(manager, new CMsgStep, false, true, L"Annotate"));
    BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(kReview), false, false, L"Review", journal));
    edit->exitBody = [&] { reviewed->value = true; };
    BxSmartPointer<CScriptedTF> reset(new CScriptedTF(manager, new CMsgStep, false, true, L"Reset",
                                                      [&](const VoMessageWorkflowAction&) { reviewed->value = false; }));
    manager.RegisterTransferFunction(import, process, load);
    manager.RegisterTransferFunction(process, process, annotate);
    manager.RegisterTransferFunction(process, review, edit);
    manager.RegisterErrorHandler(review, reset);

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    EXPECT_EQ(manager.GetCurrentState(), import);

    // 1. Import on the pool; 100 steps arrive meanwhile.
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(kLoad)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    EXPECT_FALSE(manager.GetStateEvent().IsSet());
    postStepsFromAnotherThread(0, kMessages);
    ASSERT_TRUE(pumpUntil([&] { return deliveredValues.size() == kMessages; }));
    std::vector<int> inOrder(kMessages);
    for (int i = 0; i < kMessages; ++i)
        inOrder[static_cast<std::size_t>(i)] = i;
    EXPECT_EQ(deliveredValues, inOrder);
    EXPECT_EQ(answers, std::vector<LRESULT>(kMessages, buffering ? 0 : kFail));
    EXPECT_EQ(manager.GetBufferedCount(), buffering ? std::size_t{kMessages} : 0u);
    EXPECT_FALSE(manager.GetCurrentState());  // still importing
    EXPECT_TRUE(annotate->Values().empty());

    // 2. The import ends: process is entered, then the steps are replayed in order.
    load->gate.Set();
    const std::vector<int> expectedSteps = buffering ? inOrder : std::vector<int>{};
    ASSERT_TRUE(pumpUntil([&] {
        return manager.GetCurrentState() == process && annotate->Values().size() == expectedSteps.size() &&
               manager.GetBufferedCount() == 0;
    }));
    EXPECT_EQ(annotate->Values(), expectedSteps);
    EXPECT_TRUE(manager.GetStateEvent().IsSet());
    {
        const std::vector<std::wstring> lines = logger->Messages();
        EXPECT_EQ(countOf(lines, L"Push message 'CMsgStep' to buffer"), buffering ? std::size_t{kMessages} : 0u);
        EXPECT_EQ(countOf(lines, L"Pop message 'CMsgStep' from buffer"), buffering ? std::size_t{kMessages} : 0u);
        const std::ptrdiff_t entered = indexOf(lines, L"Entering workflow state 'CProcessStep'");
        ASSERT_GE(entered, 0);
        if (buffering) {
            EXPECT_LT(entered, indexOf(lines, L"Pop message 'CMsgStep' from buffer"));
        }
    }

    // 3. Interactive review; one more step arrives while it runs; sleep and
    //    continue reach it; its exit runs on the pool.
    journal.Clear();
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(kReview)).Get(), 1);
    EXPECT_TRUE(edit->IsRunning());
    postStepsFromAnotherThread(kMessages, 1);
    ASSERT_TRUE(pumpUntil([&] { return deliveredValues.size() == kMessages + 1; }));
    EXPECT_EQ(answers.back(), buffering ? 0 : kFail);
    EXPECT_FALSE(manager.Stop());  // an interactive transfer function without break support refuses the stop
    EXPECT_TRUE(manager.IsStarted());
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);
    EXPECT_TRUE(edit->IsSleeping());
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_FALSE(edit->IsSleeping());
    VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == review && manager.GetBufferedCount() == 0; }));
    EXPECT_EQ(journal.Entries(),
              (std::vector<std::wstring>{L"Review::onInit", L"Review::onSleep", L"Review::onContinue",
                                         L"Review::onExit", L"CProcessStep::onAfterDifferentWFSLeft",
                                         L"CReviewStep::onBeforeDifferentWFSReached", L"CReviewStep::onAfterEnter"}));
    EXPECT_TRUE(reviewed->value.load());
    EXPECT_EQ(annotate->Values(), expectedSteps);  // review has no transfer function for a step
    EXPECT_EQ(countOf(logger->Messages(), L"Pop message 'CMsgStep' from buffer"),
              buffering ? std::size_t{kMessages + 1} : 0u);

    // 4. The document is closed during review: no state holds, review's error
    //    handler resets the review and the workflow goes back to import.
    loaded->value = false;
    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(reset->Values().size(), 1u);
    EXPECT_EQ(manager.GetCurrentState(), import);
    EXPECT_EQ(logger->Messages(),
              (std::vector<std::wstring>{
                  L"Received message 'VoMessageWorkflow' (VoMessageWorkflow (eM_Reevaluate))",
                  L"Leaving workflow state 'CReviewStep'", L"Entering workflow state 'CImportStep' active"}));
    EXPECT_EQ(manager.errors, 0);

    EXPECT_TRUE(manager.Stop());
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_EQ(journal.Entries().back(), L"CImportStep::onExit");
    manager.UnsubscribeAll();
}

class WorkflowScenario : public WorkflowFixture
{
};

}  // namespace

TEST_F(WorkflowScenario, WithBufferingEveryStepIsHandledInOrderOnceTheTargetIsEntered)
{
    runDocumentScenario(true, L"WfSDocumentBuffered");
}

TEST_F(WorkflowScenario, WithoutBufferingStepsDuringATransferFunctionAreRefused)
{
    runDocumentScenario(false, L"WfSDocumentUnbuffered");
}
