// Umbrella header of vocompression: the range coder, its probability model
// and the LZMA classes.
#pragma once

#include <bxbase/bxbase.h>
#include <vocompression/vocompressionapi.h>
#include <vocompression/vocompressionversion.h>
#include <vocompression/vocompresslzma.h>
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompresslzma.h>
#include <vocompression/vodecompressrangecoder.h>
#include <vocompression/voprobabilitymodelquasistatic.h>
