// The runtime's hook points in the trace: a scripted run (two threaded
// handlers exchanging sends and posts, a handler answered on the sender's own
// thread, pool tasks, a task graph with a fork and a join, a workflow
// transition, contended data-manager locks from two threads) is recorded,
// written, parsed as JSON and checked: spans nest and end on the thread they
// began on, every async span and every arrow has both ends, each arrow end is
// bound to a span (at its start), and the counts match what the script did.
//
// Set VOBASE_SCRIPTED_TRACE=path to keep the written trace (CI checks it with
// tools/trace_check.py).
#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vomessagehandler.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>
#include <vobase/objects/vonode.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/votaskmanager.h>
#include <vobase/workflow/voworkflowmanager.h>

#include <bxbase/diagnostics/bxtracehooks.h>
#include <bxbase/diagnostics/bxtracerecorder.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxtask.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kPings = 12;    // posts to the first handler, each answered by a send to the second
constexpr int kBoth = 5;      // posts that both handlers subscribe to
constexpr int kLocal = 3;     // sends answered on the sender's own thread
constexpr int kPoolTasks = 4; // tasks handed to the pool directly
constexpr int kGraphRuns = 2; // runs of fork -> (left, right) -> join
constexpr int kLockRounds = 6;

// --- messages and handlers --------------------------------------------------------------------

class CMsgPing : public VoMessage { BX_DECLARE_RTTI(); };
class CMsgPong : public VoMessage { BX_DECLARE_RTTI(); };
class CMsgEcho : public VoMessage { BX_DECLARE_RTTI(); };
class CMsgBoth : public VoMessage { BX_DECLARE_RTTI(); };
class CMsgLocal : public VoMessage { BX_DECLARE_RTTI(); };
BX_IMPLEMENT_RTTI(CMsgPing, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgPong, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgEcho, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgBoth, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CMsgLocal, &VoMessage::RTTI)

/// A threaded handler that counts what it handles and sets `done` when it has handled `expected` messages.
class CPlayer : public VoMessageHandlerThreaded
{
public:
    CPlayer(const wchar_t* name, int expected) : VoMessageHandlerThreaded(name, eTP_Normal), m_expected(expected) {}
    ~CPlayer() override { UnsubscribeAll(); }
    BxEvent done;

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (message.IsKindOf(CMsgPing::RTTI)) // first handler: answer a post with a send
            VoMessageDispatcher::SendMessageW(CMsgPong());
        else if (message.IsKindOf(CMsgPong::RTTI)) // second handler: answer a send with a post
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgEcho));
        else if (!message.IsKindOf(CMsgEcho::RTTI) && !message.IsKindOf(CMsgBoth::RTTI))
            return VoMessageHandlerThreaded::handleMessage(message);
        if (++m_handled == m_expected)
            done.Set();
        return 1;
    }

private:
    const int m_expected;
    std::atomic<int> m_handled{0};
};

/// A handler on the thread that makes it (the test's thread).
class CLocal : public VoMessageHandler
{
public:
    explicit CLocal(const wchar_t* name) : VoMessageHandler(name) {}
    ~CLocal() override
    {
        UnsubscribeAll();
        if (GetHWND() != nullptr)
            destroyMessageHandler().Ignore();
    }
    bool Init() { return initMessageHandler(); }
    int handled = 0;

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CMsgLocal::RTTI))
            return VoMessageHandler::handleMessage(message);
        ++handled;
        return 2;
    }
};

// --- tasks ------------------------------------------------------------------------------------

class CPoolTask : public BxTask
{
protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { return true; }
};

class CItem : public IWorkItem
{
public:
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    void Run(TaskManager::SWorkItemStatus&) override {}
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    mutable BxReferenceCounter<unsigned int> m_counter;
};

// --- workflow ---------------------------------------------------------------------------------

