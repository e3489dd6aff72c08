// The process-wide list of data managers. Every VoDataManager enters it in its
// constructor and leaves it in its destructor; observers learn about both
// through signals.
//
//   auto id = DataManagerListGetAddSignal().Connect([](VoDataManager* m) { watch(*m); });
//   for (VoDataManager* manager : DataManagerListGetIterator())
//       manager->dump(trace);
//   DataManagerListGetAddSignal().Disconnect(id);
//
// The signals are emitted while the list's critical section is held, so an
// observer sees additions and removals in the order they happened; a slot must
// not wait for another thread that creates or destroys a manager.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/threading/bxsignalt.h>

class VoDataManager;

/// Enters a manager into the list and emits the add signal (the manager's constructor calls it).
VOBASE_API void DataManagerListAdd(VoDataManager& manager);
/// Takes a manager out of the list and emits the remove signal (the manager's destructor calls it).
VOBASE_API void DataManagerListRemove(VoDataManager& manager);
/// The managers in the list, oldest first: a snapshot taken under the list's
/// lock. A manager destroyed after the snapshot must not be used.
VOBASE_API BxList<VoDataManager*> DataManagerListGetIterator();
/// Emitted with each manager that enters the list.
VOBASE_API BxSignalT<VoDataManager*>& DataManagerListGetAddSignal();
/// Emitted with each manager that leaves the list.
VOBASE_API BxSignalT<VoDataManager*>& DataManagerListGetRemoveSignal();
