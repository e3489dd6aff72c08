// Version of the vobase library; it is always the framework's version.
#pragma once

#include <vobase/vobaseapi.h>

/// "major.minor.patch" of the vobase library that is loaded.
VOBASE_API const char* VoBaseGetVersionString();
