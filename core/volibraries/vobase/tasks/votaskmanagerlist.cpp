#include <vobase/tasks/votaskmanagerlist.h>

#include <bxbase/threading/bxinstancelistt.h>

namespace {

/// Never destroyed: managers may be destroyed during static destruction.
BxInstanceListT<VoTaskManager>& taskManagerList()
{
    static auto* const list = new BxInstanceListT<VoTaskManager>;
    return *list;
}

}  // namespace

void TaskManagerListAdd(VoTaskManager& manager) { taskManagerList().Add(manager); }
void TaskManagerListRemove(VoTaskManager& manager) { taskManagerList().Remove(manager); }
BxList<VoTaskManager*> TaskManagerListGetIterator() { return taskManagerList().GetSnapshot(); }
BxCriticalSection& TaskManagerListGetCriticalSection() { return taskManagerList().GetCriticalSection(); }
BxSignalT<VoTaskManager*>& TaskManagerListGetAddSignal() { return taskManagerList().GetAddSignal(); }
BxSignalT<VoTaskManager*>& TaskManagerListGetRemoveSignal() { return taskManagerList().GetRemoveSignal(); }
