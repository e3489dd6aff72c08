// Export macro of the vobase shared library (see bxbase/bxbaseapi.h).
#pragma once

#if defined(_WIN32)
#  if defined(VOBASE_BUILDING)
#    define VOBASE_API __declspec(dllexport)
#  else
#    define VOBASE_API __declspec(dllimport)
#  endif
#else
#  define VOBASE_API __attribute__((visibility("default")))
#endif
