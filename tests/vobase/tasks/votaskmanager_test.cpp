#include "taskstestsupport.h"

#include <vobase/tasks/votaskmanager.h>
#include <vobase/tasks/votaskmanagerlist.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <regex>
#include <thread>

using namespace TaskTests;
using ITM = ITaskManager;

namespace {

std::string dump(VoTaskManager& manager, bool graphviz)
{
    BxStreamWriteASCIIStringT<std::string> stream;
    manager.DumpGraph(stream, graphviz);
    return stream.GetString();
}

/// The component ID the text dump shows for a node.
int componentOf(VoTaskManager& manager, const std::string& name)
{
    const std::regex pattern("\"Node " + name + "\" \\[Label = \"" + name + "Component-ID: (\\d+),");
    std::smatch match;
    const std::string text = dump(manager, false);
    if (!std::regex_search(text, match, pattern))
        return -1;
    return std::stoi(match[1]);
}

std::thread::id threadOf(const std::vector<std::pair<std::string, std::thread::id>>& runs, const std::string& name)
{
    for (const auto& run : runs)
        if (run.first == name)
            return run.second;
    return {};
}

/// Counts every hook and keeps the last contexts' data.
class CHooks : public TaskManager::IInterceptorTaskManager
{
public:
    void OnAdd(const TaskManager::CContextWorkItem& c) override { note("add " + c.GetName() + " " + std::to_string(c.GetFlag())); }
    void OnAddDependency(const TaskManager::CContextWorkItemChangeDependency& c) override
    {
        note("adddep " + c.GetFrom() + " " + c.GetTo() + " " + std::to_string(c.GetFlag()));
    }
    void OnRemoveDependency(const TaskManager::CContextWorkItemChangeDependency& c) override
    {
        note("removedep " + c.GetFrom() + " " + c.GetTo() + " " + std::to_string(c.GetFlag()));
    }
    void OnStart(const TaskManager::CContextStart& c) override
    {
        note("start " + c.GetName() + " " + std::to_string(c.GetPriority()));
    }
    void OnStop(const TaskManager::CContextStop& c) override { note("stop " + c.GetName()); }
    void OnReset(const TaskManager::CContextReset&) override { note("reset"); }
    void OnAfterRun(const TaskManager::CContextAfterRun& c) override { note("afterrun " + c.GetName()); }

    std::vector<std::string> Events() const
    {
        std::lock_guard lock(m_mutex);
        return m_events;
    }

private:
    void note(const std::string& event)
    {
        std::lock_guard lock(m_mutex);
        m_events.push_back(event);
    }
    mutable std::mutex m_mutex;
    std::vector<std::string> m_events;
};

}  // namespace

// --- the graph and its bookkeeping ------------------------------------------

TEST(VoTaskManager, EmptyManagerDumpsOnlyTheFrameAndWaitsAtOnce)
{
    VoTaskManager manager;
    manager.WaitUntilTerminate();
    EXPECT_EQ(dump(manager, true), "digraph G {\r\n}\r\n");
    EXPECT_EQ(dump(manager, false), "Task-Manager-Dump:\n==================\nNodes:Dependencies:}\r\n");
}

TEST(VoTaskManager, DumpsWriteTheLiteralPiecesInOrder)
{
    VoTaskManager manager;
    manager.Add("A", item());
    manager.Add("B", item());
    manager.AddDependency("A", "B");
    EXPECT_EQ(dump(manager, true),
              "digraph G {\r\n"
              "\"nodeA\" [label = \"A(0,-1,true)\"];\r\n"
              "\"nodeB\" [label = \"B(0,-1,true)\"];\r\n"
              "\"nodeA\" -> \"nodeB\";\r\n"
              "\"nodeB\";\r\n"
              "}\r\n");
    EXPECT_EQ(dump(manager, false),
              "Task-Manager-Dump:\n==================\nNodes:"
              "\t\"Node A\" [Label = \"AComponent-ID: 0, Task-ID: -1, Terminated: true)\"];\r\n"
              "\t\"Node B\" [Label = \"BComponent-ID: 0, Task-ID: -1, Terminated: true)\"];\r\n"
              "Dependencies:"
              "\t\"Node A\" -> \"Node B\";\r\n"
              "\t\"Node B\" -> Is Last Node\";\r\n"
              "}\r\n");
}