class CMsgGo : public VoMessageWorkflowAction
{
    BX_DECLARE_RTTI();

public:
    bool operator==(const VoMessage& other) const override { return other.IsKindOf(CMsgGo::RTTI); }
};
BX_IMPLEMENT_RTTI_CLONABLE(CMsgGo, &VoMessageWorkflowAction::RTTI)

class CTracedIdle : public VoWorkflowState { BX_DECLARE_RTTI(); };
class CTracedBusy : public VoWorkflowState { BX_DECLARE_RTTI(); };
BX_IMPLEMENT_RTTI(CTracedIdle, &VoWorkflowState::RTTI)
BX_IMPLEMENT_RTTI(CTracedBusy, &VoWorkflowState::RTTI)

class CBlockingTF : public VoTransferFunctionAutomatic
{
public:
    using VoTransferFunctionAutomatic::VoTransferFunctionAutomatic;
    void execute(const VoMessageWorkflowAction&) override {}
};

// --- the trace as the test reads it -----------------------------------------------------------

struct SEvent
{
    std::string name, cat;
    char ph = 0;
    std::uint32_t tid = 0;
    long long ts = 0, dur = 0; // nanoseconds
    std::uint64_t id = 0;
};

long long nanoseconds(const nlohmann::json& microseconds)
{
    return std::llround(microseconds.get<double>() * 1000.0);
}

std::vector<SEvent> parse(const std::string& text)
{
    const nlohmann::json document = nlohmann::json::parse(text);
    std::vector<SEvent> events;
    for (const auto& e : document.at("traceEvents"))
    {
        SEvent event;
        event.ph = e.at("ph").get<std::string>().at(0);
        if (event.ph == 'M')
            continue;
        event.name = e.at("name").get<std::string>();
        event.cat = e.value("cat", "");
        event.tid = e.at("tid").get<std::uint32_t>();
        event.ts = nanoseconds(e.at("ts"));
        if (e.contains("dur"))
            event.dur = nanoseconds(e.at("dur"));
        if (e.contains("id"))
            event.id = e.at("id").get<std::uint64_t>();
        events.push_back(event);
    }
    return events;
}

/// The complete spans of one thread nest: one that starts inside another ends inside it.
void expectNesting(const std::vector<SEvent>& events)
{
    std::map<std::uint32_t, std::vector<const SEvent*>> byThread;
    for (const SEvent& e : events)
        if (e.ph == 'X')
            byThread[e.tid].push_back(&e);
    for (auto& [tid, spans] : byThread)
    {
        std::sort(spans.begin(), spans.end(), [](const SEvent* a, const SEvent* b) {
            return a->ts != b->ts ? a->ts < b->ts : a->dur > b->dur;
        });
        std::vector<const SEvent*> stack;
        for (const SEvent* span : spans)
        {
            while (!stack.empty() && stack.back()->ts + stack.back()->dur <= span->ts)
                stack.pop_back();
            if (!stack.empty())
            {
                EXPECT_LE(span->ts + span->dur, stack.back()->ts + stack.back()->dur)
                    << "thread " << tid << ": '" << span->name << "' crosses the end of '" << stack.back()->name << "'";
            }
            stack.push_back(span);
        }
    }
}

/// True when a complete span of the arrow event's thread and category begins at its time: viewers bind
/// the arrow to that span (Perfetto to the span enclosing it, Chrome DevTools to the one of equal start).
bool boundToSpan(const std::vector<SEvent>& events, const SEvent& arrow)
{
    return std::any_of(events.begin(), events.end(), [&](const SEvent& e) {
        return e.ph == 'X' && e.tid == arrow.tid && e.cat == arrow.cat && e.ts == arrow.ts;
    });
}

std::size_t count(const std::vector<SEvent>& events, char ph, const std::string& name, std::uint32_t tid = 0)
{
    return static_cast<std::size_t>(std::count_if(events.begin(), events.end(), [&](const SEvent& e) {
        return e.ph == ph && e.name == name && (tid == 0 || e.tid == tid);
    }));
}

// --- the script -------------------------------------------------------------------------------

