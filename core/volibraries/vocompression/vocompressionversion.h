// Version of the vocompression library; it is always the framework's version.
#pragma once

#include <vocompression/vocompressionapi.h>

/// "major.minor.patch" of the vocompression library that is loaded.
VOCOMPRESSION_API const char* VoCompressionGetVersionString();