TEST(VoTaskManager, NamesAreUniqueAndUnknownNamesAreHandledAsDocumented)
{
    VoTaskManager manager;
    manager.Add("a", item());
    EXPECT_TRUE(manager.Exists("a"));
    EXPECT_FALSE(manager.Exists("b"));
    EXPECT_EQ(manager.GetStatus("a"), ITM::eCS_NotComputed);
    EXPECT_THROW(manager.Add("a", item()), BxException);
    EXPECT_THROW(manager.GetStatus("b"), BxException);
    EXPECT_THROW(manager.AddDependency("a", "b"), BxException);
    EXPECT_THROW(manager.Add("c", BxSmartPointer<IWorkItem>()), BxException);
    EXPECT_THROW(manager.Add(nullptr, item()), BxException);
    // Unknown names do nothing.
    manager.Remove("b");
    manager.RemoveDependency("a", "b");
    manager.Start("b", ITM::eP_Normal);
    manager.Stop("b");
    manager.WaitUntilTerminate("b");
    EXPECT_EQ(manager.GetTaskID("b"), -1);
    EXPECT_EQ(dump(manager, true), "digraph G {\r\n\"nodea\" [label = \"a(0,-1,true)\"];\r\n\"nodea\";\r\n}\r\n");
}

TEST(VoTaskManager, ComponentsMergeOnDependenciesAndSplitOnRemoval)
{
    VoTaskManager manager;
    for (const char* name : {"A", "B", "C", "D"})
        manager.Add(name, item());
    EXPECT_EQ(componentOf(manager, "D"), 3);
    manager.AddDependency("A", "B");
    manager.AddDependency("B", "C");
    EXPECT_EQ(componentOf(manager, "C"), componentOf(manager, "A"));
    EXPECT_NE(componentOf(manager, "D"), componentOf(manager, "A"));

    manager.Remove("B");  // the middle of A -> B -> C
    EXPECT_FALSE(manager.Exists("B"));
    EXPECT_NE(componentOf(manager, "A"), componentOf(manager, "C"));
    EXPECT_GE(componentOf(manager, "C"), 4);  // a fresh number

    manager.AddDependency("A", "C");
    manager.AddDependency("A", "D");
    EXPECT_EQ(componentOf(manager, "D"), componentOf(manager, "A"));
    const int before = componentOf(manager, "A");
    manager.RemoveDependency("A", "D");  // D is cut off
    EXPECT_EQ(componentOf(manager, "A"), before);
    EXPECT_NE(componentOf(manager, "D"), before);
    EXPECT_EQ(componentOf(manager, "C"), before);
}

TEST(VoTaskManager, RemovingAForkKeepsSuccessorsThatMeetAgainTogether)
{
    VoTaskManager manager;
    for (const char* name : {"F", "X", "Y", "J", "Z"})
        manager.Add(name, item());
    manager.AddDependency("F", "X");
    manager.AddDependency("F", "Y");
    manager.AddDependency("X", "J");
    manager.AddDependency("Y", "J");
    manager.AddDependency("F", "Z");
    manager.Remove("F");
    EXPECT_EQ(componentOf(manager, "X"), componentOf(manager, "Y"));
    EXPECT_EQ(componentOf(manager, "X"), componentOf(manager, "J"));
    EXPECT_NE(componentOf(manager, "Z"), componentOf(manager, "X"));
    EXPECT_EQ(dump(manager, false).find("\"Node F\""), std::string::npos);
}

// --- running ------------------------------------------------------------------

