#include "taskstestsupport.h"

#include <vobase/tasks/votaskmanager.h>

#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace TaskTests;
using ITM = ITaskManager;

namespace {

// Fast enough under the sanitizers too (a few seconds), so never scaled down.
constexpr int kIterations = 10000;

/// Fails the test loudly instead of hanging when the guarded scope does not end.
class CWatchdog
{
public:
    explicit CWatchdog(DWORD timeoutMs)
        : m_thread([this, timeoutMs] {
              if (!m_done.Wait(timeoutMs))
              {
                  std::fputs("task manager stress: no progress, deadlock suspected\n", stderr);
                  std::abort();
              }
          })
    {
    }
    ~CWatchdog()
    {
        m_done.Set();
        m_thread.join();
    }

private:
    BxEvent m_done;
    std::thread m_thread;
};

/// Ten items per group: a diamond, a chain link, a three-way fork and a tail.
///   g0 -> g1, g2 -> g3 -> g4 -> g5, g6, g7 -> g8 -> g9
std::vector<std::string> addGroup(VoTaskManager& manager, int group, std::atomic<long>& runs)
{
    std::vector<std::string> names;
    for (int i = 0; i < 10; ++i)
    {
        names.push_back("g" + std::to_string(group) + "n" + std::to_string(i));
        manager.Add(names.back().c_str(), item([&runs](TaskManager::SWorkItemStatus&) { ++runs; }));
    }
    auto edge = [&](int from, int to) { manager.AddDependency(names[from].c_str(), names[to].c_str()); };
    edge(0, 1);
    edge(0, 2);
    edge(1, 3);
    edge(2, 3);
    edge(3, 4);
    edge(4, 5);
    edge(4, 6);
    edge(4, 7);
    edge(5, 8);
    edge(6, 8);
    edge(7, 8);
    edge(8, 9);
    return names;
}

}  // namespace

TEST(VoTaskManagerStress, TwoThreadsStartStopAndWaitWithoutDeadlock)
{
    CWatchdog watchdog(600000);
    VoTaskManager manager;
    std::atomic<long> runs{0};
    std::vector<std::string> names;
    for (int group = 0; group < 10; ++group)
        for (const std::string& name : addGroup(manager, group, runs))
            names.push_back(name);
    ASSERT_EQ(names.size(), 100u);

    std::atomic<int> waitsReturned{0};
    auto worker = [&](unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_int_distribution<std::size_t> pick(0, names.size() - 1);
        std::uniform_int_distribution<int> action(0, 3);
        for (int i = 0; i < kIterations; ++i)
        {
            const char* name = names[pick(random)].c_str();
            switch (action(random))
            {
            case 0:
            case 1:
                manager.Start(name, static_cast<ITM::EPriority>(i % 3));
                break;
            case 2:
                manager.Stop(name);
                break;
            default:
                manager.WaitUntilTerminate(name);
                ++waitsReturned;
                break;
            }
        }
    };
    std::thread first(worker, 1u);
    std::thread second(worker, 2u);
    first.join();
    second.join();
    manager.WaitUntilTerminate();

    EXPECT_GT(waitsReturned.load(), 0);
    EXPECT_GT(runs.load(), 0);
    for (const std::string& name : names)
    {
        const ITM::EComputationState state = manager.GetStatus(name.c_str());
        EXPECT_TRUE(state == ITM::eCS_NotComputed || state == ITM::eCS_Computed || state == ITM::eCS_Stopped ||
                    state == ITM::eCS_Aborted)
            << name << " ended in state " << state;
        EXPECT_EQ(manager.GetTaskStatus(name.c_str()), TaskManager::eTS_Idle) << name;
    }
    // Everything still works afterwards: a full run computes a whole group.
    manager.Start("g3n0", ITM::eP_Normal);
    manager.WaitUntilTerminate("g3n9");
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(manager.GetStatus(("g3n" + std::to_string(i)).c_str()), ITM::eCS_Computed);
}

