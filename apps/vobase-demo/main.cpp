// vobase-demo: a small document-processing application on the VoBase
// runtime. It takes a vibration log through the dispatcher, the data
// manager, the task graph, the workflow, the undo history and the compressed
// archive, prints one line per stage and writes the task graph for Graphviz.
// See demo.h for the stages and demooptions.h for the command line.
#include "demo.h"
#include "demooptions.h"

#include <bxbase/diagnostics/bxtracerecorder.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv)
{
    CDemoOptions options;
    try {
        options = CDemoOptions::Parse(argc, argv);
    } catch (const std::exception& error) {
        const auto* library = dynamic_cast<const BxException*>(&error);
        std::fprintf(stderr, "vobase-demo: %s (see --help)\n", library ? library->GetMessage().c_str() : error.what());
        return 2;
    }
    if (options.IsHelp()) {
        std::fputs(CDemoOptions::Usage(), stdout);
        return 0;
    }
    try {
        if (!options.GetTracePath().empty())
            BxTraceRecorder::Start();
        int result = 0;
        {
            CDemo demo(options);
            result = demo.Run();
        }
        if (!options.GetTracePath().empty()) {
            BxTraceRecorder::Stop();
            BxTraceRecorder::WriteFile(options.GetTracePath());
            std::printf("trace written to %s\n", options.GetTracePath().c_str());
        }
        return result;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vobase-demo: %s\n", error.what());
        return 1;
    }
}