TEST(VoTaskManager, SingleNodeIsScheduledUntilThePoolRunsIt)
{
    VoTaskManager manager;
    BxEvent entered, open;
    manager.Add("a", gatedItem(entered, open));
    manager.Start("a", ITM::eP_Normal);
    EXPECT_EQ(manager.GetStatus("a"), ITM::eCS_Scheduled);
    entered.Wait(INFINITE);
    EXPECT_EQ(manager.GetStatus("a"), ITM::eCS_Scheduled);
    EXPECT_EQ(manager.GetTaskStatus("a"), TaskManager::eTS_Running);
    open.Set();
    manager.WaitUntilTerminate("a");
    EXPECT_EQ(manager.GetStatus("a"), ITM::eCS_Computed);
    EXPECT_EQ(manager.GetTaskStatus("a"), TaskManager::eTS_Idle);
}

TEST(VoTaskManager, ChainRunsInOrderOnOneThreadFromTheStartNode)
{
    VoTaskManager manager;
    std::mutex mutex;
    std::vector<std::pair<std::string, std::thread::id>> runs;
    auto recorder = [&](const std::string& name) {
        return item([&, name](TaskManager::SWorkItemStatus&) {
            std::lock_guard lock(mutex);
            runs.emplace_back(name, std::this_thread::get_id());
        });
    };
    for (const char* name : {"A", "B", "C"})
        manager.Add(name, recorder(name));
    manager.AddDependency("A", "B");
    manager.AddDependency("B", "C");

    manager.Start("A", ITM::eP_High);
    manager.WaitUntilTerminate("C");
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0].first, "A");
    EXPECT_EQ(runs[1].first, "B");
    EXPECT_EQ(runs[2].first, "C");
    EXPECT_EQ(runs[0].second, runs[2].second);
    EXPECT_NE(runs[0].second, std::this_thread::get_id());

    runs.clear();
    manager.Stop("A");  // an idle component: only the states change
    EXPECT_EQ(manager.GetStatus("A"), ITM::eCS_Stopped);
    manager.Start("B", ITM::eP_Low);
    manager.WaitUntilTerminate("C");
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].first, "B");
    EXPECT_EQ(runs[1].first, "C");
    EXPECT_EQ(manager.GetStatus("A"), ITM::eCS_Stopped);  // left as it was
    EXPECT_EQ(manager.GetStatus("C"), ITM::eCS_Computed);
}

TEST(VoTaskManager, ForkRunsBranchesAsChildrenAndTheForkingTaskRunsTheJoinOnce)
{
    VoTaskManager manager;
    auto hooks = std::make_shared<CHooks>();
    manager.GetDispatcher()->Add(hooks);
    std::mutex mutex;
    std::vector<std::pair<std::string, std::thread::id>> runs;
    BxEvent bothBranches;
    std::atomic<int> branches{0};
    auto recorder = [&](const std::string& name, bool branch) {
        return item([&, name, branch](TaskManager::SWorkItemStatus&) {
            {
                std::lock_guard lock(mutex);
                runs.emplace_back(name, std::this_thread::get_id());
            }
            // The branches run concurrently: each waits for the other.
            if (branch && ++branches == 2)
                bothBranches.Set();
            if (branch)
                bothBranches.Wait(INFINITE);
        });
    };
    manager.Add("A", recorder("A", false));
    manager.Add("B", recorder("B", true));
    manager.Add("C", recorder("C", true));
    manager.Add("D", recorder("D", false));
    manager.AddDependency("A", "B");
    manager.AddDependency("A", "C");
    manager.AddDependency("B", "D");
    manager.AddDependency("C", "D");
    manager.Start("A", ITM::eP_Normal);
    manager.WaitUntilTerminate("D");

    ASSERT_EQ(runs.size(), 4u);
    EXPECT_EQ(runs.front().first, "A");
    EXPECT_EQ(runs.back().first, "D");
    EXPECT_EQ(threadOf(runs, "A"), threadOf(runs, "D"));
    for (const char* name : {"A", "B", "C", "D"})
        EXPECT_EQ(manager.GetStatus(name), ITM::eCS_Computed) << name;
    const auto events = hooks->Events();
    EXPECT_EQ(std::count(events.begin(), events.end(), "afterrun B"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "afterrun C"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "afterrun A"), 1);
}

