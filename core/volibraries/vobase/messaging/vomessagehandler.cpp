#include <vobase/messaging/vomessagehandler.h>

#include <bxbase/windows/bxwindowsapi.h>

VoMessageHandler::VoMessageHandler(const CStringW& name) : VoMessageHandlerBase(name) {}

VoMessageHandler::~VoMessageHandler()
{
    if (GetHWND() != nullptr)
        destroyMessageHandler().Ignore();
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoMessageHandler::initMessageHandler()
{
    return createHWND(*this, *this);
}

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoMessageHandler::destroyMessageHandler()
{
    const HWND hwnd = m_hwnd.exchange(nullptr, std::memory_order_acq_rel);
    if (hwnd != nullptr)
    {
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        DestroyWindow(hwnd);  // frees the window; it no longer reaches this handler
    }
    return true;
}

LRESULT VoMessageHandler::windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    VoMessageHandlerBase* handler = nullptr;
    if (message == WM_CREATE)
    {
        // The creation parameter is the handler; keep it as the window's user
        // data and give the handler its window before it subscribes.
        handler = static_cast<VoMessageHandlerBase*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(handler));
        if (handler != nullptr)
            handler->setHWND(hwnd);
    }
    else
    {
        handler = reinterpret_cast<VoMessageHandlerBase*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    }
    if (handler == nullptr)
        return DefWindowProcW(hwnd, message, wParam, lParam);
    int handled = 1;
    const LRESULT result = handler->WindowProcHook(message, wParam, lParam, handled);
    return handled ? result : DefWindowProcW(hwnd, message, wParam, lParam);
}
