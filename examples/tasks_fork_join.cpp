// A fork-join task graph on the shared thread pool: "load" first, then "left"
// and "right" in parallel, then "merge". The graph runs once, is stopped
// while "left" still works, and is started again to completion.
#include <vobase/tasks/votaskmanager.h>

#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <cstdio>

namespace {

const char* stateName(ITaskManager::EComputationState state)
{
    static const char* const names[] = {"not computed", "scheduled", "computed", "stopped", "aborted", "failed"};
    return names[state];
}

}  // namespace

int main()
{
    std::atomic<int> sum{0};
    BxEvent leftEntered, leftMayFinish(true);  // the second run holds "left" back

    VoTaskManager tasks;
    tasks.Add("load", [&] { sum = 1; });
    tasks.Add("left", [&](TaskManager::SWorkItemStatus& status) {
        leftEntered.Set();
        // A long item waits for its work or for a stop request, whichever comes first.
        BxEvent::WaitForMultipleEvents({leftMayFinish, status.breakEvent}, INFINITE);
        if (!status.breakEvent.IsSet())
            sum += 10;
    });
    tasks.Add("right", [&] { sum += 100; });
    tasks.Add("merge", [&] { std::printf("merge sees sum %d\n", sum.load()); });
    tasks.AddDependency("load", "left");   // fork
    tasks.AddDependency("load", "right");
    tasks.AddDependency("left", "merge");  // join
    tasks.AddDependency("right", "merge");

    tasks.Start("load", ITaskManager::eP_Normal);
    tasks.WaitUntilTerminate("merge");
    std::printf("run 1: merge %s\n", stateName(tasks.GetStatus("merge")));

    leftMayFinish.Reset();
    leftEntered.Reset();
    tasks.Start("load", ITaskManager::eP_Normal);
    leftEntered.Wait(INFINITE);
    tasks.Stop("left");  // breaks "left"; it and everything after it end stopped
    tasks.WaitUntilTerminate("merge");
    std::printf("run 2 stopped: left %s, merge %s\n", stateName(tasks.GetStatus("left")),
                stateName(tasks.GetStatus("merge")));

    leftMayFinish.Set();
    tasks.Start("load", ITaskManager::eP_Normal);
    tasks.WaitUntilTerminate("merge");
    std::printf("run 3 restarted: merge %s\n", stateName(tasks.GetStatus("merge")));
    return tasks.GetStatus("merge") == ITaskManager::eCS_Computed && sum == 111 ? 0 : 1;
}