TEST(VoTaskManager, MalformedForkJoinShapesAreRefusedBeforeAnyTask)
{
    VoTaskManager manager;
    for (const char* name : {"A", "B", "C", "J1", "J2", "X", "Y"})
        manager.Add(name, item());
    manager.AddDependency("A", "B");
    manager.AddDependency("A", "C");
    manager.AddDependency("B", "J1");  // the branches end at different joins
    manager.AddDependency("C", "J2");
    manager.AddDependency("X", "J1");
    manager.AddDependency("Y", "J2");
    EXPECT_THROW(manager.Start("A", ITM::eP_Normal), BxException);
    EXPECT_EQ(manager.GetTaskID("A"), -1);
    EXPECT_EQ(manager.GetStatus("A"), ITM::eCS_NotComputed);
    // A branch that ends at a join while the other runs to the end of the graph.
    manager.RemoveDependency("C", "J2");
    EXPECT_THROW(manager.Start("A", ITM::eP_Normal), BxException);
    // Branches that meet again are fine, also through a longer path.
    manager.AddDependency("C", "J1");
    manager.Start("A", ITM::eP_Normal);
    manager.WaitUntilTerminate("J1");
    EXPECT_EQ(manager.GetStatus("J1"), ITM::eCS_Computed);

    VoTaskManager cyclic;
    cyclic.Add("X", item());
    cyclic.Add("Y", item());
    cyclic.AddDependency("X", "Y");
    cyclic.AddDependency("Y", "X");
    EXPECT_THROW(cyclic.Start("X", ITM::eP_Normal), BxException);
    EXPECT_EQ(cyclic.GetTaskStatus("X"), TaskManager::eTS_Idle);
}

