#include <bxbase/bxformat.h>
#include <bxbase/logging/ilogger.h>

#include <cstdarg>

namespace Logging {

#define BX_LOGGER_FORWARD(Name, Level)                                                                 \
    void ILogger::Name(const char* sourceFile, int line, const char* functionName, const wchar_t* format, ...) \
    {                                                                                                  \
        if (!IsEnabled(Level))                                                                         \
            return;                                                                                    \
        va_list arguments;                                                                             \
        va_start(arguments, format);                                                                   \
        std::wstring message = BxFormat::WideV(format, arguments);                                     \
        va_end(arguments);                                                                             \
        Log(Level, sourceFile, line, functionName, message);                                           \
    }

BX_LOGGER_FORWARD(Error, eLL_Error)
BX_LOGGER_FORWARD(Warn, eLL_Warn)
BX_LOGGER_FORWARD(Info, eLL_Info)
BX_LOGGER_FORWARD(Trace, eLL_Trace)

#undef BX_LOGGER_FORWARD

}  // namespace Logging
