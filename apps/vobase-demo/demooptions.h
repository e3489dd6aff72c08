// The demo's command line.
//
//   vobase-demo [--dot PATH] [--trace PATH] [--help]
//
// --dot PATH   where the task graph goes in Graphviz form (default
//              vobase-demo-tasks.dot in the current directory); an SVG
//              rendering is written beside it when `dot` is on PATH.
// --trace PATH the run's trace (threads, messages, tasks, locks, workflow
//              steps) in the Trace Event Format, for Perfetto or chrome://tracing.
// --fail-stage NAME (not shown in the help) makes the named stage fail at
//              its start, so that tests can check the failure path.
#pragma once

#include <string>

class CDemoOptions
{
public:
    /// The options of `argv`; throws BxExceptionPreconditionViolation for an
    /// unknown option or a missing value.
    static CDemoOptions Parse(int argc, const char* const* argv);
    /// The help text.
    static const char* Usage();

    /// --help was given.
    bool IsHelp() const noexcept { return m_help; }
    /// The path of the Graphviz file.
    const std::string& GetDotPath() const noexcept { return m_dotPath; }
    /// Where the trace goes (empty: no trace).
    const std::string& GetTracePath() const noexcept { return m_tracePath; }
    /// The stage to fail on purpose (empty: none).
    const std::string& GetFailStage() const noexcept { return m_failStage; }

private:
    bool m_help = false;
    std::string m_dotPath = "vobase-demo-tasks.dot";
    std::string m_tracePath;
    std::string m_failStage;
};