// The component's shape is kept between starts and rebuilt after every edit:
// each start below follows the graph as it is now.
TEST(VoTaskManager, EditsBetweenStartsAreFollowedByTheNextStart)
{
    VoTaskManager manager;
    CJournal journal;
    for (const char* name : {"A", "B", "C", "D"})
        manager.Add(name, journal.Item(name));
    manager.AddDependency("A", "B");
    manager.AddDependency("B", "C");
    auto run = [&](const char* start, const char* last) {
        const std::size_t before = journal.Names().size();
        manager.Start(start, ITM::eP_Normal);
        manager.WaitUntilTerminate(last);
        const std::vector<std::string> names = journal.Names();
        return std::vector<std::string>(names.begin() + static_cast<std::ptrdiff_t>(before), names.end());
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(run("A", "C"), (Names{"A", "B", "C"}));
    EXPECT_EQ(run("A", "C"), (Names{"A", "B", "C"}));  // from the cached shape

    manager.AddDependency("C", "D");  // grows the chain
    EXPECT_EQ(run("A", "D"), (Names{"A", "B", "C", "D"}));
    EXPECT_EQ(manager.GetTaskID("D"), manager.GetTaskID("A"));

    manager.Remove("B");  // splits it: A alone, C -> D
    const std::int32_t idOfC = manager.GetTaskID("C");
    EXPECT_EQ(run("A", "A"), (Names{"A"}));
    EXPECT_EQ(manager.GetTaskID("C"), idOfC);  // another component now
    EXPECT_EQ(manager.GetStatus("C"), ITM::eCS_Computed);
    EXPECT_EQ(run("C", "D"), (Names{"C", "D"}));

    // A fork-join: A -> C, A -> D, both -> J; J runs last and once.
    manager.RemoveDependency("C", "D");
    manager.Add("J", journal.Item("J"));
    manager.AddDependency("A", "C");
    manager.AddDependency("A", "D");
    manager.AddDependency("C", "J");
    manager.AddDependency("D", "J");
    Names names = run("A", "J");
    ASSERT_EQ(names.size(), 4u);
    EXPECT_EQ(names.front(), "A");
    EXPECT_EQ(names.back(), "J");
    std::sort(names.begin() + 1, names.end() - 1);
    EXPECT_EQ(names[1], "C");
    EXPECT_EQ(names[2], "D");
    for (const char* name : {"A", "C", "D", "J"})
        EXPECT_EQ(manager.GetStatus(name), ITM::eCS_Computed) << name;

    // An edit that breaks the shape is refused at the next start, one that
    // mends it is accepted again; the validation is not taken from before.
    manager.Add("K", journal.Item("K"));
    manager.AddDependency("C", "K");  // C's branch ends at the end of the graph, D's at J
    const std::size_t before = journal.Names().size();
    EXPECT_THROW(manager.Start("A", ITM::eP_Normal), BxException);
    EXPECT_EQ(journal.Names().size(), before);
    EXPECT_EQ(manager.GetStatus("K"), ITM::eCS_NotComputed);
    EXPECT_EQ(run("K", "K"), (Names{"K"}));  // another start node of that component is fine
    manager.RemoveDependency("C", "K");
    names = run("A", "J");
    EXPECT_EQ(names.size(), 4u);
    EXPECT_EQ(names.back(), "J");
    EXPECT_EQ(manager.GetStatus("K"), ITM::eCS_Computed);  // not reached: left as it was

    // After a reset the same names build new shapes.
    manager.Reset();
    manager.Add("A", journal.Item("A2"));
    manager.Add("B", journal.Item("B2"));
    manager.AddDependency("B", "A");
    EXPECT_EQ(run("B", "A"), (Names{"B2", "A2"}));
}

// Validation is kept per start node: a start node whose reachable part is
// malformed is refused every time, while another start node of the same
// component runs.
TEST(VoTaskManager, ValidationIsKeptPerStartNode)
{
    VoTaskManager manager;
    for (const char* name : {"S", "A", "B", "J1", "J2", "X", "Y"})
        manager.Add(name, item());
    manager.AddDependency("S", "A");
    manager.AddDependency("S", "B");
    manager.AddDependency("A", "J1");
    manager.AddDependency("B", "J2");
    manager.AddDependency("X", "J1");
    manager.AddDependency("Y", "J2");
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_THROW(manager.Start("S", ITM::eP_Normal), BxException);
        EXPECT_EQ(manager.GetStatus("S"), ITM::eCS_NotComputed);  // the refused start scheduled nothing
        manager.Start("A", ITM::eP_Normal);
        manager.WaitUntilTerminate("J1");
        EXPECT_EQ(manager.GetStatus("J1"), ITM::eCS_Computed);
        EXPECT_EQ(manager.GetStatus("B"), ITM::eCS_NotComputed);
    }
}

TEST(VoTaskManager, NotReadyAbortsAndExceptionsFailTheComponent)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    manager.Add("n", item({}, false));
    manager.Add("after", item());
    manager.AddDependency("n", "after");
    manager.Start("n", ITM::eP_Normal);
    manager.WaitUntilTerminate("after");
    EXPECT_EQ(manager.GetStatus("n"), ITM::eCS_Aborted);
    EXPECT_EQ(manager.GetStatus("after"), ITM::eCS_Aborted);  // never reached
    EXPECT_TRUE(log->Has(L"WorkItem not ready -> abort (ID 0) n"));

    manager.Add("t", item([](TaskManager::SWorkItemStatus&) { throw std::runtime_error("boom"); }));
    manager.Add("u", item());
    manager.AddDependency("t", "u");
    manager.Start("t", ITM::eP_Normal);
    manager.WaitUntilTerminate("u");
    EXPECT_EQ(manager.GetStatus("t"), ITM::eCS_Failed);
    EXPECT_EQ(manager.GetStatus("u"), ITM::eCS_Failed);
    EXPECT_EQ(manager.GetTaskStatus("t"), TaskManager::eTS_Idle);
    EXPECT_TRUE(log->Has(L"Exception in work item 't' (ID 1)"));

    // A failing branch: the join is not run, the component ends idle.
    manager.Add("f", item());
    manager.Add("ok", item());
    manager.Add("bad", item([](TaskManager::SWorkItemStatus&) { throw std::runtime_error("branch"); }));
    manager.Add("j", item());
    manager.AddDependency("f", "ok");
    manager.AddDependency("f", "bad");
    manager.AddDependency("ok", "j");
    manager.AddDependency("bad", "j");
    manager.Start("f", ITM::eP_Normal);
    manager.WaitUntilTerminate("j");
    EXPECT_EQ(manager.GetStatus("bad"), ITM::eCS_Failed);
    EXPECT_EQ(manager.GetStatus("ok"), ITM::eCS_Computed);
    EXPECT_NE(manager.GetStatus("j"), ITM::eCS_Computed);
    EXPECT_EQ(manager.GetTaskStatus("f"), TaskManager::eTS_Idle);
}

