// Workflow manager: re-evaluation, sleep and continue, interactive callbacks,
// dumps, exception logs, error handlers, stop and break.
#include "workflowtestsupport.h"

#include <vobase/messaging/vomessagecommand.h>

using namespace WorkflowTests;

namespace {

using Lines = std::vector<std::wstring>;

// import holds while no image is loaded, process once one is, review once
// it is loaded and reviewed: registered in that order.
struct SDocumentWorkflow
{
    SDocumentWorkflow(CProbeManager& manager, CJournal& journal)
        : loaded(new CFlag(false, L"image loaded")), reviewed(new CFlag(false, L"reviewed")),
          import(new CImportStep), process(new CProcessStep), review(new CReviewStep)
    {
        for (const auto& state : {import, process, review}) {
            state->journal = &journal;
            manager.RegisterWorkflowState(state);
        }
        manager.RegisterWorkflowStateCondition(import, loaded, false);
        manager.RegisterWorkflowStateCondition(process, loaded, true);
        manager.RegisterWorkflowStateCondition(review, loaded, true);
        manager.RegisterWorkflowStateCondition(review, reviewed, true);
    }
    BxSmartPointer<CFlag> loaded, reviewed;
    BxSmartPointer<CJournalState> import, process, review;
};

// Two states without conditions (both always hold), registered import first.
struct SPlainWorkflow
{
    SPlainWorkflow(CProbeManager& manager, CJournal& journal) : import(new CImportStep), process(new CProcessStep)
    {
        for (const auto& state : {import, process}) {
            state->journal = &journal;
            manager.RegisterWorkflowState(state);
        }
    }
    BxSmartPointer<CJournalState> import, process;
};

std::wstring received(const VoMessage& message)
{
    return L"Received message '" + std::wstring(message.GetClassNameW()) + L"' (" + message.ToString() + L")";
}

std::wstring received(VoMessageWorkflow::EMessage message)
{
    return received(VoMessageWorkflow(message));
}

// The lines of `text`, without their line feeds.
Lines splitLines(const std::wstring& text)
{
    Lines lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(L'\n', start)) != std::wstring::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

class WorkflowTransitions : public WorkflowFixture
{
protected:
    BxSmartPointer<CCapturingLogger> logger{new CCapturingLogger};
    CJournal journal;
};

}  // namespace

// ---------------------------------------------------------------- re-evaluation

TEST_F(WorkflowTransitions, ReevaluationSwitchesToTheFirstHoldingStateOrKeepsTheCurrentOne)
{
    CProbeManager manager(L"WfTReevaluate", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    SDocumentWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> annotate(new CScriptedTF(manager, new CMsgStep, false, true, L"Annotate"));
    manager.RegisterTransferFunction(wf.process, wf.process, annotate);

    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 0);  // not started
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    EXPECT_EQ(manager.GetCurrentState(), wf.import);
    EXPECT_EQ(manager.HandleMessage(CMsgStep(1)).Get(), 0);  // import has no transfer function for it

    // process and review both hold now; process was registered first.
    wf.loaded->value = true;
    wf.reviewed->value = true;
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Reevaluate),
                                         L"Leaving workflow state 'CImportStep'",
                                         L"Entering workflow state 'CProcessStep' active"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CProcessStep::onAfterEnter", L"CProcessStep::onReevaluate(changed)"}));
    EXPECT_EQ(manager.GetCurrentState(), wf.process);
    EXPECT_EQ(manager.GetExtendedState(), wf.process);
    EXPECT_TRUE(manager.GetStateEvent().IsSet());
    EXPECT_EQ(manager.HandleMessage(CMsgStep(2)).Get(), 1);  // the transfer functions of process apply now
    EXPECT_EQ(annotate->Values(), (std::vector<int>{2}));

    // Nothing changed: the current state is still valid and stays.
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Reevaluate)}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CProcessStep::onReevaluate(same)"}));
    EXPECT_EQ(manager.GetCurrentState(), wf.process);

    // The image is gone: back to import, whose transfer functions do not include Annotate.
    wf.loaded->value = false;
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(manager.GetCurrentState(), wf.import);
    EXPECT_EQ(manager.HandleMessage(CMsgStep(3)).Get(), 0);
    EXPECT_EQ(annotate->Values(), (std::vector<int>{2}));
    EXPECT_EQ(manager.GetWorkflowStateCondition(wf.loaded), VoWorkflowStateCondition::eTS_False);
    EXPECT_TRUE(manager.Stop());
}

