#include <vobase/data/vodatatrace.h>

#include <vobase/data/vodatahandlebase.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxstringconvert.h>
#include <bxbase/diagnostics/bxtracerecorder.h>

namespace {

std::uint64_t idOf(const VoDataHandleBase& handle) noexcept
{
    return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&handle));
}

} // namespace

// The node of a requested or granted handle is in its manager's tree and keeps
// its name (managed nodes cannot be renamed), so both ends of a span get the
// same name.
std::string VoDataTrace::spanName(const VoDataHandleBase& handle, bool wait)
{
    std::string name = wait ? "wait " : "";
    name += handle.getAccessRights() == VoDataHandleBase::eAR_Write ? "write " : "read ";
    if (const VoNode* node = handle.getNode())
        name += BxStringConvert::WideToUtf8Lossy(node->GetName());
    return name;
}

void VoDataTrace::begin(VoDataHandleBase& handle, ETraceState state)
{
    BxTraceRecorder::AsyncBegin(kCategory, spanName(handle, state == eTS_Waiting), idOf(handle));
    handle.m_traceState = state;
}

void VoDataTrace::end(VoDataHandleBase& handle)
{
    if (handle.m_traceState != eTS_None)
        BxTraceRecorder::AsyncEnd(kCategory, spanName(handle, handle.m_traceState == eTS_Waiting), idOf(handle));
    handle.m_traceState = eTS_None;
}

void VoDataTrace::RecordRequest(VoDataHandleBase& handle) noexcept
{
    try
    {
        begin(handle, handle.IsAccessGranted() ? eTS_Holding : eTS_Waiting);
    }
    catch (...)
    {
        // no memory for the name: the span is lost, the lock is not
    }
}

void VoDataTrace::RecordGrant(const BxSet<VoDataHandleBase*>& handles) noexcept
{
    try
    {
        for (VoDataHandleBase* handle : handles)
        {
            end(*handle);
            begin(*handle, eTS_Holding);
        }
    }
    catch (...)
    {
    }
}

void VoDataTrace::RecordWithdraw(VoDataHandleBase& handle) noexcept
{
    try
    {
        end(handle);
    }
    catch (...)
    {
    }
}

void VoDataTrace::RecordWithdraw(const BxMap<std::uint32_t, BxSet<VoDataHandleBase*>>& requests,
                                 std::uint32_t threadId) noexcept
{
    const auto entry = requests.find(threadId);
    if (entry == requests.end())
        return;
    for (VoDataHandleBase* handle : entry->second)
        RecordWithdraw(*handle);
}

void VoDataTrace::RecordRelease(VoDataHandleBase& handle) noexcept
{
    RecordWithdraw(handle);
}
