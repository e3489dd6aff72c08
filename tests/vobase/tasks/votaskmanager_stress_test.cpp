#include "taskstestsupport.h"

#include <vobase/tasks/votaskmanager.h>

#include <bxbase/threading/bxthreadpool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
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
