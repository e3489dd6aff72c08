#include <vobase/tasks/votaskmanagerlist.h>

#include <algorithm>

namespace {

struct STaskManagerList
{
    BxCriticalSection lock;          ///< guards managers and the emission of the signals
    BxList<VoTaskManager*> managers; ///< oldest first
    BxSignalT<VoTaskManager*> added;
    BxSignalT<VoTaskManager*> removed;
};

/// Never destroyed: managers may be destroyed during static destruction.
STaskManagerList& taskManagerList()
{
    static STaskManagerList* const list = new STaskManagerList;
    return *list;
}

}  // namespace

void TaskManagerListAdd(VoTaskManager& manager)
{
    STaskManagerList& list = taskManagerList();
    BxCriticalSectionLocker locker(list.lock);
    list.managers.push_back(&manager);
    list.added.Emit(&manager);
}

void TaskManagerListRemove(VoTaskManager& manager)
{
    STaskManagerList& list = taskManagerList();
    BxCriticalSectionLocker locker(list.lock);
    const auto entry = std::find(list.managers.begin(), list.managers.end(), &manager);
    if (entry == list.managers.end())
        return;
    list.managers.erase(entry);
    list.removed.Emit(&manager);
}

BxList<VoTaskManager*> TaskManagerListGetIterator()
{
    STaskManagerList& list = taskManagerList();
    BxCriticalSectionLocker locker(list.lock);
    return list.managers;
}

BxCriticalSection& TaskManagerListGetCriticalSection() { return taskManagerList().lock; }
BxSignalT<VoTaskManager*>& TaskManagerListGetAddSignal() { return taskManagerList().added; }
BxSignalT<VoTaskManager*>& TaskManagerListGetRemoveSignal() { return taskManagerList().removed; }