TEST(VoTaskManager, StopBreaksTheRunningItemAndMarksDependents)
{
    VoTaskManager manager;
    CJournal journal;
    BxEvent entered, open;
    manager.Add("A", gatedItem(entered, open));
    manager.Add("B", journal.Item("B"));
    manager.AddDependency("A", "B");
    manager.Start("A", ITM::eP_Normal);
    entered.Wait(INFINITE);
    EXPECT_THROW(manager.AddDependency("A", "B"), BxException);  // busy component
    EXPECT_THROW(manager.Remove("B"), BxException);
    EXPECT_THROW(manager.RemoveDependency("A", "B"), BxException);
    manager.Stop("A");  // the gate returns on the break event
    manager.WaitUntilTerminate("B");
    EXPECT_EQ(manager.GetStatus("A"), ITM::eCS_Stopped);
    EXPECT_EQ(manager.GetStatus("B"), ITM::eCS_Stopped);
    EXPECT_TRUE(journal.Names().empty());
    // The graph was not changed by the refused edits: one edge A -> B.
    EXPECT_NE(dump(manager, false).find("\t\"Node A\" -> \"Node B\";\r\n\t\"Node B\" -> Is Last Node"),
              std::string::npos);

    // A new start clears the breaks.
    manager.Start("A", ITM::eP_Normal);
    open.Set();
    manager.WaitUntilTerminate("B");
    EXPECT_EQ(manager.GetStatus("B"), ITM::eCS_Computed);
    EXPECT_EQ(journal.Names(), std::vector<std::string>{"B"});
}

TEST(VoTaskManager, RestartingARunningComponentStopsItAndWaitsForIt)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    CJournal journal;
    BxEvent entered, open;
    std::atomic<int> runsOfA{0};
    manager.Add("A", item([&](TaskManager::SWorkItemStatus& status) {
        if (++runsOfA == 1)
        {
            entered.Set();
            open.Wait(INFINITE);  // ignores the break: the old task runs on until the gate opens
            EXPECT_TRUE(status.breakEvent.IsSet());
            journal.Note("A1 ends");
        }
        else
            journal.Note("A2");
    }));
    manager.Add("B", journal.Item("B"));
    manager.AddDependency("A", "B");

    manager.Start("A", ITM::eP_Normal);
    entered.Wait(INFINITE);
    manager.Start("A", ITM::eP_Normal);  // A runs: stopped automatically
    EXPECT_TRUE(log->Has(L"Stopping automatically (Task 0) A"));
    EXPECT_TRUE(log->Has(L"New task (ID 1) A"));
    // B is scheduled by the new task: a start of B starts nothing.
    manager.Start("B", ITM::eP_Normal);
    EXPECT_FALSE(log->Has(L"New task (ID 2) B"));
    EXPECT_EQ(manager.GetTaskID("B"), 1);
    EXPECT_EQ(manager.GetTaskStatus("B"), TaskManager::eTS_Scheduled);  // waits for its predecessor

    open.Set();
    manager.WaitUntilTerminate("B");
    EXPECT_EQ(journal.Names(), (std::vector<std::string>{"A1 ends", "A2", "B"}));
    EXPECT_EQ(manager.GetStatus("A"), ITM::eCS_Computed);
    EXPECT_EQ(manager.GetStatus("B"), ITM::eCS_Computed);
    EXPECT_TRUE(log->Has(L"Abort (ID 0) A"));
    EXPECT_TRUE(log->Has(L"End regular task (ID 1)"));
}

