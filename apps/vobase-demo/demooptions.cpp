#include "demooptions.h"

#include <bxbase/bxexceptionpreconditionviolation.h>

CDemoOptions CDemoOptions::Parse(int argc, const char* const* argv)
{
    CDemoOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc || std::string(argv[i + 1]).empty())
                BX_THROW(BxExceptionPreconditionViolation, "CDemoOptions::Parse", argument + " needs a value");
            return argv[++i];
        };
        if (argument == "--help" || argument == "-h")
            options.m_help = true;
        else if (argument == "--dot")
            options.m_dotPath = value();
        else if (argument == "--trace")
            options.m_tracePath = value();
        else if (argument == "--fail-stage")
            options.m_failStage = value();
        else
            BX_THROW(BxExceptionPreconditionViolation, "CDemoOptions::Parse", "unknown option " + argument);
    }
    return options;
}

const char* CDemoOptions::Usage()
{
    return "usage: vobase-demo [--dot PATH] [--trace PATH] [--help]\n"
           "\n"
           "Runs a small document-processing application on the VoBase runtime and\n"
           "reports each stage: dispatcher and worker thread, data tree under locks,\n"
           "task graph on the thread pool, workflow, undo history, compressed archive,\n"
           "and the task graph in Graphviz form.\n"
           "\n"
           "  --dot PATH   write the task graph to PATH (default vobase-demo-tasks.dot);\n"
           "               PATH with .svg instead of .dot is rendered when `dot` is on PATH\n"
           "  --trace PATH write the run's trace to PATH (Trace Event Format JSON: open it\n"
           "               in https://ui.perfetto.dev or chrome://tracing)\n"
           "  --help       show this text\n"
           "\n"
           "Exit code: 0 when every stage passed, 1 when one failed, 2 for a bad command line.\n";
}
