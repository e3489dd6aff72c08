// Workflow manager: transfer-function basics, a blocking transition with its logs, the
// error handler at the start, stop with break during a pooled transfer function.
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/voworkflowmanager.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/diagnostics/bxtracerecorder.h>
#include <bxbase/windows/bxmessageloop.h>

#include <gtest/gtest.h>

#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace {

class CMsgItem : public VoMessageWorkflowAction
{
    BX_DECLARE_RTTI();

public:
    explicit CMsgItem(int value = 0) : value(value) {}
    bool operator==(const VoMessage& other) const override { return other.IsKindOf(CMsgItem::RTTI); }
    int value;
};
BX_IMPLEMENT_RTTI_CLONABLE(CMsgItem, &VoMessageWorkflowAction::RTTI)

class CImport : public VoWorkflowState
{
    BX_DECLARE_RTTI();
};
BX_IMPLEMENT_RTTI(CImport, &VoWorkflowState::RTTI)

class CProcess : public VoWorkflowState
{
    BX_DECLARE_RTTI();
};
BX_IMPLEMENT_RTTI(CProcess, &VoWorkflowState::RTTI)

class CLogger : public Logging::ILogger
{
public:
    bool IsEnabled(Logging::ELogLevel) const override { return true; }
    void Log(Logging::ELogLevel, const char*, int, const char*, const std::wstring& message) override
    {
        std::lock_guard lock(m_lock);
        lines.push_back(message);
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }
    std::vector<std::wstring> lines;

private:
    std::mutex m_lock;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

// Records the value of each message it runs for; optionally waits for a gate first.
class CRecordingTF : public VoTransferFunctionAutomatic
{
public:
    CRecordingTF(const VoMessageHandlerBase& handler, VoMessageWorkflowAction* init, bool blocking, const wchar_t* name)
        : VoTransferFunctionAutomatic(handler, BxSmartPointer<const VoMessageWorkflowAction>(init), true, blocking, name)
    {
    }
    std::vector<int> Values() const
    {
        std::lock_guard lock(m_lock);
        return m_values;
    }
    BxEvent started, gate{true};
    int exceptions = 0;
    bool throwIt = false;

protected:
    void execute(const VoMessageWorkflowAction& message) override
    {
        started.Set();
        gate.Wait();
        if (throwIt)
            throw BxException(__FILE__, __LINE__, "CRecordingTF::execute");
        std::lock_guard lock(m_lock);
        m_values.push_back(message.IsKindOf(CMsgItem::RTTI) ? static_cast<const CMsgItem&>(message).value : -1);
    }
    void onException(const BxException* exception) override { exceptions += exception ? 1 : 100; }

private:
    mutable std::mutex m_lock;  // guards m_values: execute may run on a pool thread
    std::vector<int> m_values;
};

class CTrue : public VoWorkflowStateCondition
{
public:
    bool result = true;

protected:
    bool check() const override { return result; }
};

class WorkflowTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (!VoMessageDispatcher::GetInstance().IsRunning()) {
            ASSERT_TRUE(VoMessageDispatcher::GetInstance().StartAndWait());
        }
    }
};

std::int64_t start(VoWorkflowManager& manager)
{
    return manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Get();
}

}  // namespace

TEST(WorkflowMessages, DumpTextsNameEachValue)
{
    EXPECT_EQ(VoMessageWorkflow(VoMessageWorkflow::eM_Reevaluate).ToString(), L"VoMessageWorkflow (eM_Reevaluate)");
    EXPECT_EQ(VoMessageWorkflow(static_cast<VoMessageWorkflow::EMessage>(8)).ToString(), L"VoMessageWorkflow (?\?\?)");
    EXPECT_EQ(VoMessageWorkflowEndOfTF().ToString(), L"VoMessageWorkflowEndOfTF (eM_EndOfATF)");
    EXPECT_STREQ(VoMessageWorkflowEndOfTF::GetName(2), L"eM_EndOfITFExit");
    EXPECT_STREQ(VoMessageWorkflowEndOfTF::GetName(3), L"???");
}

