// What the task graph manager keeps per task ID: the root processing task,
// whether a run is scheduled, and the event the root task sets once it has
// waited out its predecessor and begun its walk.
//
//   TaskManager::STaskControls& controls = map[id];
//   controls.scheduled = true;
//   controls.startedEvent.Reset();
//
// Guarded by the manager's critical section for the task-control map.
#pragma once

#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxevent.h>

namespace TaskManager {

class VoTaskGraphProcessing;

/// What the task graph manager keeps per task ID: the root processing task, whether a run is scheduled, and the
/// event the root task sets once it has waited out its predecessor and begun its walk.
struct STaskControls
{
    /// The root processing task (may be empty).
    BxSmartPointer<VoTaskGraphProcessing> task;
    /// A run was requested and not stopped.
    bool scheduled = false;
    /// Set by the root task once it has begun.
    BxEvent startedEvent{true};
};

}  // namespace TaskManager
