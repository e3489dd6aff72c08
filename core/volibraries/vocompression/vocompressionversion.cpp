#include <bxbase/bxversion.h>
#include <vocompression/vocompressionversion.h>

/// The version of vocompression (always that of the whole framework).
VOCOMPRESSION_API const char* VoCompressionGetVersionString() { return BxGetVersionString(); }
