#include <vobase/messaging/voobservable.h>
#include <vobase/messaging/voobserver.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using EType = VoObservableMessage::EMessageType;

// Records every call in a shared log as "<name>:<type>:<registration data>:<caller data>".
class CRecorder : public VoObserver
{
public:
    CRecorder(std::string name, std::vector<std::string>& log) : m_name(std::move(name)), m_log(log) {}
    std::function<void()> onCall;  // runs inside the callback, after the log entry

protected:
    void onNotify(VoObservable&, const VoObservableMessage& message, void* userData) override
    {
        m_log.push_back(m_name + ":" + std::to_string(message.GetType()) + ":" + text(message.GetUserData()) + ":" +
                        text(userData));
        if (onCall)
            onCall();
    }

private:
    static std::string text(void* p) { return p ? *static_cast<std::string*>(p) : "-"; }
    std::string m_name;
    std::vector<std::string>& m_log;
};

class VoObservableTest : public ::testing::Test
{
protected:
    VoObservable observable;
    std::vector<std::string> log;
    std::string first = "first", second = "second", caller = "caller";
};

TEST_F(VoObservableTest, SecondRegistrationForOneTypeIsIgnored)
{
    CRecorder a("a", log);
    a.Observe(observable, VoObservableMessage::eMT_2, &first, 0);
    a.Observe(observable, VoObservableMessage::eMT_2, &second, 1);
    EXPECT_EQ(a.GetObservableCount(), 1u);
    observable.NotifyObservers(VoObservableMessage::eMT_2, &caller);
    observable.NotifyObservers(VoObservableMessage::eMT_2, nullptr);  // first flag (not one-shot) stays
    EXPECT_EQ(log, (std::vector<std::string>{"a:2:first:caller", "a:2:first:-"}));
}

TEST_F(VoObservableTest, ObserveWithoutTypeRegistersAll23)
{
    CRecorder a("a", log);
    a.Observe(observable, &first, 0);
    EXPECT_EQ(a.GetObservableCount(), 23u);
    for (int type = 0; type < 23; ++type)
        EXPECT_EQ(observable.IsObserver(a, static_cast<EType>(type)), 1);
    observable.NotifyObservers(VoObservableMessage::eMT_22, nullptr);
    EXPECT_EQ(log, std::vector<std::string>{"a:22:first:-"});

    EXPECT_TRUE(a.Unobserve(VoObservableMessage::eMT_22));
    EXPECT_FALSE(a.Unobserve(VoObservableMessage::eMT_22));
    EXPECT_EQ(a.GetObservableCount(), 22u);
    EXPECT_TRUE(a.Unobserve(observable));
    EXPECT_EQ(observable.IsObserver(a), 0);
    EXPECT_FALSE(a.Unobserve());
}

TEST_F(VoObservableTest, OneShotIsUnregisteredBeforeItsCallback)
{
    CRecorder a("a", log);
    a.Observe(observable, VoObservableMessage::eMT_1, 1);
    int registeredDuringCallback = -1;
    a.onCall = [&] { registeredDuringCallback = observable.IsObserver(a, VoObservableMessage::eMT_1); };
    observable.NotifyObservers(VoObservableMessage::eMT_1, nullptr);
    observable.NotifyObservers(VoObservableMessage::eMT_1, nullptr);
    EXPECT_EQ(log.size(), 1u);
    EXPECT_EQ(registeredDuringCallback, 0);
    EXPECT_EQ(a.GetObservableCount(), 0u);
    EXPECT_EQ(observable.GetObserverCount(VoObservableMessage::eMT_1), 0u);  // purged after the walk
}

TEST_F(VoObservableTest, SendMessagePassesTheMessageAndIgnoresOneShot)
{
    CRecorder a("a", log);
    a.Observe(observable, VoObservableMessage::eMT_5, &first, 1);
    observable.SendMessageW(VoObservableMessage(VoObservableMessage::eMT_5, &second), &caller);
    observable.SendMessageW(VoObservableMessage(VoObservableMessage::eMT_5, &second), nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"a:5:second:caller", "a:5:second:-"}));
}