TEST_F(WorkflowTransitions, ReevaluationWhileSleepingSwitchesAndContinueWakesInTheNewState)
{
    CProbeManager manager(L"WfTReevaluateAsleep", VoWorkflowManager::eWMF_BufferMessages);
    ASSERT_TRUE(manager.initMessageHandler());
    manager.SetLogger(logger);
    SDocumentWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> annotate(new CScriptedTF(manager, new CMsgStep, false, true, L"Annotate"));
    manager.RegisterTransferFunction(wf.process, wf.process, annotate);

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_StartSleeping), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_StartSleeping),
                                         L"Starting workflow manager 'WfTReevaluateAsleep' sleeping",
                                         L"Entering workflow state 'CImportStep' sleeping",
                                         L"Calling 'CImportStep::onInit'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onInit(sleeping)", L"CImportStep::onAfterEnter"}));
    EXPECT_TRUE(manager.IsSleeping());
    EXPECT_EQ(manager.HandleMessage(CMsgStep(1)).Get(), 0);  // kept while asleep
    EXPECT_EQ(manager.GetBufferedCount(), 1u);

    wf.loaded->value = true;
    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Reevaluate),
                                         L"Leaving workflow state 'CImportStep'",
                                         L"Entering workflow state 'CProcessStep' sleeping"}));
    EXPECT_TRUE(manager.IsSleeping());
    EXPECT_EQ(manager.GetBufferedCount(), 1u);  // nothing is replayed while asleep
    EXPECT_TRUE(annotate->Values().empty());

    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Continue),
                                         L"Waking workflow state 'CProcessStep'",
                                         L"Calling 'CProcessStep::onContinue'"}));
    EXPECT_TRUE(pumpUntil([&] { return annotate->Values().size() == 1; }));
    EXPECT_EQ(annotate->Values(), (std::vector<int>{1}));  // replayed in the state it was woken in
    EXPECT_EQ(manager.GetBufferedCount(), 0u);
    EXPECT_TRUE(manager.Stop());
}

// ---------------------------------------------------------------- sleep and continue

TEST_F(WorkflowTransitions, SleepAndContinueCallTheStateAndContinueActivatesAStateThatHoldsNow)
{
    CProbeManager manager(L"WfTContinueSwitch", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    SDocumentWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> annotate(new CScriptedTF(manager, new CMsgStep, false, true, L"Annotate"));
    manager.RegisterTransferFunction(wf.process, wf.process, annotate);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);  // already asleep: no second callback
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Sleep),
                                         L"Putting workflow state 'CImportStep' on hold",
                                         L"Calling 'CImportStep::onSleep'", received(VoMessageWorkflow::eM_Sleep)}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onSleep"}));
    EXPECT_TRUE(manager.IsSleeping());
    EXPECT_EQ(manager.HandleMessage(CMsgStep(1)).Get(), kFail);  // asleep and no buffering: refused

    wf.loaded->value = true;
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Continue),
                                         L"Leaving workflow state 'CImportStep'",
                                         L"Activating workflow state 'CProcessStep' active",
                                         L"Calling 'CProcessStep::onContinue'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CProcessStep::onAfterEnter", L"CProcessStep::onContinue"}));
    EXPECT_FALSE(manager.IsSleeping());
    EXPECT_EQ(manager.GetCurrentState(), wf.process);
    EXPECT_EQ(manager.GetExtendedState(), wf.process);
    EXPECT_EQ(manager.HandleMessage(CMsgStep(2)).Get(), 1);  // awake in process
    EXPECT_EQ(annotate->Values(), (std::vector<int>{2}));

    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 0);  // not asleep: nothing happens
    EXPECT_TRUE(journal.Entries().empty());
    EXPECT_TRUE(manager.Stop());
}

