#include <bxbase/interceptor/cframework.h>
#include <bxbase/interceptor/icontext.h>

#include <gtest/gtest.h>

#include <functional>

#include <string>
#include <vector>

namespace {

struct CContextAdd : Interceptor::IContext
{
    std::string name;
};

class IHooks
{
public:
    virtual ~IHooks() = default;
    virtual void OnAdd(const CContextAdd& context) = 0;
};

class CManager : public Interceptor::CFramework<IHooks>
{
public:
    void Add(const std::string& name)
    {
        CContextAdd context;
        context.name = name;
        dispatch(&IHooks::OnAdd, context);
    }
};

struct CRecorder : IHooks
{
    std::vector<std::string> seen;
    std::function<void()> onCall;
    void OnAdd(const CContextAdd& context) override
    {
        seen.push_back(context.name);
        if (onCall)
            onCall();
    }
};

}  // namespace

TEST(Interceptor, DispatchReachesEveryInterceptorOnce)
{
    CManager manager;
    auto a = std::make_shared<CRecorder>();
    auto b = std::make_shared<CRecorder>();
    manager.GetDispatcher()->Add(a);
    manager.GetDispatcher()->Add(a);  // duplicate: ignored
    manager.GetDispatcher()->Add(b);
    EXPECT_EQ(manager.GetDispatcher()->GetCount(), 2u);
    manager.Add("item");
    EXPECT_EQ(a->seen, std::vector<std::string>{"item"});
    EXPECT_EQ(b->seen, std::vector<std::string>{"item"});

    manager.GetDispatcher()->Remove(std::make_shared<CRecorder>());  // unknown: ignored
    manager.GetDispatcher()->Remove(a);
    manager.Add("second");
    EXPECT_EQ(a->seen.size(), 1u);
    EXPECT_EQ(b->seen.size(), 2u);
}

TEST(Interceptor, CopiesShareTheDispatcherAndHooksMayEditTheList)
{
    CManager manager;
    CManager copy = manager;
    EXPECT_EQ(copy.GetDispatcher(), manager.GetDispatcher());
    auto a = std::make_shared<CRecorder>();
    a->onCall = [&] { manager.GetDispatcher()->Remove(a); };  // removes itself while dispatched
    copy.GetDispatcher()->Add(a);
    manager.Add("once");
    manager.Add("twice");
    EXPECT_EQ(a->seen, std::vector<std::string>{"once"});
}