TEST(VoTaskManager, StartingANodeTheRunningTaskWillReachStartsNothing)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    BxEvent entered, open;
    manager.Add("A", gatedItem(entered, open));
    manager.Add("B", item());
    manager.AddDependency("A", "B");
    manager.Start("A", ITM::eP_Normal);
    entered.Wait(INFINITE);
    manager.Start("B", ITM::eP_Normal);
    open.Set();
    manager.WaitUntilTerminate("B");
    EXPECT_EQ(log->Count(L"User started task B"), 1u);
    EXPECT_FALSE(log->Has(L"New task (ID 1) B"));
    EXPECT_EQ(manager.GetStatus("B"), ITM::eCS_Computed);
}

TEST(VoTaskManager, TaskIDsCountUpAndWrapAfterTheLargest)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    manager.Add("a", item());
    manager.Add("b", item());
    for (int expected : {0, 1, 2})
    {
        manager.Start("a", ITM::eP_Normal);
        EXPECT_EQ(manager.GetTaskID("a"), expected);
        manager.WaitUntilTerminate("a");
    }
    EXPECT_EQ(manager.GetTaskID("b"), -1);
    manager.SetNextTaskID(0x7FFFFFFF);
    manager.Start("a", ITM::eP_Normal);
    manager.WaitUntilTerminate("a");
    manager.Start("b", ITM::eP_Normal);
    manager.WaitUntilTerminate("b");
    EXPECT_EQ(manager.GetTaskID("a"), 2147483647);
    EXPECT_EQ(manager.GetTaskID("b"), 0);
    EXPECT_TRUE(log->Has(L"New task (ID 2147483647) a"));
    EXPECT_TRUE(log->Has(L"End regular task (ID 2147483647)"));
    EXPECT_THROW(manager.SetNextTaskID(-5), BxException);
}

// --- logging and hooks -----------------------------------------------------------

TEST(VoTaskManager, LogLinesAreExactWithTheDependencyNamesReversed)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    manager.Add("from", item());
    manager.Add("to", item());
    manager.AddDependency("from", "to");
    manager.Start("from", ITM::eP_Normal);
    manager.WaitUntilTerminate("to");
    manager.Stop("to");
    manager.RemoveDependency("from", "to");
    manager.Remove("to");
    const std::vector<std::wstring> expected = {
        L"Adding task from",
        L"Adding task to",
        L"Adding dependency: (to, from)",
        L"User started task from",
        L"New task (ID 0) from",
        L"Running (ID 0) from",
        L"Running (ID 0) to",
        L"End regular task (ID 0)",
        L"User stopped task to (ID 0)",
        L"Removing dependency: (to, from)",
        L"Removing task to",
    };
    // The waiting line is written by this thread while the pool runs, so its place varies.
    std::vector<std::wstring> messages = log->Messages();
    const auto waiting = std::find(messages.begin(), messages.end(), L"Waiting for task to");
    ASSERT_NE(waiting, messages.end());
    messages.erase(waiting);
    EXPECT_EQ(messages, expected);
    for (const auto& line : log->Lines())
        EXPECT_EQ(line.level, Logging::eLL_Info);
}

TEST(VoTaskManager, FilteredInfoLinesAreNeverFormattedOrDelivered)
{
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger(Logging::eLL_Warn));
    manager.SetLogger(log);
    manager.Add("a", item());
    manager.Start("a", ITM::eP_Normal);
    manager.WaitUntilTerminate("a");
    EXPECT_TRUE(log->Lines().empty());
}

