// The process-wide list of task managers. Every VoTaskManager enters it in
// its constructor and leaves it in its destructor; diagnostics and
// interceptors learn about both through signals.
//
//   auto id = TaskManagerListGetAddSignal().Connect([](VoTaskManager* m) { watch(*m); });
//   {
//       BxCriticalSectionLocker keep(TaskManagerListGetCriticalSection());   // no manager goes meanwhile
//       for (VoTaskManager* manager : TaskManagerListGetIterator())
//           manager->DumpGraph(trace, false);
//   }
//   TaskManagerListGetAddSignal().Disconnect(id);
//
// The signals are emitted while the list's critical section is held, so an
// observer sees additions and removals in the order they happened.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxsignalt.h>

class VoTaskManager;

/// Enters a manager and emits the add signal (the manager's constructor calls it).
VOBASE_API void TaskManagerListAdd(VoTaskManager& manager);
/// Takes a manager out and emits the remove signal (the manager's destructor calls it).
VOBASE_API void TaskManagerListRemove(VoTaskManager& manager);
/// The managers, oldest first: a snapshot taken under the list's critical
/// section. Hold that section while using them so that none is destroyed.
VOBASE_API BxList<VoTaskManager*> TaskManagerListGetIterator();
/// The critical section guarding the list (recursive).
VOBASE_API BxCriticalSection& TaskManagerListGetCriticalSection();
/// Emitted with each manager that enters the list.
VOBASE_API BxSignalT<VoTaskManager*>& TaskManagerListGetAddSignal();
/// Emitted with each manager that leaves the list.
VOBASE_API BxSignalT<VoTaskManager*>& TaskManagerListGetRemoveSignal();