TEST_F(VoObservableTest, RemovalDuringAWalkSkipsAndDefersThePurge)
{
    CRecorder a("a", log), b("b", log), c("c", log);
    for (CRecorder* r : {&a, &b, &c})
        r->Observe(observable, VoObservableMessage::eMT_0, 0);
    std::size_t countInsideWalk = 0;
    a.onCall = [&] {
        b.Unobserve();
        countInsideWalk = observable.GetObserverCount(VoObservableMessage::eMT_0);
    };
    observable.NotifyObservers(VoObservableMessage::eMT_0, nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"a:0:-:-", "c:0:-:-"}));
    EXPECT_EQ(countInsideWalk, 3u);  // only marked while walking
    EXPECT_EQ(observable.GetObserverCount(VoObservableMessage::eMT_0), 2u);
}

TEST_F(VoObservableTest, ObserverAddedDuringAWalkWaitsForTheNextOne)
{
    CRecorder a("a", log), late("late", log);
    a.Observe(observable, VoObservableMessage::eMT_3, 0);
    a.onCall = [&] { late.Observe(observable, VoObservableMessage::eMT_3, 0); };
    observable.NotifyObservers(VoObservableMessage::eMT_3, nullptr);
    EXPECT_EQ(log, std::vector<std::string>{"a:3:-:-"});
    observable.NotifyObservers(VoObservableMessage::eMT_3, nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"a:3:-:-", "a:3:-:-", "late:3:-:-"}));
}

TEST_F(VoObservableTest, NestedNotificationPurgesOnlyAtTheOutermostEnd)
{
    CRecorder a("a", log), b("b", log);
    a.Observe(observable, VoObservableMessage::eMT_1, 0);
    b.Observe(observable, VoObservableMessage::eMT_1, 0);
    b.Observe(observable, VoObservableMessage::eMT_2, 0);
    std::size_t countAfterInner = 0;
    bool nested = false;
    a.onCall = [&] {
        if (std::exchange(nested, true))
            return;
        b.onCall = [&] { b.Unobserve(VoObservableMessage::eMT_1); };
        observable.NotifyObservers(VoObservableMessage::eMT_1, nullptr);  // nested walk of the same type
        countAfterInner = observable.GetObserverCount(VoObservableMessage::eMT_1);
    };
    observable.NotifyObservers(VoObservableMessage::eMT_1, nullptr);
    // outer: a -> (inner: a, b removes itself) ; outer continues and skips b
    EXPECT_EQ(log, (std::vector<std::string>{"a:1:-:-", "a:1:-:-", "b:1:-:-"}));
    EXPECT_EQ(countAfterInner, 2u);
    EXPECT_EQ(observable.GetObserverCount(VoObservableMessage::eMT_1), 1u);
    EXPECT_EQ(observable.IsObserver(b, VoObservableMessage::eMT_2), 1);
}

TEST_F(VoObservableTest, ThrowingObserverDoesNotStopTheWalk)
{
    CRecorder a("a", log), b("b", log);
    a.Observe(observable, VoObservableMessage::eMT_4, 0);
    b.Observe(observable, VoObservableMessage::eMT_4, 0);
    a.onCall = [] { throw std::runtime_error("observer failed"); };
    EXPECT_NO_THROW(observable.NotifyObservers(VoObservableMessage::eMT_4, nullptr));
    EXPECT_EQ(log, (std::vector<std::string>{"a:4:-:-", "b:4:-:-"}));
}

TEST_F(VoObservableTest, DestructionOnEitherSideUnregisters)
{
    CRecorder a("a", log);
    {
        CRecorder shortLived("b", log);
        shortLived.Observe(observable, 0);
        a.Observe(observable, VoObservableMessage::eMT_6, 0);
    }
    EXPECT_EQ(observable.GetObserverCount(VoObservableMessage::eMT_0), 0u);
    EXPECT_EQ(observable.GetObserverCount(VoObservableMessage::eMT_6), 1u);
    {
        VoObservable dying;
        a.Observe(dying, 0);
        EXPECT_EQ(a.GetObservableCount(), 24u);
        EXPECT_GT(dying.GetMemoryUsage(), sizeof(VoObservable));
    }
    EXPECT_EQ(a.GetObservableCount(), 1u);
    observable.NotifyObservers(VoObservableMessage::eMT_6, nullptr);
    EXPECT_EQ(log, std::vector<std::string>{"a:6:-:-"});
}

}  // namespace
