#include <bxbase/diagnostics/bxconditionhandler.h>
#include <bxbase/logging/clogger.h>

#include <atomic>

namespace {

// The installed handler; swapped atomically so that reports on other threads
// always see either the old or the new one.
std::atomic<BxConditionHandler::Handler> g_handler{&BxConditionHandler::LogReport};

}  // namespace

void BxConditionHandler::Report(const char* sourceFile, int line, const char* functionName, int severity)
{
    g_handler.load(std::memory_order_acquire)(sourceFile ? sourceFile : "", line, functionName ? functionName : "",
                                              severity);
}

BxConditionHandler::Handler BxConditionHandler::SetHandler(Handler handler) noexcept
{
    return g_handler.exchange(handler ? handler : &LogReport, std::memory_order_acq_rel);
}

void BxConditionHandler::LogReport(const char* sourceFile, int line, const char* functionName, int severity)
{
    static Logging::CLogger logger(L"Core.Diagnostics");
    logger.Error(sourceFile, line, functionName, L"Condition not fulfilled (severity %d) in %S at %S:%d", severity,
                 functionName, sourceFile, line);
}
