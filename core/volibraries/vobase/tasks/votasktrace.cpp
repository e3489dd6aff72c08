#include <vobase/tasks/votasktrace.h>

#include <vobase/graphs/vographnode.h>

void VoTaskTrace::RecordWorkItem(const VoGraphNode& node, std::uint64_t start) noexcept
{
    BxTraceRecorder::Complete(kCategory, node.GetName(), start);
}
