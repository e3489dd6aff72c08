#include <bxbase/threading/bxblockingscope.h>

namespace
{
struct SThreadHook
{
    BxBlockingScope::Hook hook = nullptr;
    void* context = nullptr;
    int depth = 0; ///< open scopes on this thread
};

thread_local SThreadHook t_hook;
} // namespace

BxBlockingScope::BxBlockingScope()
{
    if (t_hook.hook == nullptr)
        return;
    m_counted = true;
    if (t_hook.depth++ == 0)
    {
        m_outermost = true;
        t_hook.hook(t_hook.context, true);
    }
}

BxBlockingScope::~BxBlockingScope()
{
    if (!m_counted)
        return;
    if (m_outermost && t_hook.hook != nullptr)
        t_hook.hook(t_hook.context, false);
    --t_hook.depth;
}

void BxBlockingScope::SetThreadHook(Hook hook, void* context)
{
    t_hook.hook = hook;
    t_hook.context = context;
}
