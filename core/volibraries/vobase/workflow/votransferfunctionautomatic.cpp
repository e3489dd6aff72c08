#include <vobase/workflow/votransferfunctionautomatic.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

const BxRTTI VoTransferFunctionAutomatic::RTTI(L"VoTransferFunctionAutomatic", {&VoTransferFunction::RTTI});

VoTransferFunctionAutomatic::VoTransferFunctionAutomatic(const VoMessageHandlerBase& handler,
                                                         BxSmartPointer<const VoMessageWorkflowAction> initMessage,
                                                         bool breakSupport, bool blocking)
    : VoTransferFunction(std::move(initMessage), breakSupport), m_handler(handler), m_blocking(blocking)
{
}

VoTransferFunctionAutomatic::VoTransferFunctionAutomatic(const VoMessageHandlerBase& handler,
                                                         BxSmartPointer<const VoMessageWorkflowAction> initMessage,
                                                         bool breakSupport, bool blocking, const CStringW& name)
    : VoTransferFunction(std::move(initMessage), breakSupport, name), m_handler(handler), m_blocking(blocking)
{
}

void VoTransferFunctionAutomatic::SetMessage(const VoMessageWorkflowAction& message)
{
    std::unique_ptr<IObject> clone = message.GetRTTI().CloneObject(message);
    auto* action = dynamic_cast<VoMessageWorkflowAction*>(clone.get());
    if (action == nullptr)
        BX_THROW(BxExceptionPreconditionViolation, "VoTransferFunctionAutomatic::SetMessage",
                 L"the message class cannot be cloned: " + std::wstring(message.GetClassNameW()));
    clone.release();
    m_message = BxSmartPointer<const VoMessageWorkflowAction>(action);
}

void VoTransferFunctionAutomatic::Break()
{
    if (hasBreakSupport())
        onBreak();
}

void VoTransferFunctionAutomatic::reportException(const BxException* exception) noexcept
{
    try {
        onException(exception);
    } catch (...) {
        // onException must not let anything out of Run either
    }
}

void VoTransferFunctionAutomatic::Run()
{
    try {
        m_breakEvent.Reset();
        if (m_message) {
            execute(*m_message);
        } else {
            const BxSmartPointer<const VoMessageWorkflowAction>& init = GetInitMessage();
            if (!init)
                throw BxException("votransferfunctionautomatic.cpp", 178, "VoTransferFunctionAutomatic::Run");
            execute(*init);
        }
    } catch (const BxException& exception) {
        reportException(&exception);
    } catch (...) {
        reportException(nullptr);
    }
    m_message = nullptr;
}
