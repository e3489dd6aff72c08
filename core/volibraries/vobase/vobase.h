// Umbrella header of vobase: the object model, data management, messaging,
// tasks, workflow, algorithms, history, streams and graphs.
#pragma once

#include <bxbase/bxbase.h>
#include <vobase/vobaseapi.h>
#include <vobase/vobaseversion.h>
#include <vocompression/vocompression.h>
#include <vobase/platform/vofilesystem.h>
#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamfilter.h>
#include <vobase/streams/vostreamreadasciifile.h>
#include <vobase/streams/vostreamreadasciistringt.h>
#include <vobase/streams/vostreamreadasciit.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamreadbinaryfileraw.h>
#include <vobase/streams/vostreamreadbinarymemoryfile.h>
#include <vobase/streams/vostreamreadcompressedzip.h>
#include <vobase/streams/vostreamwriteasciifile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfileraw.h>
#include <vobase/streams/vostreamwritecompressedzip.h>
