#include <vobase/workflow/vomessageworkflowendoftf.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageWorkflowEndOfTF, &VoMessage::RTTI)

const wchar_t* VoMessageWorkflowEndOfTF::GetName(std::uint32_t message) noexcept
{
    static constexpr const wchar_t* names[] = {L"eM_EndOfATF", L"eM_EndOfITF", L"eM_EndOfITFExit"};
    return message < std::size(names) ? names[message] : L"???";
}

void VoMessageWorkflowEndOfTF::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    VoMessage::Dump(stream);
    stream << L" (" << GetName(m_message) << L")";
}