TEST_F(WorkflowTest, TransferFunctionBasics)
{
    VoWorkflowManager manager(L"WfBasics", VoWorkflowManager::eWMF_None);
    try {
        CRecordingTF tf(manager, nullptr, true, L"x");
        FAIL();
    } catch (const BxExceptionPreconditionViolation& e) {
        EXPECT_EQ(e.GetLine(), 82);
        EXPECT_EQ(e.GetFunctionName(), "VoTransferFunction::VoTransferFunction");
    }
    BxSmartPointer<CRecordingTF> tf(new CRecordingTF(manager, new CMsgItem(7), true, L"Rec"));
    tf->SetMessage(CMsgItem(3));
    tf->Run();
    tf->Run();  // the first run cleared the current message: the init message is used
    EXPECT_EQ(tf->Values(), (std::vector<int>{3, 7}));
    tf->Break();
    EXPECT_TRUE(tf->isBreak());
    tf->throwIt = true;
    tf->Run();  // nothing escapes; the break event was reset
    EXPECT_EQ(tf->exceptions, 1);
    EXPECT_FALSE(tf->isBreak());
    EXPECT_FALSE(tf->getMessage());

    class CNoBreak : public VoTransferFunctionAutomatic
    {
    public:
        using VoTransferFunctionAutomatic::VoTransferFunctionAutomatic;
        void execute(const VoMessageWorkflowAction&) override {}
    } noBreak(manager, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgItem), false, true);
    noBreak.Break();
    EXPECT_FALSE(noBreak.isBreak());

    VoTransferFunctionInteractive itf(BxSmartPointer<const VoMessageWorkflowAction>(new CMsgItem), false, true);
    itf.onSleep();
    itf.onContinue();  // not running: sleeping stays
    EXPECT_TRUE(itf.IsSleeping());
    itf.onInit(CMsgItem());
    itf.onContinue();
    EXPECT_FALSE(itf.IsSleeping());
    itf.onExit();
    EXPECT_FALSE(itf.IsRunning());

    CTrue condition;
    EXPECT_EQ(condition.GetLatestEvaluation(), VoWorkflowStateCondition::eTS_NotEvaluated);
    condition.result = false;
    EXPECT_FALSE(condition.Evaluate());
    EXPECT_EQ(condition.GetLatestEvaluation(), VoWorkflowStateCondition::eTS_False);
}

TEST_F(WorkflowTest, BlockingTransitionLogsAndEntersTarget)
{
    VoWorkflowManager manager(L"WfBlocking", VoWorkflowManager::eWMF_None);
    BxSmartPointer<CLogger> logger(new CLogger);
    manager.SetLogger(logger);
    BxSmartPointer<VoWorkflowState> import(new CImport), process(new CProcess);
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowState(process);
    class CBlocking : public VoTransferFunctionAutomatic
    {
    public:
        using VoTransferFunctionAutomatic::VoTransferFunctionAutomatic;
        void execute(const VoMessageWorkflowAction&) override {}
    };
    BxSmartPointer<VoTransferFunctionAutomatic> load(
        new CBlocking(manager, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgItem), false, true, L"Load"));
    manager.RegisterTransferFunction(import, process, load);

    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Continue)).Get(), 0);  // not started
    ASSERT_EQ(start(manager), 1);
    EXPECT_TRUE(manager.GetStateEvent().IsSet());
    EXPECT_EQ(manager.GetCurrentState(), import);
    logger->lines.clear();
    EXPECT_EQ(manager.HandleMessage(CMsgItem(1)).Get(), 1);
    EXPECT_EQ(manager.GetCurrentState(), process);  // ended and entered before HandleMessage returned
    EXPECT_TRUE(manager.GetStateEvent().IsSet());
    const std::vector<std::wstring> expected{
        L"Received message 'CMsgItem' (CMsgItem)",
        L"Leaving workflow state 'CImport'",
        L"Starting automatic transferfunction 'Load' blocking",
        L"Ending transfer function 'Load'",
        L"Calling 'CImport::onAfterDifferentWFSLeft'",
        L"Calling 'CProcess::onBeforeDifferentWFSReached'",
        L"Entering workflow state 'CProcess'"};
    EXPECT_EQ(logger->lines, expected);

    BxStreamWriteASCIIStringT<CStringW> out;
    manager.dump(out);
    EXPECT_NE(out.GetString().find(L"\t- current state:             started\n"), std::wstring::npos);
    EXPECT_NE(out.GetString().find(L"\t- current workflow state: CProcess\n"), std::wstring::npos);
    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Get(), 1);
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(static_cast<VoMessageWorkflow::EMessage>(9))).Get(),
              static_cast<std::int32_t>(0x80004005));
}

