// Umbrella header of vobase: the object model, data management, messaging,
// tasks, workflow, algorithms, history, streams and graphs.
#pragma once

#include <bxbase/bxbase.h>
#include <vobase/vobaseapi.h>
#include <vobase/vobaseversion.h>
#include <vocompression/vocompression.h>
