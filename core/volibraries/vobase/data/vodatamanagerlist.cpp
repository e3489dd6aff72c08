#include <vobase/data/vodatamanagerlist.h>

#include <bxbase/threading/bxcriticalsection.h>

#include <algorithm>

namespace {

struct SDataManagerList
{
    BxCriticalSection lock;           ///< guards managers and the emission of the signals
    BxList<VoDataManager*> managers;  ///< oldest first
    BxSignalT<VoDataManager*> added;
    BxSignalT<VoDataManager*> removed;
};

/// Never destroyed: managers may be destroyed during static destruction.
SDataManagerList& dataManagerList()
{
    static SDataManagerList* const list = new SDataManagerList;
    return *list;
}

}  // namespace

void DataManagerListAdd(VoDataManager& manager)
{
    SDataManagerList& list = dataManagerList();
    BxCriticalSectionLocker locker(list.lock);
    list.managers.push_back(&manager);
    list.added.Emit(&manager);
}

void DataManagerListRemove(VoDataManager& manager)
{
    SDataManagerList& list = dataManagerList();
    BxCriticalSectionLocker locker(list.lock);
    const auto entry = std::find(list.managers.begin(), list.managers.end(), &manager);
    if (entry == list.managers.end())
        return;
    list.managers.erase(entry);
    list.removed.Emit(&manager);
}

BxList<VoDataManager*> DataManagerListGetIterator()
{
    SDataManagerList& list = dataManagerList();
    BxCriticalSectionLocker locker(list.lock);
    return list.managers;
}

BxSignalT<VoDataManager*>& DataManagerListGetAddSignal() { return dataManagerList().added; }
BxSignalT<VoDataManager*>& DataManagerListGetRemoveSignal() { return dataManagerList().removed; }