TEST_F(WorkflowTransitions, ATransferFunctionEndingDuringSleepLeavesTheWorkflowInItsTarget)
{
    CProbeManager manager(L"WfTSleepDuringTF", VoWorkflowManager::eWMF_BufferMessages);
    ASSERT_TRUE(manager.initMessageHandler());
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(1), false, false, L"Load"));
    load->gate.Reset();
    manager.RegisterTransferFunction(wf.import, wf.process, load);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(1)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Sleep),
                                         L"Putting automatic transfer function 'Load' on hold"}));
    EXPECT_TRUE(journal.Entries().empty());  // no state to put on hold
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);  // ignored while Load runs
    EXPECT_FALSE(manager.GetCurrentState());

    load->gate.Set();
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.process; }));
    EXPECT_TRUE(manager.IsSleeping());

    // Both states hold (they have no conditions): waking up and re-evaluating
    // keep the workflow where the transfer function brought it.
    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Continue),
                                         L"Waking workflow state 'CProcessStep'",
                                         L"Calling 'CProcessStep::onContinue'"}));
    EXPECT_EQ(manager.GetCurrentState(), wf.process);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(manager.GetCurrentState(), wf.process);
    EXPECT_TRUE(manager.Stop());
}

TEST_F(WorkflowTransitions, InteractiveTransferFunctionIsPutOnHoldWokenAndExitedBlocking)
{
    CProbeManager manager(L"WfTInteractive", VoWorkflowManager::eWMF_None);
    ASSERT_TRUE(manager.initMessageHandler());
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(5), false, true, L"Edit", journal));
    manager.RegisterTransferFunction(wf.import, wf.process, edit);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    logger->Clear();
    journal.Clear();
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(5)).Get(), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageCommand(5)), L"Leaving workflow state 'CImportStep'",
                                         L"Starting interactive transfer function 'Edit'",
                                         L"Calling 'Edit::onInit'"}));
    EXPECT_FALSE(manager.GetStateEvent().IsSet());
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_EQ(manager.GetCurrentMessage()->ToString(), VoMessageCommand(5).ToString());

    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_EQ(logger->Messages(),
              (Lines{received(VoMessageWorkflow::eM_Sleep), L"Putting interactive transfer function 'Edit' on hold",
                     L"Calling 'Edit::onSleep'", received(VoMessageWorkflow::eM_Continue),
                     L"Waking interactive transfer function 'Edit'", L"Calling 'Edit::onContinue'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"Edit::onInit", L"Edit::onSleep", L"Edit::onContinue"}));
    EXPECT_TRUE(edit->IsRunning());
    EXPECT_FALSE(edit->IsSleeping());

    logger->Clear();
    journal.Clear();
    VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.process; }));
    EXPECT_EQ(logger->Messages(),
              (Lines{L"Received message 'VoMessageWorkflowEndOfTF' (VoMessageWorkflowEndOfTF (eM_EndOfITF))",
                     L"Starting 'Edit::onExit' blocking", L"Calling 'Edit::onExit'", L"Ending transfer function 'Edit'",
                     L"Calling 'CImportStep::onAfterDifferentWFSLeft'",
                     L"Calling 'CProcessStep::onBeforeDifferentWFSReached'", L"Entering workflow state 'CProcessStep'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"Edit::onExit", L"CImportStep::onAfterDifferentWFSLeft",
                                        L"CProcessStep::onBeforeDifferentWFSReached", L"CProcessStep::onAfterEnter"}));
    EXPECT_FALSE(edit->IsRunning());
    EXPECT_TRUE(manager.IsLastEndInteractive());
    EXPECT_FALSE(manager.GetCurrentMessage());
    EXPECT_TRUE(manager.Stop());
}

// ---------------------------------------------------------------- dumps

