#include <vobase/workflow/vomessageworkflow.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageWorkflow, &VoMessage::RTTI)

const wchar_t* VoMessageWorkflow::GetName(std::uint32_t message) noexcept
{
    static constexpr const wchar_t* names[] = {L"eM_Start", L"eM_StartSleeping", L"eM_Stop",       L"eM_Continue",
                                               L"eM_Sleep", L"eM_Break",         L"eM_Reevaluate", L"eM_Dump"};
    return message < std::size(names) ? names[message] : L"???";
}

void VoMessageWorkflow::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    VoMessage::Dump(stream);
    stream << L" (" << GetName(m_message) << L")";
}
