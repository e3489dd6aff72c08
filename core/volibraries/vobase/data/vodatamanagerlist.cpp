#include <vobase/data/vodatamanagerlist.h>

#include <bxbase/threading/bxinstancelistt.h>

namespace {

/// Never destroyed: managers may be destroyed during static destruction.
BxInstanceListT<VoDataManager>& dataManagerList()
{
    static auto* const list = new BxInstanceListT<VoDataManager>;
    return *list;
}

}  // namespace

void DataManagerListAdd(VoDataManager& manager) { dataManagerList().Add(manager); }
void DataManagerListRemove(VoDataManager& manager) { dataManagerList().Remove(manager); }
BxList<VoDataManager*> DataManagerListGetIterator() { return dataManagerList().GetSnapshot(); }
BxSignalT<VoDataManager*>& DataManagerListGetAddSignal() { return dataManagerList().GetAddSignal(); }
BxSignalT<VoDataManager*>& DataManagerListGetRemoveSignal() { return dataManagerList().GetRemoveSignal(); }