class RuntimeTrace : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!BxTraceHooks::kCompiled)
            GTEST_SKIP() << "built without trace hook points";
        VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
        if (!dispatcher.IsRunning())
        {
            ASSERT_TRUE(dispatcher.StartAndWait());
        }
    }
    void TearDown() override
    {
        BxTraceRecorder::Stop();
        BxTraceRecorder::Clear();
    }

    std::uint32_t firstThread = 0, secondThread = 0;

    void exchangeMessages()
    {
        // The first handler gets the pings, sends a pong for each and gets the echoes back.
        CPlayer first(L"TraceFirst", 2 * kPings + kBoth), second(L"TraceSecond", kPings + kBoth);
        ASSERT_TRUE(first.StartAndWait());
        ASSERT_TRUE(second.StartAndWait());
        first.Subscribe(CMsgPing::RTTI);
        first.Subscribe(CMsgEcho::RTTI);
        first.Subscribe(CMsgBoth::RTTI);
        second.Subscribe(CMsgPong::RTTI);
        second.Subscribe(CMsgBoth::RTTI);
        firstThread = first.GetThreadID();
        secondThread = second.GetThreadID();

        CLocal local(L"TraceLocal");
        ASSERT_TRUE(local.Init());
        local.Subscribe(CMsgLocal::RTTI);

        for (int i = 0; i < kPings; ++i)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgPing));
        for (int i = 0; i < kBoth; ++i)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgBoth));
        for (int i = 0; i < kLocal; ++i)
            EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgLocal()), 2);
        EXPECT_EQ(local.handled, kLocal);
        ASSERT_TRUE(first.done.Wait(60000));
        ASSERT_TRUE(second.done.Wait(60000));
        // Leaving: the handlers unsubscribe (a send routed after every earlier
        // post) and their threads are joined, so all they recorded is in.
    }

    void runTasks()
    {
        std::vector<BxSmartPointer<BxTask>> tasks;
        for (int i = 0; i < kPoolTasks; ++i)
        {
            tasks.emplace_back(new CPoolTask);
            ASSERT_TRUE(BxThreadPool::GetInstance().AddTask(tasks.back(), 1));
        }
        for (const auto& task : tasks)
            ASSERT_TRUE(task->WaitUntilTerminate(60000));

        VoTaskManager manager;
        BxSmartPointer<Logging::CLogger> logger(new Logging::CLogger(L"Core.TaskManager"));
        logger->SetLevel(Logging::eLL_Warn);
        manager.SetLogger(logger);
        for (const char* name : {"fork", "left", "right", "join"})
            manager.Add(name, BxSmartPointer<IWorkItem>(new CItem));
        manager.AddDependency("fork", "left");
        manager.AddDependency("fork", "right");
        manager.AddDependency("left", "join");
        manager.AddDependency("right", "join");
        for (int run = 0; run < kGraphRuns; ++run)
        {
            manager.Start("fork", ITaskManager::eP_Normal);
            manager.WaitUntilTerminate("join");
        }
    }

    static void moveWorkflow()
    {
        VoWorkflowManager manager(L"TraceWorkflow", VoWorkflowManager::eWMF_None);
        BxSmartPointer<VoWorkflowState> idle(new CTracedIdle), busy(new CTracedBusy);
        manager.RegisterWorkflowState(idle);
        manager.RegisterWorkflowState(busy);
        manager.RegisterTransferFunction(idle, busy, BxSmartPointer<VoTransferFunctionAutomatic>(new CBlockingTF(
            manager, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgGo), false, true, L"Go")));
        EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Get(), 1);
        EXPECT_EQ(manager.HandleMessage(CMsgGo()).Get(), 1);
        EXPECT_EQ(manager.GetCurrentState(), busy);
        EXPECT_EQ(manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Get(), 1);
        manager.UnsubscribeAll();
    }

    // Two threads take turns on one node: each write request is made while
    // the other thread holds the node, so it is pending until the other
    // releases. The second thread also fails a read attempt without waiting
    // while the first holds, and re-enters its own write lock with a read
    // handle.
    static void contendForLocks()
    {
        VoDataManager manager;
        BxSmartPointer<VoNode> node(new VoNode(L"Shared", true, VoNode::eTMM_Track));
        ASSERT_TRUE(manager.InsertNode(manager.GetRootNode(), node));
        std::vector<BxEvent> held(kLockRounds), requested(kLockRounds), granted(kLockRounds);
        std::atomic<int> failures{0};
        std::thread firstThread([&] {
            for (int round = 0; round < kLockRounds; ++round)
            {
                if (round > 0)
                    granted[round - 1].Wait(); // the other thread holds the node now
                VoDataHandleLockOnly<1> write(manager, node);
                if (!manager.TryLockAndWait(INFINITE))
                    ++failures;
                held[round].Set();
                requested[round].Wait();
            }
        });
        std::thread secondThread([&] {
            for (int round = 0; round < kLockRounds; ++round)
            {
                held[round].Wait();
                {
                    VoDataHandleLockOnly<0> busy(manager, node);
                    VoDataManager::ELockStatus status;
                    if (manager.TryLockAndWait(0, status) || status != VoDataManager::eLS_Busy)
                        ++failures;
                }
                VoDataHandleLockOnly<1> write(manager, node);
                requested[round].Set();
                if (!manager.TryLockAndWait(INFINITE))
                    ++failures;
                granted[round].Set();
                VoDataHandleLockOnly<0> reentry(manager, node);
                if (!reentry.IsAccessGranted())
                    ++failures;
            }
        });
        firstThread.join();
        secondThread.join();
        EXPECT_EQ(failures.load(), 0);
    }
};