// F0 forks into the leaf L0 and the next level F1, ..., the innermost level
// forks into two leaves; every level joins at Jk. All leaves wait for each
// other, so they must all run at once: more than the pool has workers.
TEST(VoTaskManagerStress, NestedForkJoinDeeperThanThePoolCompletes)
{
    CWatchdog watchdog(120000);
    const int depth = static_cast<int>(BxThreadPool::GetInstance().GetWorkerCount()) + 2;
    const int leaves = depth + 2;
    VoTaskManager manager;
    std::atomic<int> arrived{0};
    BxEvent all;
    auto leaf = [&] {
        return item([&, leaves](TaskManager::SWorkItemStatus&) {
            if (++arrived == leaves)
                all.Set();
            all.Wait(INFINITE);
        });
    };
    auto name = [](const char* prefix, int level) { return prefix + std::to_string(level); };
    for (int k = 0; k <= depth; ++k)
    {
        manager.Add(name("F", k).c_str(), item());
        manager.Add(name("L", k).c_str(), leaf());
        manager.Add(name("J", k).c_str(), item());
        manager.AddDependency(name("F", k).c_str(), name("L", k).c_str());
        manager.AddDependency(name("L", k).c_str(), name("J", k).c_str());
        if (k > 0)
        {
            manager.AddDependency(name("F", k - 1).c_str(), name("F", k).c_str());
            manager.AddDependency(name("J", k).c_str(), name("J", k - 1).c_str());
        }
    }
    manager.Add("Linner", leaf());
    manager.AddDependency(name("F", depth).c_str(), "Linner");
    manager.AddDependency("Linner", name("J", depth).c_str());

    manager.Start("F0", ITM::eP_Normal);
    manager.WaitUntilTerminate("J0");
    EXPECT_EQ(arrived.load(), leaves);
    for (int k = 0; k <= depth; ++k)
        EXPECT_EQ(manager.GetStatus(name("J", k).c_str()), ITM::eCS_Computed) << k;
}

namespace {

/// Counts the runs of each of its items.
class CCounters
{
public:
    explicit CCounters(std::size_t count) : m_runs(count) {}
    BxSmartPointer<IWorkItem> Item(std::size_t i)
    {
        return item([this, i](TaskManager::SWorkItemStatus&) { ++m_runs[i]; });
    }
    long Runs(std::size_t i) const { return m_runs[i].load(); }

private:
    std::vector<std::atomic<long>> m_runs;
};

/// A fork of four branches, two of which fork again, all meeting at "end":
///   root -> b0 .. b3;  b1 -> c0, c1 -> m1;  b2 -> c2, c3 -> m2;  b0, m1, m2, b3 -> end
/// Returns the item names in counter order.
std::vector<std::string> addNestedForks(VoTaskManager& manager, CCounters& counters)
{
    const std::vector<std::string> names = {"root", "b0", "b1", "b2", "b3", "c0", "c1",
                                            "c2",   "c3", "m1", "m2", "end"};
    for (std::size_t i = 0; i < names.size(); ++i)
        manager.Add(names[i].c_str(), counters.Item(i));
    const std::vector<std::pair<const char*, const char*>> edges = {
        {"root", "b0"}, {"root", "b1"}, {"root", "b2"}, {"root", "b3"}, {"b1", "c0"}, {"b1", "c1"},
        {"c0", "m1"},   {"c1", "m1"},   {"b2", "c2"},   {"b2", "c3"},   {"c2", "m2"}, {"c3", "m2"},
        {"b0", "end"},  {"m1", "end"},  {"m2", "end"},  {"b3", "end"}};
    for (const auto& [from, to] : edges)
        manager.AddDependency(from, to);
    return names;
}

}  // namespace