TEST(VoTaskManager, ResettingWarnsIgnoresStartsAndEmptiesTheGraph)
{
    auto manager = std::make_unique<VoTaskManager>();
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager->SetLogger(log);
    auto hooks = std::make_shared<CHooks>();
    manager->GetDispatcher()->Add(hooks);
    BxEvent entered, open, resetSeen;
    // The item, stopped by the reset, tries to add and start while the reset waits for it.
    VoTaskManager* raw = manager.get();
    manager->Add("A", item([&](TaskManager::SWorkItemStatus& status) {
        entered.Set();
        status.breakEvent.Wait(INFINITE);
        raw->Start("A", ITM::eP_High);
        raw->Add("late", item());
        raw->AddDependency("late", "late2");
    }));
    manager->Add("late2", item());
    manager->Start("A", ITM::eP_High);
    entered.Wait(INFINITE);
    manager->Reset();
    EXPECT_FALSE(manager->Exists("A"));
    EXPECT_FALSE(manager->Exists("late"));
    EXPECT_EQ(dump(*manager, true), "digraph G {\r\n}\r\n");
    EXPECT_TRUE(log->Has(L"User started task A while task manager is resetting. This will be ignored!"));
    EXPECT_TRUE(log->Has(L"Adding task late while task manager is resetting!"));
    EXPECT_TRUE(log->Has(L"Adding dependency: (late2, late) while task manager is resetting!"));
    EXPECT_EQ(log->Count(L"New task (ID 0) A"), 1u);
    const auto events = hooks->Events();
    EXPECT_EQ(std::count(events.begin(), events.end(), "reset"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "start A 2"), 2);  // the ignored start is hooked too

    // After a reset the manager is usable again; component numbers restart at 0.
    manager->Add("x", item());
    EXPECT_EQ(componentOf(*manager, "x"), 0);
    manager.reset();  // the destructor resets once more
    const auto after = hooks->Events();
    EXPECT_EQ(std::count(after.begin(), after.end(), "reset"), 2);
}

TEST(VoTaskManager, HooksReceiveTheirContexts)
{
    VoTaskManager manager;
    auto hooks = std::make_shared<CHooks>();
    manager.GetDispatcher()->Add(hooks);
    manager.Add("a", item());
    manager.Add("b", item());
    manager.AddDependency("a", "b");
    manager.RemoveDependency("a", "b");
    manager.Start("a", ITM::eP_Low);
    manager.WaitUntilTerminate("a");
    manager.Stop("a");
    manager.Remove("b");  // no hook
    EXPECT_EQ(hooks->Events(), (std::vector<std::string>{"add a 1", "add b 1", "adddep a b 0", "removedep a b 1",
                                                         "start a 0", "afterrun a", "stop a"}));
}

TEST(VoTaskManager, ManagersEnterAndLeaveTheGlobalList)
{
    std::vector<VoTaskManager*> added, removed;
    const auto addId = TaskManagerListGetAddSignal().Connect([&](VoTaskManager* m) { added.push_back(m); });
    const auto removeId = TaskManagerListGetRemoveSignal().Connect([&](VoTaskManager* m) { removed.push_back(m); });
    VoTaskManager* address = nullptr;
    {
        VoTaskManager manager;
        address = &manager;
        BxCriticalSectionLocker keep(TaskManagerListGetCriticalSection());
        const auto list = TaskManagerListGetIterator();
        EXPECT_NE(std::find(list.begin(), list.end(), &manager), list.end());
    }
    TaskManagerListGetAddSignal().Disconnect(addId);
    TaskManagerListGetRemoveSignal().Disconnect(removeId);
    EXPECT_EQ(added, std::vector<VoTaskManager*>{address});
    EXPECT_EQ(removed, std::vector<VoTaskManager*>{address});
    const auto list = TaskManagerListGetIterator();
    EXPECT_EQ(std::find(list.begin(), list.end(), address), list.end());
}