TEST_F(WorkflowTransitions, DumpsShowStateTransferFunctionMessageAndConditionsExactly)
{
    CProbeManager manager(L"WfTDump", VoWorkflowManager::eWMF_BufferMessages);
    ASSERT_TRUE(manager.initMessageHandler());
    manager.SetLogger(logger);
    BxSmartPointer<CFlag> loaded(new CFlag(false, L"image loaded"));
    BxSmartPointer<CJournalState> import(new CImportStep), process(new CProcessStep);
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowState(process);
    manager.RegisterWorkflowStateCondition(import, loaded, false);
    manager.RegisterWorkflowStateCondition(process, loaded, true);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new CMsgStep, false, false, L"Load",
                                                     [&](const VoMessageWorkflowAction&) { loaded->value = true; }));
    load->gate.Reset();
    BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(5), false, true, L"Edit", journal));
    BxSmartPointer<CScriptedTF> annotate(new CScriptedTF(manager, new CMsgStep, false, true, L"Annotate"));
    manager.RegisterTransferFunction(import, process, load);
    manager.RegisterTransferFunction(import, process, edit);
    manager.RegisterTransferFunction(process, process, annotate);

    const std::wstring rule = std::wstring(68, L'-') + L"\n";
    const auto stateDump = [&](const wchar_t* status, const wchar_t* state, const wchar_t* tf, const wchar_t* message,
                               const wchar_t* outgoing) {
        return rule + L"Information on workflow manager 'WfTDump'\n" + L"\t- current state:             " + status +
               L"\n" + L"\t- current workflow state: " + state + L"\n" + L"\t- current transfer function: " + tf +
               L"\n" + L"\t- message:                   " + message + L"\n" + L"\t- outgoing transfer functions:\n" +
               outgoing + rule;
    };
    const auto conditionDump = [&](const wchar_t* value) {
        return rule + L"Evaluation of workflow manager 'WfTDump'\n" + L"\t- " + value + L" image loaded\n" + rule;
    };

    EXPECT_EQ(dumpText(manager), stateDump(L"not started", L"", L"", L"", L""));
    EXPECT_EQ(conditionText(manager), conditionDump(L"undefined"));

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_StartSleeping), 1);
    EXPECT_EQ(dumpText(manager), stateDump(L"started [sleeping]", L"CImportStep", L"", L"",
                                           L"\t\t- Load by CMsgStep\n\t\t- Edit by VoMessageCommand\n"));
    EXPECT_EQ(conditionText(manager), conditionDump(L"false    "));
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);

    EXPECT_EQ(manager.HandleMessage(CMsgStep(7)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    const std::wstring running = stateDump(L"started", L"", L"Load", L"CMsgStep #7", L"");
    EXPECT_EQ(dumpText(manager), running);

    // eM_Dump writes both dumps to the logger at trace level, a line each.
    logger->Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Dump), 1);
    EXPECT_EQ(logger->MessagesAt(Logging::eLL_Trace), splitLines(running + conditionDump(L"false    ")));

    load->gate.Set();
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == process; }));
    EXPECT_EQ(dumpText(manager), stateDump(L"started", L"CProcessStep", L"", L"", L"\t\t- Annotate by CMsgStep\n"));
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(conditionText(manager), conditionDump(L"true     "));
    EXPECT_TRUE(manager.Stop());
    EXPECT_EQ(dumpText(manager), stateDump(L"not started", L"", L"", L"", L""));
}

// ---------------------------------------------------------------- exceptions in transfer functions

TEST_F(WorkflowTransitions, AnExceptionInOnExitIsLoggedAndTheTargetIsEnteredAllTheSame)
{
    for (const bool blockingExit : {true, false}) {
        SCOPED_TRACE(blockingExit ? "blocking exit" : "exit on the pool");
        CProbeManager manager(blockingExit ? L"WfTExitThrowsBlocking" : L"WfTExitThrowsPooled",
                              VoWorkflowManager::eWMF_None);
        ASSERT_TRUE(manager.initMessageHandler());
        BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
        manager.SetLogger(log);
        CJournal steps;
        SPlainWorkflow wf(manager, steps);
        BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(5), false, blockingExit, L"Edit", steps));
        edit->throwOnExit = true;
        manager.RegisterTransferFunction(wf.import, wf.process, edit);
        ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
        ASSERT_EQ(manager.HandleMessage(VoMessageCommand(5)).Get(), 1);

        log->Clear();
        VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
        ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.process; }));
        EXPECT_EQ(log->MessagesAt(Logging::eLL_Error), (Lines{L"Exception in 'Edit::onExit'"}));
        const Lines expected =
            blockingExit
                ? Lines{L"Received message 'VoMessageWorkflowEndOfTF' (VoMessageWorkflowEndOfTF (eM_EndOfITF))",
                        L"Starting 'Edit::onExit' blocking", L"Calling 'Edit::onExit'",
                        L"Exception in 'Edit::onExit'", L"Ending transfer function 'Edit'"}
                : Lines{L"Received message 'VoMessageWorkflowEndOfTF' (VoMessageWorkflowEndOfTF (eM_EndOfITF))",
                        L"Starting 'Edit::onExit' non-blocking", L"Calling 'Edit::onExit'",
                        L"Exception in 'Edit::onExit'",
                        L"Received message 'VoMessageWorkflowEndOfTF' (VoMessageWorkflowEndOfTF (eM_EndOfITFExit))",
                        L"Ending transfer function 'Edit'"};
        const Lines lines = log->Messages();
        ASSERT_GE(lines.size(), expected.size());
        EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
        EXPECT_EQ(lines.back(), L"Entering workflow state 'CProcessStep'");
        EXPECT_FALSE(edit->IsRunning());
        EXPECT_EQ(manager.errors, 0);  // the work item caught it
        EXPECT_TRUE(manager.Stop());
    }
}

