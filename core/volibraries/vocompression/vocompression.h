// Umbrella header of vocompression: the range coder, its probability model
// and the LZMA classes.
#pragma once

#include <vocompression/vocompressionapi.h>
#include <vocompression/vocompressionversion.h>
#include <vocompression/vocompresslzma.h>
#include <vocompression/vodecompresslzma.h>
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompressrangecoder.h>
#include <vocompression/voprobabilitymodelquasistatic.h>
