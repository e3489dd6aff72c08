// The process-wide report of unfulfilled conditions: a check inside the
// framework that found a broken pre- or post-condition says so here, naming
// the source file, the line, the qualified function name and a severity
// (1 warning, 2 error). The default handler logs the report at error level
// under the category "Core.Diagnostics"; a test or an application may
// install its own handler.
//
//   if (!checkPreConditions())
//       BxConditionHandler::Report(__FILE__, __LINE__, "VoAlgorithm::Compute", 2);
//
//   BxConditionHandler::Handler previous = BxConditionHandler::SetHandler(&myHandler);
//   ...
//   BxConditionHandler::SetHandler(previous);
//
// Reporting does not stop the caller; whoever reports decides what happens
// next (the algorithms throw BxExceptionPreconditionViolation).
#pragma once

#include <bxbase/bxbaseapi.h>

/// The process-wide report of unfulfilled conditions: a check inside the framework that found a broken pre- or
/// post-condition says so here, naming the source file, the line, the qualified function name and a severity (1
/// warning, 2 error).
class BXBASE_API BxConditionHandler
{
public:
    /// A handler receives every report; it may be called from any thread.
    using Handler = void (*)(const char* sourceFile, int line, const char* functionName, int severity);

    /// Severity of a report that the caller treats as an error.
    static constexpr int eSeverityError = 2;

    /// Hands the report to the current handler.
    static void Report(const char* sourceFile, int line, const char* functionName, int severity);

    /// Installs `handler` (null restores the default) and returns the previous one.
    static Handler SetHandler(Handler handler) noexcept;

    /// The default handler: one error line through Logging.
    static void LogReport(const char* sourceFile, int line, const char* functionName, int severity);
};
