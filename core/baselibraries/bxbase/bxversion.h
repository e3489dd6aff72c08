// Version of the VoBase libraries.
//
//   std::printf("%s\n", BxGetVersionString());   // "0.1.0"
#pragma once

#include <bxbase/bxbaseapi.h>

#define VOBASE_VERSION_MAJOR 0
#define VOBASE_VERSION_MINOR 1
#define VOBASE_VERSION_PATCH 0

/// The version the library was built as, "major.minor.patch". It may differ
/// from the VOBASE_VERSION_* macros of the headers a client compiled against.
BXBASE_API const char* BxGetVersionString();