// Pool threads that start a component and wait for it may run its work
// themselves while they wait; no item may run twice or be skipped for that.
// Two drivers run on the pool (each an item of an outer manager) and one on
// this thread, each restarting its own inner component many times.
TEST(VoTaskManagerStress, WaitingPoolThreadsRunEveryItemOncePerStart)
{
    CWatchdog watchdog(300000);
    constexpr int kStarts = 300;
    struct SInner
    {
        VoTaskManager manager;
        CCounters counters{12};
        std::vector<std::string> names;
    };
    std::vector<std::unique_ptr<SInner>> inner;
    for (int i = 0; i < 3; ++i)
    {
        inner.push_back(std::make_unique<SInner>());
        inner.back()->names = addNestedForks(inner.back()->manager, inner.back()->counters);
    }
    auto drive = [](SInner& component) {
        for (int k = 0; k < kStarts; ++k)
        {
            component.manager.Start("root", ITM::eP_Normal);
            component.manager.WaitUntilTerminate("end");
        }
    };
    VoTaskManager outer;
    outer.Add("driver0", item([&](TaskManager::SWorkItemStatus&) { drive(*inner[0]); }));
    outer.Add("driver1", item([&](TaskManager::SWorkItemStatus&) { drive(*inner[1]); }));
    outer.Start("driver0", ITM::eP_Normal);
    outer.Start("driver1", ITM::eP_High);
    drive(*inner[2]);
    outer.WaitUntilTerminate();

    EXPECT_EQ(outer.GetStatus("driver0"), ITM::eCS_Computed);
    EXPECT_EQ(outer.GetStatus("driver1"), ITM::eCS_Computed);
    for (const auto& component : inner)
        for (std::size_t i = 0; i < component->names.size(); ++i)
        {
            EXPECT_EQ(component->counters.Runs(i), kStarts) << component->names[i];
            EXPECT_EQ(component->manager.GetStatus(component->names[i].c_str()), ITM::eCS_Computed);
        }
}

// A component stopped while two of its branches run: the old walk ends
// without running another item (neither the join nor what follows it), and
// the new task, which waits for the old one, then runs every item once.
TEST(VoTaskManagerStress, AStoppedForkEndsItsWalkAndTheRestartRunsEachItemOnce)
{
    CWatchdog watchdog(120000);
    VoTaskManager manager;
    BxSmartPointer<CCapturingLogger> log(new CCapturingLogger);
    manager.SetLogger(log);
    CJournal journal;
    BxEvent firstEntered, secondEntered;
    std::atomic<int> gateRuns{0};
    // The first run of each gate blocks until its break event is set.
    auto gate = [&](const std::string& name, BxEvent entered) {
        return item([&, name, entered](TaskManager::SWorkItemStatus& status) mutable {
            journal.Note(name);
            if (++gateRuns <= 2)
            {
                entered.Set();
                status.breakEvent.Wait(INFINITE);
            }
        });
    };
    manager.Add("F", journal.Item("F"));
    manager.Add("G1", gate("G1", firstEntered));
    manager.Add("G2", gate("G2", secondEntered));
    manager.Add("J", journal.Item("J"));
    manager.Add("T", journal.Item("T"));
    manager.AddDependency("F", "G1");
    manager.AddDependency("F", "G2");
    manager.AddDependency("G1", "J");
    manager.AddDependency("G2", "J");
    manager.AddDependency("J", "T");

    manager.Start("F", ITM::eP_Normal);
    firstEntered.Wait(INFINITE);
    secondEntered.Wait(INFINITE);  // both branches run at once
    manager.Start("F", ITM::eP_Normal);  // stops task 0 and waits for it
    manager.WaitUntilTerminate("T");

    std::vector<std::string> names = journal.Names();
    ASSERT_EQ(names.size(), 8u);
    // Task 0: F and both gates, in either order; task 1: F, the gates, J, T.
    EXPECT_EQ(names[0], "F");
    EXPECT_EQ(names[3], "F");
    EXPECT_EQ(names[6], "J");
    EXPECT_EQ(names[7], "T");
    std::sort(names.begin() + 1, names.begin() + 3);
    std::sort(names.begin() + 4, names.begin() + 6);
    EXPECT_EQ(names, (std::vector<std::string>{"F", "G1", "G2", "F", "G1", "G2", "J", "T"}));
    EXPECT_TRUE(log->Has(L"Stopping automatically (Task 0) F"));
    EXPECT_TRUE(log->Has(L"Abort (ID 0) G1"));
    EXPECT_TRUE(log->Has(L"Abort (ID 0) G2"));
    EXPECT_FALSE(log->Has(L"Running (ID 0) J"));
    EXPECT_TRUE(log->Has(L"Running (ID 1) J"));
    EXPECT_TRUE(log->Has(L"End regular task (ID 1)"));
    for (const char* name : {"F", "G1", "G2", "J", "T"})
        EXPECT_EQ(manager.GetStatus(name), ITM::eCS_Computed) << name;
    EXPECT_EQ(manager.GetTaskStatus("F"), TaskManager::eTS_Idle);
}
