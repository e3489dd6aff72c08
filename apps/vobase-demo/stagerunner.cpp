#include "stagerunner.h"

#include <bxbase/diagnostics/bxtracescope.h>

#include <bxbase/bxexception.h>

#include <algorithm>
#include <chrono>
#include <exception>

namespace {

/// The short form of an error: a library exception's own message (its
/// what() adds the source position), else what().
std::string reasonOf(const std::exception& error)
{
    if (const auto* library = dynamic_cast<const BxException*>(&error))
        return library->GetMessage().empty() ? library->GetFunctionName() : library->GetMessage();
    return error.what();
}

}  // namespace

void CStageRunner::Add(std::string name, Body body)
{
    m_stages.push_back({std::move(name), std::move(body)});
}

bool CStageRunner::Has(const std::string& name) const
{
    return std::any_of(m_stages.begin(), m_stages.end(), [&](const SStage& stage) { return stage.name == name; });
}

bool CStageRunner::Run(const std::string& failStage)
{
    m_passed = 0;
    m_totalMs = 0;
    bool failed = false;
    for (const SStage& stage : m_stages) {
        if (failed) {
            std::fprintf(m_out, "stage %-10s skipped\n", stage.name.c_str());
            continue;
        }
        failed = !runStage(stage, stage.name == failStage);
        m_passed += !failed;
    }
    std::fflush(m_out);
    return !failed;
}

bool CStageRunner::runStage(const SStage& stage, bool failOnPurpose)
{
    BxTraceScope span("demo", stage.name); // one span per stage in the trace
    const auto start = std::chrono::steady_clock::now();
    auto elapsed = [&] { return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count(); };
    std::string reason;
    try {
        if (failOnPurpose)
            BX_THROW(BxException, "CStageRunner::runStage", "failure requested by --fail-stage");
        const std::string text = stage.body();
        const double ms = elapsed();
        m_totalMs += ms;
        report(stage.name, "ok", ms, text);
        return true;
    } catch (const std::exception& error) {
        reason = reasonOf(error);
    } catch (...) {
        reason = "unknown exception";
    }
    const double ms = elapsed();
    m_totalMs += ms;
    report(stage.name, "FAILED", ms, reason);
    std::fprintf(m_err, "vobase-demo: stage %s failed: %s\n", stage.name.c_str(), reason.c_str());
    return false;
}

void CStageRunner::report(const std::string& name, const char* mark, double ms, const std::string& text) const
{
    std::fprintf(m_out, "stage %-10s %-7s %7.1f ms  %s\n", name.c_str(), mark, ms, text.c_str());
}