TEST_F(WorkflowTransitions, ExceptionsOfARunDoNotEscapeItAndItsEndIsStillReported)
{
    CProbeManager manager(L"WfTRunThrows", VoWorkflowManager::eWMF_None);
    ASSERT_TRUE(manager.initMessageHandler());
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(1), false, false, L"Load",
                                                     [](const VoMessageWorkflowAction&) {
                                                         throw BxException(__FILE__, __LINE__, "Load::execute");
                                                     }));
    load->throwFromOnException = true;  // even the exception hook fails
    manager.RegisterTransferFunction(wf.import, wf.process, load);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(1)).Get(), 1);
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.process; }));
    EXPECT_EQ(load->Exceptions(), 1);
    EXPECT_FALSE(logger->Has(L"Exception in 'Load::Run'"));  // Run kept it in
    EXPECT_TRUE(logger->MessagesAt(Logging::eLL_Error).empty());
    EXPECT_TRUE(logger->Has(L"Ending transfer function 'Load'"));
    EXPECT_FALSE(load->getMessage());
    EXPECT_TRUE(manager.Stop());
}

// ---------------------------------------------------------------- error handlers

TEST_F(WorkflowTransitions, ErrorHandlerOfTheStateRepairsAReevaluationOrTheWorkflowStops)
{
    CProbeManager manager(L"WfTReevaluateError", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    BxSmartPointer<CFlag> valid(new CFlag(true, L"document valid"));
    bool repairs = true;
    BxSmartPointer<CJournalState> import(new CImportStep), process(new CProcessStep);
    import->journal = &journal;
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowState(process);
    manager.RegisterWorkflowStateCondition(import, valid, true);
    manager.RegisterWorkflowStateCondition(process, valid, true);
    BxSmartPointer<CScriptedTF> repair(new CScriptedTF(manager, new CMsgStep, false, true, L"Repair",
                                                       [&](const VoMessageWorkflowAction&) {
                                                           if (repairs)
                                                               valid->value = true;
                                                       }));
    BxSmartPointer<CScriptedTF> fallback(new CScriptedTF(manager, new CMsgStep, false, true, L"Fallback"));
    manager.RegisterErrorHandler(import, repair);
    manager.RegisterErrorHandler(fallback);
    EXPECT_EQ(manager.GetErrorHandler(import), repair);
    EXPECT_EQ(manager.GetErrorHandler(process), fallback);  // none of its own: the one for all states
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    // No state holds: import's own handler repairs the document.
    valid->value = false;
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 1);
    EXPECT_EQ(repair->Values().size(), 1u);
    EXPECT_TRUE(fallback->Values().empty());
    EXPECT_EQ(manager.GetCurrentState(), import);
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onReevaluate(same)"}));
    EXPECT_EQ(manager.errors, 0);

    // The same while asleep: continue runs the handler and wakes in the repaired state.
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 1);
    valid->value = false;
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), 1);
    EXPECT_EQ(repair->Values().size(), 2u);
    EXPECT_FALSE(manager.IsSleeping());
    EXPECT_EQ(manager.GetCurrentState(), import);

    // The handler cannot help: the workflow stops in the state it was in.
    repairs = false;
    valid->value = false;
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Reevaluate), 0);
    EXPECT_EQ(repair->Values().size(), 3u);
    EXPECT_EQ(manager.errors, 1);
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_EQ(manager.GetExtendedState(), import);
    EXPECT_FALSE(manager.GetStateEvent().IsSet());
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Reevaluate),
                                         L"Stopping workflow manager 'WfTReevaluateError'",
                                         L"Leaving workflow state 'CImportStep'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onExit"}));
}

TEST_F(WorkflowTransitions, ContinueWithoutAHoldingStateAndWithoutHandlerFails)
{
    CProbeManager manager(L"WfTContinueError", VoWorkflowManager::eWMF_None);
    BxSmartPointer<CFlag> valid(new CFlag(true));
    BxSmartPointer<CJournalState> import(new CImportStep);
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowStateCondition(import, valid, true);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_StartSleeping), 1);
    valid->value = false;
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Continue), kFail);
    EXPECT_EQ(manager.errors, 1);
    EXPECT_TRUE(manager.Stop());
}

