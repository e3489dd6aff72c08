#include <vobase/workflow/voworkflowtrace.h>

#include <bxbase/bxstringconvert.h>
#include <bxbase/diagnostics/bxtracerecorder.h>

#include <string>

namespace {

constexpr const char* kCategory = "workflow";

void instant(const char* what, std::wstring_view name)
{
    BxTraceRecorder::Instant(kCategory, what + BxStringConvert::WideToUtf8Lossy(name));
}

} // namespace

void VoWorkflowTrace::Record(Hook<Workflow::CContextStart>, const Workflow::CContextStart& context)
{
    if (context.GetState())
        instant("started in ", context.GetState()->GetClassNameW());
}

void VoWorkflowTrace::Record(Hook<Workflow::CContextStop>, const Workflow::CContextStop&)
{
    BxTraceRecorder::Instant(kCategory, "stopped");
}

void VoWorkflowTrace::Record(Hook<Workflow::CContextStateChange>, const Workflow::CContextStateChange& context)
{
    if (context.GetFrom())
        instant("left ", context.GetFrom()->GetClassNameW());
    if (context.GetTo())
        instant("entered ", context.GetTo()->GetClassNameW());
}

void VoWorkflowTrace::Record(Hook<Workflow::CContextTransferFunction> hook,
                             const Workflow::CContextTransferFunction& context)
{
    if (!context.GetTransferFunction())
        return;
    const bool ended = hook == &Workflow::IInterceptorWorkflowManager::OnTransferFunctionEnd;
    instant(ended ? "end of transfer function " : "transfer function ", context.GetTransferFunction()->GetName());
}
