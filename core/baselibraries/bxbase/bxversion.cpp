#include <bxbase/bxversion.h>

#define BX_STR2(x) #x
#define BX_STR(x) BX_STR2(x)

const char* BxGetVersionString()
{
    return BX_STR(VOBASE_VERSION_MAJOR) "." BX_STR(VOBASE_VERSION_MINOR) "." BX_STR(VOBASE_VERSION_PATCH);
}
