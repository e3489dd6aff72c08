// WaitUntilTerminate from inside the task it waits for is reported; waits for
// other tasks, from work items or from outside, are not.
#include "taskstestsupport.h"

#include <vobase/messaging/vohangdetector.h>
#include <vobase/tasks/votaskwaitwatch.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <thread>

namespace TaskTests {
namespace {

constexpr std::uint32_t kDetectionMs = 100;
constexpr DWORD kDeadlineMs = 10000;

/// Keeps the hang reports and sets an event at each.
class CReportLogger : public CCapturingLogger
{
public:
    void Log(Logging::ELogLevel level, const char* file, int line, const char* function,
             const std::wstring& message) override
    {
        CCapturingLogger::Log(level, file, line, function, message);
        reported.Set();
    }
    BxEvent reported;
};

TEST(VoTaskWaitWatch, MarksNestAndAreUndoneOnTheWayOut)
{
    int managerA = 0, managerB = 0;
    const std::string first = "first", second = "second";
    EXPECT_FALSE(VoTaskWaitWatch::RunsTask(&managerA, 1));
    {
        const VoTaskWaitWatch::CRunning outer(&managerA, 1, first);
        {
            const VoTaskWaitWatch::CRunning inner(&managerB, 7, second);  // a pool thread helping another task
            EXPECT_TRUE(VoTaskWaitWatch::RunsTask(&managerA, 1));
            EXPECT_TRUE(VoTaskWaitWatch::RunsTask(&managerB, 7));
            EXPECT_FALSE(VoTaskWaitWatch::RunsTask(&managerA, 7));  // the task id of another manager
        }
        EXPECT_FALSE(VoTaskWaitWatch::RunsTask(&managerB, 7));
        EXPECT_TRUE(VoTaskWaitWatch::RunsTask(&managerA, 1));
        bool seenElsewhere = true;
        std::thread([&] { seenElsewhere = VoTaskWaitWatch::RunsTask(&managerA, 1); }).join();
        EXPECT_FALSE(seenElsewhere);  // the mark belongs to its thread
    }
    EXPECT_FALSE(VoTaskWaitWatch::RunsTask(&managerA, 1));
}

// A work item waiting for another component's task, and a thread outside the
// pool waiting for the same, wait several detection periods and end normally.
TEST(VoTaskWaitWatch, WaitsForOtherTasksAreNotReported)
{
    const std::uint32_t savedTimeout = VoHangDetector::GetTimeout();
    VoHangDetector::SetTimeout(kDetectionMs);
    BxSmartPointer<CReportLogger> logger(new CReportLogger);
    VoHangDetector::SetLogger(logger);
    {
        VoTaskManager manager;
        BxEvent entered, open, waiting;
        manager.Add("slow", gatedItem(entered, open));
        manager.Add("waiter", item([&](TaskManager::SWorkItemStatus&) {
                        waiting.Set();
                        manager.WaitUntilTerminate("slow");
                    }));
        manager.Start("slow", ITaskManager::eP_Normal);
        ASSERT_TRUE(entered.Wait(kDeadlineMs));
        manager.Start("waiter", ITaskManager::eP_Normal);
        ASSERT_TRUE(waiting.Wait(kDeadlineMs));
        std::thread outside([&] { manager.WaitUntilTerminate("slow"); });

        EXPECT_FALSE(logger->reported.Wait(3 * kDetectionMs));
        open.Set();
        outside.join();
        manager.WaitUntilTerminate();
        EXPECT_EQ(manager.GetStatus("waiter"), ITaskManager::eCS_Computed);
    }
    EXPECT_TRUE(logger->Lines().empty());
    VoHangDetector::SetLogger(nullptr);
    VoHangDetector::SetTimeout(savedTimeout);
}

// The wait cannot be released (the task ends only after the item returns):
// it runs in a child process, which exits 0 when the report was right.
struct SOwnWait
{
    const char* waitingItem;
    const char* waitedItem;
    bool restart;  ///< the waiting item first starts its component anew
    friend void PrintTo(const SOwnWait& wait, std::ostream* out)
    {
        *out << wait.waitingItem << (wait.restart ? " restarts and" : "") << " waits for " << wait.waitedItem;
    }
};

class VoTaskWaitWatchChild : public ::testing::TestWithParam<SOwnWait>
{
};

TEST_P(VoTaskWaitWatchChild, AWaitFromInsideTheTaskWaitedForIsReported)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const SOwnWait wait = GetParam();
    EXPECT_EXIT(
        {
            BxSmartPointer<CReportLogger> logger(new CReportLogger);
            VoHangDetector::SetTimeout(kDetectionMs);
            VoHangDetector::SetLogger(logger);
            auto* manager = new VoTaskManager;  // left behind with its blocked pool thread
            for (const char* name : {"a", "b"})
                manager->Add(name, item([manager, name, wait](TaskManager::SWorkItemStatus&) {
                                 if (std::string(wait.waitingItem) != name)
                                     return;
                                 if (wait.restart)
                                     manager->Start(name, ITaskManager::eP_Normal);  // task 1, after task 0
                                 manager->WaitUntilTerminate(wait.waitedItem);
                             }));
            manager->AddDependency("a", "b");
            manager->Start("a", ITaskManager::eP_Normal);

            bool ok = logger->reported.Wait(kDeadlineMs);
            const auto lines = logger->Lines();
            const auto waits = VoHangDetector::GetBlockedWaits();
            const std::int32_t waitedTask = wait.restart ? 1 : 0;
            const std::wstring expected =
                L" runs work item \"" + std::wstring(wait.waitingItem, wait.waitingItem + 1) +
                L"\" of task 0 and waits for work item \"" + std::wstring(wait.waitedItem, wait.waitedItem + 1) +
                (wait.restart ? L"\" of task 1, which waits for task 0 to end" : L"\" of the same task") +
                L"; blocked for ";
            ok = ok && lines.size() == 1 && lines[0].message.rfind(L"Blocked task wait: thread ", 0) == 0 &&
                 lines[0].message.find(expected) != std::wstring::npos && lines[0].level == Logging::eLL_Warn;
            ok = ok && waits.size() == 1 && waits[0].kind == VoHangDetector::eK_TaskWaitsForItself &&
                 waits[0].workItem == wait.waitingItem && waits[0].waitedItem == wait.waitedItem &&
                 waits[0].taskID == 0 && waits[0].waitedTaskID == waitedTask && waits[0].reported &&
                 waits[0].waitedMs >= kDetectionMs;
            if (!ok)
                std::fprintf(stderr, "lines %zu, waits %zu: %ls\n", lines.size(), waits.size(),
                             lines.empty() ? L"" : lines[0].message.c_str());
            std::fflush(stderr);
            std::_Exit(ok ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(Items, VoTaskWaitWatchChild,
                         ::testing::Values(SOwnWait{"a", "a", false},  // the item waits for itself
                                           SOwnWait{"b", "a", false},  // for an item that ran before it in its task
                                           SOwnWait{"a", "b", false},  // for an item still to come in its task
                                           SOwnWait{"b", "b", true})); // for the new task of its component

}  // namespace
}  // namespace TaskTests
