// Export macro of the vocompression shared library (see bxbase/bxbaseapi.h).
#pragma once

#if defined(_WIN32)
#  if defined(VOCOMPRESSION_BUILDING)
#    define VOCOMPRESSION_API __declspec(dllexport)
#  else
#    define VOCOMPRESSION_API __declspec(dllimport)
#  endif
#else
#  define VOCOMPRESSION_API __attribute__((visibility("default")))
#endif