TEST_F(RuntimeTrace, AScriptedRunIsRecordedWithNestedSpansClosedAsyncSpansAndBothEndsOfEveryArrow)
{
    BxTraceRecorder::Start();
    exchangeMessages();
    runTasks();
    moveWorkflow();
    contendForLocks();
    BxTraceRecorder::Stop();
    if (HasFatalFailure())
        return;
    std::ostringstream out;
    BxTraceRecorder::Write(out);
    EXPECT_EQ(BxTraceRecorder::GetDropped(), 0u);
    if (const char* path = std::getenv("VOBASE_SCRIPTED_TRACE"))
        std::ofstream(path) << out.str();
    const std::vector<SEvent> events = parse(out.str());

    expectNesting(events);
    // Async spans: each 'b' has its 'e' (same category, name, id) on its thread, later.
    std::map<std::tuple<std::string, std::string, std::uint64_t>, const SEvent*> open;
    for (const SEvent& e : events)
    {
        const auto key = std::make_tuple(e.cat, e.name, e.id);
        if (e.ph == 'b')
        {
            EXPECT_EQ(open.count(key), 0u) << "async span begun twice: " << e.name;
            open[key] = &e;
        }
        else if (e.ph == 'e')
        {
            auto begun = open.find(key);
            ASSERT_NE(begun, open.end()) << "async end without a begin: " << e.name;
            EXPECT_EQ(begun->second->tid, e.tid) << e.name;
            EXPECT_LE(begun->second->ts, e.ts) << e.name;
            open.erase(begun);
        }
    }
    for (const auto& [key, e] : open)
        ADD_FAILURE() << "async span never ends: " << e->name;
    // Arrows: one start and one end per id, the end not earlier, both bound to spans.
    std::map<std::uint64_t, const SEvent*> starts, ends;
    for (const SEvent& e : events)
    {
        if (e.ph != 's' && e.ph != 'f')
            continue;
        auto& side = e.ph == 's' ? starts : ends;
        EXPECT_TRUE(side.emplace(e.id, &e).second) << "arrow " << e.id << " has two " << e.ph;
        EXPECT_TRUE(boundToSpan(events, e)) << "arrow " << e.ph << " of " << e.name << " bound to no span";
    }
    for (const auto& [id, s] : starts)
    {
        const auto f = ends.find(id);
        if (f == ends.end())
        {
            ADD_FAILURE() << "arrow " << s->name << " has no end";
            continue;
        }
        EXPECT_EQ(f->second->name, s->name);
        EXPECT_LE(s->ts, f->second->ts);
    }
    EXPECT_EQ(starts.size(), ends.size());

    // Messages: each handling is a span named by the class on the handler's thread.
    EXPECT_EQ(count(events, 'X', "CMsgPing", firstThread), std::size_t(kPings));
    EXPECT_EQ(count(events, 'X', "CMsgEcho", firstThread), std::size_t(kPings));
    EXPECT_EQ(count(events, 'X', "CMsgPong", secondThread), std::size_t(kPings));
    EXPECT_EQ(count(events, 'X', "send CMsgPong", firstThread), std::size_t(kPings));
    EXPECT_EQ(count(events, 'X', "CMsgBoth", firstThread), std::size_t(kBoth));
    EXPECT_EQ(count(events, 'X', "CMsgBoth", secondThread), std::size_t(kBoth));
    const std::uint32_t self = GetCurrentThreadId();
    EXPECT_EQ(count(events, 'X', "post CMsgPing", self), std::size_t(kPings));
    EXPECT_EQ(count(events, 'X', "send CMsgLocal", self), std::size_t(kLocal));
    EXPECT_EQ(count(events, 'X', "CMsgLocal", self), std::size_t(kLocal)); // answered by the sender itself
    const std::uint32_t dispatcher = VoMessageDispatcher::GetInstance().GetThreadID();
    for (const char* routed : {"CMsgPing", "CMsgPong", "CMsgEcho", "CMsgBoth", "CMsgLocal"})
    {
        const std::size_t expected = std::string(routed) == "CMsgBoth" ? kBoth : std::string(routed) == "CMsgLocal" ? kLocal : kPings;
        EXPECT_EQ(count(events, 'X', routed, dispatcher), expected) << routed << " routed";
    }
    // Arrows per hop: a post to two subscribers is one arrow to the routing and one to each handling.
    EXPECT_EQ(count(events, 'f', "CMsgBoth"), std::size_t(3 * kBoth));
    EXPECT_EQ(count(events, 'f', "CMsgBoth", dispatcher), std::size_t(kBoth));
    EXPECT_EQ(count(events, 'f', "CMsgLocal", self), std::size_t(kLocal));
    EXPECT_EQ(count(events, 'f', "CMsgPong", secondThread), std::size_t(kPings));

    // Tasks: every work item run, every task the pool ran.
    for (const char* item : {"fork", "left", "right", "join"})
        EXPECT_EQ(count(events, 'X', item), std::size_t(kGraphRuns)) << item;
    EXPECT_EQ(count(events, 'X', "(anonymous namespace)::CPoolTask"), std::size_t(kPoolTasks));
    // Each run forks two branch tasks, waited for before the join runs.
    EXPECT_GE(count(events, 'X', "TaskManager::VoTaskGraphProcessing"), std::size_t(2 * kGraphRuns));

    // Workflow: the transition's steps as instants.
    EXPECT_EQ(count(events, 'i', "left CTracedIdle"), 1u);
    EXPECT_EQ(count(events, 'i', "entered CTracedBusy"), 1u);

    // Locks: every non-re-entrant request waits until granted or withdrawn;
    // every grant is a hold until the release.
    EXPECT_EQ(count(events, 'b', "wait write Shared"), std::size_t(2 * kLockRounds));
    EXPECT_EQ(count(events, 'b', "write Shared"), std::size_t(2 * kLockRounds));
    EXPECT_EQ(count(events, 'b', "wait read Shared"), std::size_t(kLockRounds)); // refused: busy
    EXPECT_EQ(count(events, 'b', "read Shared"), std::size_t(kLockRounds));      // re-entry: no wait
}

} // namespace