TEST_F(WorkflowTest, ErrorHandlerRepairsTheStartOrTheStartFails)
{
    class CFix : public VoTransferFunctionAutomatic
    {
    public:
        CFix(const VoMessageHandlerBase& handler, CTrue& condition)
            : VoTransferFunctionAutomatic(handler, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgItem), false,
                                          true, L"Fix"),
              m_condition(condition)
        {
        }

    protected:
        void execute(const VoMessageWorkflowAction&) override { m_condition.result = true; }

    private:
        CTrue& m_condition;
    };
    for (bool withHandler : {false, true}) {
        VoWorkflowManager manager(withHandler ? L"WfErrorFixed" : L"WfErrorFails", VoWorkflowManager::eWMF_None);
        BxSmartPointer<CLogger> logger(new CLogger);
        manager.SetLogger(logger);
        BxSmartPointer<CTrue> ready(new CTrue);
        ready->result = false;
        BxSmartPointer<VoWorkflowState> import(new CImport);
        manager.RegisterWorkflowState(import);
        manager.RegisterWorkflowStateCondition(import, ready, true);
        if (withHandler)
            manager.RegisterErrorHandler(BxSmartPointer<VoTransferFunctionAutomatic>(new CFix(manager, *ready)));
        EXPECT_EQ(start(manager), withHandler ? 1 : 0);
        EXPECT_EQ(manager.IsStarted(), withHandler);
        EXPECT_EQ(logger->lines.back(), withHandler ? L"Calling 'CImport::onInit'"
                                                     : L"Could not start workflow manager 'WfErrorFails'");
        BxStreamWriteASCIIStringT<CStringW> out;
        manager.dumpConditions(out);
        EXPECT_NE(out.GetString().find(withHandler ? L"\t- true      " : L"\t- false     "), std::wstring::npos);
        if (withHandler) {
            EXPECT_TRUE(manager.Stop());
        }
        manager.UnsubscribeAll();
    }
}

namespace {
class CCountingInterceptor : public Workflow::IInterceptorWorkflowManager
{
public:
    void OnStart(const Workflow::CContextStart&) override { ++starts; }
    void OnStop(const Workflow::CContextStop&) override { ++stops; }
    void OnStateChange(const Workflow::CContextStateChange&) override { ++changes; }
    void OnTransferFunctionStart(const Workflow::CContextTransferFunction&) override { ++tfStarts; }
    void OnTransferFunctionEnd(const Workflow::CContextTransferFunction& c) override
    {
        ++tfEnds;
        lastEnded = c.GetTransferFunction()->GetName();
    }
    int starts = 0, stops = 0, changes = 0, tfStarts = 0, tfEnds = 0;
    std::wstring lastEnded;
};
}  // namespace

