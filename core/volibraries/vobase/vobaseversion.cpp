#include <bxbase/bxversion.h>
#include <vobase/vobaseversion.h>

/// The version of vobase (always that of the whole framework).
VOBASE_API const char* VoBaseGetVersionString() { return BxGetVersionString(); }