// ---------------------------------------------------------------- hooks and starts that fail

TEST_F(WorkflowTransitions, AFailingStartHookOrOnInitIsReportedAndAnsweredWithFail)
{
    CProbeManager manager(L"WfTHooks", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(1), false, true, L"Load"));
    BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(5), false, true, L"Edit", journal));
    edit->throwOnInit = true;
    manager.RegisterTransferFunction(wf.import, wf.process, load);
    manager.RegisterTransferFunction(wf.import, wf.process, edit);
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);

    // The manager's start hook refuses: the state is not left, Load does not run.
    manager.throwOnStartTransferFunction = true;
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(1)).Get(), kFail);
    EXPECT_EQ(manager.errors, 1);
    EXPECT_EQ(manager.GetCurrentState(), wf.import);
    EXPECT_TRUE(manager.GetStateEvent().IsSet());
    EXPECT_TRUE(load->Values().empty());
    manager.throwOnStartTransferFunction = false;

    // onInit throws: the interactive transfer function is ended at once (its
    // exit is blocking) and the target entered.
    journal.Clear();
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(5)).Get(), kFail);
    EXPECT_EQ(manager.errors, 2);
    EXPECT_EQ(journal.Entries(), (Lines{L"Edit::onInit", L"Edit::onExit", L"CImportStep::onAfterDifferentWFSLeft",
                                        L"CProcessStep::onBeforeDifferentWFSReached", L"CProcessStep::onAfterEnter"}));
    EXPECT_EQ(manager.GetCurrentState(), wf.process);
    EXPECT_FALSE(manager.GetCurrentTransferFunction());
    EXPECT_FALSE(edit->IsRunning());
    EXPECT_TRUE(manager.Stop());
}

TEST_F(WorkflowTransitions, AThrowingStateCallbackReachesTheStateAndFailsTheStep)
{
    CProbeManager manager(L"WfTStateThrows", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);

    // onInit throws: the state is left again and the start fails.
    wf.import->throwFrom = L"onInit";
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Start), 0);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Start),
                                         L"Starting workflow manager 'WfTStateThrows' active",
                                         L"Entering workflow state 'CImportStep' active",
                                         L"Calling 'CImportStep::onInit'", L"Leaving workflow state 'CImportStep'",
                                         L"Could not start workflow manager 'WfTStateThrows'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onInit(active)", L"CImportStep::onException(BxException)"}));
    EXPECT_EQ(manager.errors, 1);
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_FALSE(manager.GetStateEvent().IsSet());

    // onSleep throws something foreign: the state sees it, the sleep fails.
    wf.import->throwFrom = L"onSleep";
    wf.import->throwForeign = true;
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 0);
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onSleep", L"CImportStep::onException(foreign)"}));
    EXPECT_EQ(manager.foreignErrors, 1);
    EXPECT_EQ(manager.errors, 1);
    wf.import->throwFrom.clear();
    EXPECT_TRUE(manager.Stop());
}

// ---------------------------------------------------------------- stop

TEST_F(WorkflowTransitions, StopFromAStateEvenAsleepEndsTheWorkflowAndItCanStartAgain)
{
    CProbeManager manager(L"WfTStopState", VoWorkflowManager::eWMF_None);
    manager.SetLogger(logger);
    SPlainWorkflow wf(manager, journal);

    EXPECT_FALSE(manager.Stop());
    EXPECT_EQ(logger->Messages(), (Lines{L"Stopping workflow manager 'WfTStopState'"}));

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_StartSleeping), 1);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Start), 0);  // already started
    logger->Clear();
    journal.Clear();
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Stop), 1);
    EXPECT_EQ(logger->Messages(), (Lines{received(VoMessageWorkflow::eM_Stop),
                                         L"Stopping workflow manager 'WfTStopState'",
                                         L"Leaving workflow state 'CImportStep'"}));
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onExit"}));
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_FALSE(manager.IsSleeping());  // the stop clears every status bit
    EXPECT_FALSE(manager.GetStateEvent().IsSet());
    EXPECT_EQ(manager.GetExtendedState(), wf.import);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Sleep), 0);  // not started
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Stop), 0);

    journal.Clear();
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    EXPECT_EQ(journal.Entries(), (Lines{L"CImportStep::onInit(active)", L"CImportStep::onAfterEnter"}));
    EXPECT_FALSE(manager.IsSleeping());
    EXPECT_TRUE(manager.Stop());
}