TEST_F(WorkflowTest, StopDuringAPooledTransferFunctionBreaksItAndStopsAtItsEnd)
{
    VoWorkflowManager manager(L"WfStopPending", VoWorkflowManager::eWMF_BufferMessages);
    ASSERT_TRUE(manager.initMessageHandler());
    auto hooks = std::make_shared<CCountingInterceptor>();
    manager.GetDispatcher()->Add(hooks);
    BxSmartPointer<VoWorkflowState> import(new CImport), process(new CProcess);
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowState(process);
    EXPECT_THROW(manager.RegisterTransferFunction(import, BxSmartPointer<VoWorkflowState>(new CProcess),
                                                  BxSmartPointer<VoTransferFunctionAutomatic>()),
                 BxExceptionPreconditionViolation);
    BxSmartPointer<CRecordingTF> load(new CRecordingTF(manager, new CMsgItem, false, L"Load"));
    load->gate = load->getBreakEvent();  // runs until broken off
    load->gate.Reset();
    manager.RegisterTransferFunction(import, process, BxSmartPointer<VoTransferFunctionAutomatic>(load.get()));
    ASSERT_EQ(start(manager), 1);

    // A stray end while resting in a state changes nothing.
    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflowEndOfTF()).Get(), 0);
    EXPECT_EQ(manager.GetCurrentState(), import);

    EXPECT_EQ(manager.HandleMessage(CMsgItem(1)).Get(), 1);
    ASSERT_TRUE(load->started.Wait());
    EXPECT_EQ(manager.HandleMessage(CMsgItem(2)).Get(), 0);  // buffered
    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Dump)).Get(), 1);
    EXPECT_TRUE(manager.Stop());  // break support: the break event ends execute, the stop follows
    for (int round = 0; round < 2000 && manager.IsStarted(); ++round)
        BxMessageLoop::ProcessPending(50);
    EXPECT_FALSE(manager.IsStarted());
    EXPECT_FALSE(manager.GetCurrentState());
    EXPECT_FALSE(manager.GetCurrentTransferFunction());
    EXPECT_EQ(hooks->starts, 1);
    EXPECT_EQ(hooks->stops, 1);
    EXPECT_EQ(hooks->tfStarts, 1);
    EXPECT_EQ(hooks->tfEnds, 1);
    EXPECT_EQ(hooks->lastEnded, L"Load");
    EXPECT_TRUE(manager.Unregister(BxSmartPointer<VoTransferFunction>(load.get())));
    EXPECT_FALSE(manager.Unregister(BxSmartPointer<VoTransferFunction>(load.get())));
    manager.UnsubscribeAll();
}

TEST_F(WorkflowTest, TransitionsAreTracedAsInstantsInTheirOrder)
{
    VoWorkflowManager manager(L"WfTraced", VoWorkflowManager::eWMF_None);
    BxSmartPointer<VoWorkflowState> import(new CImport), process(new CProcess);
    manager.RegisterWorkflowState(import);
    manager.RegisterWorkflowState(process);
    class CBlocking : public VoTransferFunctionAutomatic
    {
    public:
        using VoTransferFunctionAutomatic::VoTransferFunctionAutomatic;
        void execute(const VoMessageWorkflowAction&) override {}
    };
    manager.RegisterTransferFunction(import, process, BxSmartPointer<VoTransferFunctionAutomatic>(new CBlocking(
        manager, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgItem), false, true, L"Load")));

    BxTraceRecorder::Start();
    ASSERT_EQ(start(manager), 1);
    EXPECT_EQ(manager.HandleMessage(CMsgItem(1)).Get(), 1);
    EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Get(), 1);
    BxTraceRecorder::Stop();
    std::ostringstream out;
    BxTraceRecorder::Write(out);
    BxTraceRecorder::Clear();

    const std::string trace = out.str();
    std::size_t at = 0;
    for (const char* step : {"started in CImport", "entered CImport", "left CImport", "transfer function Load",
                             "end of transfer function Load", "entered CProcess", "stopped", "left CProcess"}) {
        const std::size_t found = trace.find("{\"name\":\"" + std::string(step) + "\",\"cat\":\"workflow\",\"ph\":\"i\"", at);
        ASSERT_NE(found, std::string::npos) << step << " missing or out of order";
        at = found;
    }
}
