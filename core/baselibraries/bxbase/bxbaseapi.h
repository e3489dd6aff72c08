// Export macro of the bxbase shared library.
//
// The library is built with hidden visibility; every class and function that
// forms its interface is marked BXBASE_API and so exported whole.
#pragma once

#if defined(_WIN32)
#  if defined(BXBASE_BUILDING)
#    define BXBASE_API __declspec(dllexport)
#  else
#    define BXBASE_API __declspec(dllimport)
#  endif
#else
#  define BXBASE_API __attribute__((visibility("default")))
#endif