TEST_F(WorkflowTransitions, StopDuringATransferFunctionWaitsForItsEndAndSkipsTheTarget)
{
    // An automatic one without break support runs to its end; an interactive
    // one with break support is told to break and stops when it is ended.
    CProbeManager manager(L"WfTStopPending", VoWorkflowManager::eWMF_None);
    ASSERT_TRUE(manager.initMessageHandler());
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(1), false, false, L"Load"));
    load->gate.Reset();
    BxSmartPointer<CJournalITF> edit(new CJournalITF(new VoMessageCommand(5), true, false, L"Edit", journal));
    manager.RegisterTransferFunction(wf.import, wf.process, load);
    manager.RegisterTransferFunction(wf.import, wf.process, edit);

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    journal.Clear();
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(1)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    EXPECT_TRUE(manager.Stop());
    EXPECT_TRUE(manager.IsStarted());  // not before Load has ended
    EXPECT_FALSE(load->isBreak());
    load->gate.Set();
    ASSERT_TRUE(pumpUntil([&] { return !manager.IsStarted(); }));
    EXPECT_EQ(load->Values(), (std::vector<int>{-1}));  // ran to its end
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_FALSE(manager.GetCurrentTransferFunction());
    EXPECT_EQ(manager.GetExtendedState(), wf.import);
    EXPECT_TRUE(journal.Entries().empty());  // process was never entered

    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    journal.Clear();
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(5)).Get(), 1);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Stop), 1);
    EXPECT_TRUE(manager.IsStarted());
    VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
    ASSERT_TRUE(pumpUntil([&] { return !manager.IsStarted(); }));
    EXPECT_EQ(journal.Entries(), (Lines{L"Edit::onInit", L"Edit::onBreak", L"Edit::onExit"}));
    EXPECT_FALSE(manager.GetCurrentTransferFunction());
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_EQ(manager.errors, 0);
}

// ---------------------------------------------------------------- break

TEST_F(WorkflowTransitions, BreakEndsABreakableTransferFunctionWhichStillReachesItsTarget)
{
    CProbeManager manager(L"WfTBreak", VoWorkflowManager::eWMF_None);
    ASSERT_TRUE(manager.initMessageHandler());
    SPlainWorkflow wf(manager, journal);
    BxSmartPointer<CScriptedTF> load(new CScriptedTF(manager, new VoMessageCommand(1), true, false, L"Load"));
    load->gate = load->getBreakEvent();  // runs until broken off
    load->gate.Reset();
    BxSmartPointer<CScriptedTF> save(new CScriptedTF(manager, new VoMessageCommand(2), false, false, L"Save"));
    save->gate.Reset();
    manager.RegisterTransferFunction(wf.import, wf.process, load);
    manager.RegisterTransferFunction(wf.process, wf.import, save);

    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Break), 0);  // not started
    ASSERT_EQ(send(manager, VoMessageWorkflow::eM_Start), 1);
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Break), 1);  // in a state: nothing to break
    EXPECT_EQ(manager.GetCurrentState(), wf.import);

    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(1)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    manager.throwOnBreak = true;  // the manager's break hook refuses: no break
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Break), 0);
    EXPECT_EQ(manager.errors, 1);
    EXPECT_FALSE(load->isBreak());
    manager.throwOnBreak = false;
    EXPECT_TRUE(manager.Break());
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.process; }));
    EXPECT_TRUE(manager.IsStarted());  // a break is no stop

    // Without break support the break changes nothing and the hook is not asked.
    EXPECT_EQ(manager.HandleMessage(VoMessageCommand(2)).Get(), 1);
    ASSERT_TRUE(save->started.Wait());
    manager.throwOnBreak = true;
    EXPECT_EQ(send(manager, VoMessageWorkflow::eM_Break), 1);
    EXPECT_EQ(manager.errors, 1);
    EXPECT_FALSE(save->isBreak());
    save->gate.Set();
    ASSERT_TRUE(pumpUntil([&] { return manager.GetCurrentState() == wf.import; }));
    EXPECT_TRUE(manager.Stop());
}
