// Interface of the framework's loggers.
//
// A logger receives (level, source file, line, function name, message) and
// decides where the text goes. The printf-style helpers format only when the
// level is enabled, so a filtered-out line costs one virtual call.
//
//   BxSmartPointer<Logging::ILogger> log(new Logging::CLogger(L"Core.TaskManager"));
//   log->Info(__FILE__, __LINE__, "VoTaskManager::Start", L"Starting task '%S'", name.c_str());
//
// Wide formats follow BxFormat: "%s" takes a wide string, "%S" a narrow one.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/ireferencecounted.h>

#include <string>

namespace Logging {

/// Severity, most severe first. A logger at level L passes L and everything above it.
enum ELogLevel
{
    eLL_Error = 0, ///< A failure the caller or the user must know about.
    eLL_Warn = 1,  ///< Something unexpected that the library worked around.
    eLL_Info = 2,  ///< Progress of the managers (tasks started, states entered).
    eLL_Trace = 3  ///< Detailed tracing for debugging.
};

/// Interface of the framework's loggers.
class BXBASE_API ILogger : public IReferenceCounted
{
public:
    /// True when lines of `level` are kept.
    virtual bool IsEnabled(ELogLevel level) const = 0;

    /// Takes one finished line.
    virtual void Log(ELogLevel level, const char* sourceFile, int line, const char* functionName,
                     const std::wstring& message) = 0;

    /// Formats `format` and the arguments after it (BxFormat::Wide) and logs the line at eLL_Error; does nothing,
    /// not even formatting, when that level is not enabled.
    void Error(const char* sourceFile, int line, const char* functionName, const wchar_t* format, ...);
    /// Formats `format` and the arguments after it (BxFormat::Wide) and logs the line at eLL_Warn; does nothing,
    /// not even formatting, when that level is not enabled.
    void Warn(const char* sourceFile, int line, const char* functionName, const wchar_t* format, ...);
    /// Formats `format` and the arguments after it (BxFormat::Wide) and logs the line at eLL_Info; does nothing,
    /// not even formatting, when that level is not enabled.
    void Info(const char* sourceFile, int line, const char* functionName, const wchar_t* format, ...);
    /// Formats `format` and the arguments after it (BxFormat::Wide) and logs the line at eLL_Trace; does nothing,
    /// not even formatting, when that level is not enabled.
    void Trace(const char* sourceFile, int line, const char* functionName, const wchar_t* format, ...);
};

}  // namespace Logging
