#include "messagingtestsupport.h"

#include <vobase/messaging/vomessagecreatehwnd.h>
#include <vobase/messaging/vomessagesubscription.h>

#include <bxbase/windows/bxmessageloop.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <memory>
#include <thread>

namespace MessagingTest {
namespace {

using Results = BxList<std::int64_t>;

class VoMessageDispatcherTest : public CDispatcherTest
{
};

TEST_F(VoMessageDispatcherTest, SendWithoutSubscribersReturnsZero)
{
    Results results;
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgNobody(), results), 0);
    EXPECT_TRUE(results.empty());
}

TEST_F(VoMessageDispatcherTest, SendCollectsEveryAnswerInArrivalOrder)
{
    BxEvent secondAnswered;  // declared first: it outlives the handlers' threads
    CThreadedRecorder first(L"SendFirst"), second(L"SendSecond");
    first.answer = 11;
    second.answer = 22;
    ASSERT_TRUE(first.StartAndWait());
    ASSERT_TRUE(second.StartAndWait());
    first.Subscribe(CMsgA::RTTI);
    second.Subscribe(CMsgA::RTTI);

    // The first handler answers only after the second one has: 22 arrives first.
    second.onSendAnswered = [&] { secondAnswered.Set(); };
    first.onMessage = [&](const VoMessage&) { secondAnswered.Wait(); };
    Results results{5};
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgB(1), results), 11);
    EXPECT_EQ(results, (Results{5, 22, 11}));
    EXPECT_EQ(first.Received().at(0).className, L"CMsgB");
    EXPECT_EQ(first.Received().at(0).threadID, first.GetThreadID());
    EXPECT_NE(first.GetThreadID(), second.GetThreadID());
}

TEST_F(VoMessageDispatcherTest, LocalSubscriberIsAnsweredOnTheSendersThreadAfterItsPosts)
{
    CLocalRecorder local(L"LocalOrder");
    local.Init();
    local.Subscribe(CMsgA::RTTI);
    EXPECT_EQ(local.GetThreadID(), GetCurrentThreadId());
    for (int i = 1; i <= 3; ++i)
        VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(i)));
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(4)), 1);  // nobody pumps this thread meanwhile
    EXPECT_EQ(local.Values(), (std::vector<long long>{1, 2, 3, 4}));
    for (const auto& r : local.Received())
        EXPECT_EQ(r.threadID, GetCurrentThreadId());
    BxMessageLoop::ProcessPending(0);  // the drained wake-ups left nothing behind
    EXPECT_EQ(local.ReceivedCount(), 4u);
}

TEST_F(VoMessageDispatcherTest, ClassAndCommandSubscriptionsDeliverTwice)
{
    CThreadedRecorder handler(L"Twice");
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(VoMessageWindows::RTTI);
    handler.SubscribeCommand(7);
    Results results;
    VoMessageDispatcher::SendMessageW(VoMessageCommand(7), results);
    EXPECT_EQ(results.size(), 2u);
    EXPECT_EQ(handler.Values(), (std::vector<long long>{7, 7}));

    results.clear();
    VoMessageDispatcher::SendMessageW(VoMessageCommand(8), results);  // only the class subscription
    EXPECT_EQ(results.size(), 1u);
}

TEST_F(VoMessageDispatcherTest, BaseClassWalkListsABaseReachedTwiceTwice)
{
    CThreadedRecorder handler(L"Diamond");
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(VoMessage::RTTI);  // reached through CMsgA and through CMsgC
    handler.Subscribe(CMsgC::RTTI);
    Results results;
    VoMessageDispatcher::SendMessageW(CMsgDiamond(), results);
    EXPECT_EQ(results.size(), 3u);
    handler.Subscribe(VoMessage::RTTI);  // a second subscription to one class changes nothing
    results.clear();
    VoMessageDispatcher::SendMessageW(CMsgDiamond(), results);
    EXPECT_EQ(results.size(), 3u);
}

TEST_F(VoMessageDispatcherTest, TargetedMessagesReachOnlyASubscribedTarget)
{
    CThreadedRecorder a(L"TargetA"), b(L"TargetB");
    ASSERT_TRUE(a.StartAndWait());
    ASSERT_TRUE(b.StartAndWait());
    a.Subscribe(CMsgA::RTTI);
    b.Subscribe(CMsgA::RTTI);
    b.answer = 2;
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(1), b), 2);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgC(1), b), 0);  // b is not subscribed to CMsgC
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(3)), a);
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgC(4)), a);  // dropped
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(5), a), 1);
    EXPECT_EQ(a.Values(), (std::vector<long long>{3, 5}));
    EXPECT_EQ(b.Values(), (std::vector<long long>{1}));
}

TEST_F(VoMessageDispatcherTest, NameClashLeavesTheTablesUnchanged)
{
    CThreadedRecorder first(L"SameName"), second(L"SameName");
    ASSERT_TRUE(first.StartAndWait());
    ASSERT_TRUE(second.StartAndWait());  // its own CreateHWND subscription was refused too
    first.Subscribe(CMsgA::RTTI);
    second.Subscribe(CMsgA::RTTI);
    EXPECT_EQ(VoMessageDispatcher::SendPrivateMessage(
                  VoMessageSubscription(&second, VoMessageSubscription::eA_Subscribe, CMsgC::RTTI)),
              E_FAIL);
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"SameName"), &first);
    EXPECT_EQ(second.getDispatcher(), nullptr);
    Results results;
    VoMessageDispatcher::SendMessageW(CMsgA(), results);
    VoMessageDispatcher::SendMessageW(CMsgC(), results);
    EXPECT_EQ(results.size(), 1u);
    EXPECT_EQ(second.ReceivedCount(), 0u);
}

TEST_F(VoMessageDispatcherTest, RegistryFollowsSubscriptionsAndUnsubscribeAll)
{
    CThreadedRecorder handler(L"Registered");
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"Registered"), nullptr);
    ASSERT_TRUE(handler.StartAndWait());  // subscribes to VoMessageCreateHWND
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"Registered"), &handler);
    EXPECT_EQ(handler.getDispatcher(), &VoMessageDispatcher::GetInstance());
    handler.Subscribe(CMsgA::RTTI);
    handler.UnsubscribeAll();
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"Registered"), nullptr);
    EXPECT_EQ(handler.getDispatcher(), nullptr);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(), handler), 0);
    EXPECT_EQ(VoMessageDispatcher::SendPrivateMessage(
                  VoMessageSubscription(&handler, static_cast<VoMessageSubscription::EAction>(9), CMsgA::RTTI)),
              E_FAIL);
}

TEST_F(VoMessageDispatcherTest, UnsubscribePurgesQueuedMessagesAndReleasesSenders)
{
    BxEvent entered, gate, sendQueued;
    CThreadedRecorder handler(L"Purged");
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);
    handler.Subscribe(CMsgC::RTTI);
    handler.onMessage = [&](const VoMessage& m) {
        if (m.IsKindOf(CMsgC::RTTI) && static_cast<const CMsgC&>(m).value == 0)
        {
            entered.Set();
            gate.Wait();
        }
    };
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgC(0)));  // blocks the handler
    ASSERT_TRUE(entered.Wait(10000));
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(1)));
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgB(2)));
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgC(3)));
    SyncDispatcher();
    handler.onSignalSend = [&] { sendQueued.Set(); };
    LRESULT blockedSend = -1;
    std::thread sender([&] { blockedSend = VoMessageDispatcher::SendMessageW(CMsgB(4)); });
    ASSERT_TRUE(sendQueued.Wait(10000));
    CString next;
    handler.getNameOfNextProcessedSendMessage(next);
    EXPECT_NE(next.find(L"CMsgB"), CString::npos);

    handler.Unsubscribe(CMsgA::RTTI);  // purges 1, 2 and the send of 4
    sender.join();
    EXPECT_EQ(blockedSend, 0);
    gate.Set();
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgC(5), handler), 1);
    EXPECT_EQ(handler.Values(), (std::vector<long long>{0, 3, 5}));
}

TEST_F(VoMessageDispatcherTest, UnsubscribeAllPurgesNothing)
{
    BxEvent entered, gate, done;
    CThreadedRecorder handler(L"NotPurged");
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);
    handler.onMessage = [&](const VoMessage& m) {
        const int value = static_cast<const CMsgA&>(m).value;
        if (value == 0)
        {
            entered.Set();
            gate.Wait();
        }
        else if (value == 2)
            done.Set();
    };
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(0)));
    ASSERT_TRUE(entered.Wait(10000));
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(1)));
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(2)));
    SyncDispatcher();
    CString next = L"unchanged";
    handler.getNameOfNextProcessedPostMessage(next);
    EXPECT_NE(next.find(L"CMsgA"), CString::npos);
    handler.UnsubscribeAll();
    gate.Set();
    ASSERT_TRUE(done.Wait(10000));
    EXPECT_EQ(handler.Values(), (std::vector<long long>{0, 1, 2}));
}

TEST_F(VoMessageDispatcherTest, PostsArrivingDuringAFlushAreResignalledOncePerArrival)
{
    CLocalRecorder local(L"Flushing");
    local.Init();
    local.Subscribe(CMsgA::RTTI);
    std::atomic<int> signalled{0};
    BxEvent twoQueued;
    std::vector<long long> seenInsideFlush;
    local.onMessage = [&](const VoMessage& m) {
        if (static_cast<const CMsgA&>(m).value != 1)
            return;
        // Inside the flush: two more posts arrive and their wake-ups are pumped here.
        local.onSignalPost = [&] {
            if (++signalled == 2)
                twoQueued.Set();
        };
        VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(2)));
        VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(3)));
        ASSERT_TRUE(twoQueued.Wait(10000));
        BxMessageLoop::ProcessPending(0);
        seenInsideFlush = local.Values();
    };
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(1)));
    VoMessageDispatcher::SendMessageW(CMsgA(9));
    EXPECT_EQ(seenInsideFlush, (std::vector<long long>{1}));
    EXPECT_EQ(local.Values(), (std::vector<long long>{1, 9}));
    EXPECT_EQ(signalled.load(), 4);  // two arrivals, then one re-signal for each
    BxMessageLoop::ProcessPending(0);
    EXPECT_EQ(local.Values(), (std::vector<long long>{1, 9, 2, 3}));
    BxMessageLoop::ProcessPending(0);
    EXPECT_EQ(local.ReceivedCount(), 4u);
}

TEST_F(VoMessageDispatcherTest, PostsThenSendArriveInOrder)
{
    CThreadedRecorder remote(L"OrderRemote");
    ASSERT_TRUE(remote.StartAndWait());
    CLocalRecorder local(L"OrderLocal");
    local.Init();
    remote.Subscribe(CMsgA::RTTI);
    local.Subscribe(CMsgA::RTTI);
    std::vector<long long> expected;
    for (int round = 0; round < 3; ++round)
    {
        for (int i = 0; i < 200; ++i)
        {
            expected.push_back(round * 1000 + i);
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgA(round * 1000 + i)));
        }
        expected.push_back(round * 1000 + 999);
        Results results;
        VoMessageDispatcher::SendMessageW(CMsgA(round * 1000 + 999), results);
        EXPECT_EQ(results.size(), 2u);
        EXPECT_EQ(remote.Values(), expected);
        EXPECT_EQ(local.Values(), expected);
    }
}

TEST_F(VoMessageDispatcherTest, MessageStringTravelsToItsWindow)
{
    CLocalRecorder local(L"TextWindow");
    local.Init();
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageString(local.GetHWND(), L"Grüße")));
    SyncDispatcher();
    BxMessageLoop::ProcessPending(0);
    ASSERT_EQ(local.ReceivedCount(), 1u);
    EXPECT_EQ(local.Received()[0].className, L"VoMessageString");
    CString text;
    local.onMessage = [&](const VoMessage& m) { text = static_cast<const VoMessageString&>(m).GetMessageString(); };
    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageString(local.GetHWND(), L"zwei")));
    SyncDispatcher();
    BxMessageLoop::ProcessPending(0);
    EXPECT_EQ(text, L"zwei");
    int handled = 1;
    EXPECT_EQ(local.WindowProcHook(WM_VO_MESSAGE_STRING, 0, 0, handled), 0);  // no text: nothing
    EXPECT_EQ(local.ReceivedCount(), 2u);
}

TEST_F(VoMessageDispatcherTest, CreateHWNDMessageGivesAHandlerAWindowOnTheReceiversThread)
{
    CThreadedRecorder host(L"Host");
    ASSERT_TRUE(host.StartAndWait());
    CLocalRecorder guest(L"Guest");
    EXPECT_EQ(guest.GetHWND(), nullptr);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(VoMessageCreateHWND(guest, L"Guest"), host), 1);
    ASSERT_NE(guest.GetHWND(), nullptr);
    EXPECT_EQ(guest.GetThreadID(), host.GetThreadID());
    guest.Subscribe(CMsgC::RTTI);
    VoMessageDispatcher::SendMessageW(CMsgC(3));
    ASSERT_EQ(guest.ReceivedCount(), 1u);
    EXPECT_EQ(guest.Received()[0].threadID, host.GetThreadID());
    guest.UnsubscribeAll();
}

TEST_F(VoMessageDispatcherTest, MisdirectedMessageIsTracedInGermanAndFails)
{
    CThreadedRecorder handler(L"Empfänger1");
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger);
    handler.SetLogger(logger);
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgNobody::RTTI);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgNobody(), handler), E_FAIL);
    EXPECT_EQ(logger->Lines(),
              std::vector<std::wstring>{L"3:ERROR: Fehlgeleitete Meldung: Empfänger 'Empfänger1', Meldung 'CMsgNobody'"});
    handler.Unsubscribe(CMsgNobody::RTTI);
}

TEST_F(VoMessageDispatcherTest, FailedWakeUpIsLoggedAndTheEntryStays)
{
    // The window dies with the thread that made it; later wake-ups cannot be posted.
    CLocalRecorder windowless(L"Windowless");
    std::thread([&] { windowless.Init(); }).join();
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger);
    windowless.SetLogger(logger);
    windowless.queuePostNotification(VoPostNotification{nullptr, BxSmartPointer<const VoMessage>(new CMsgA(1))});
    EXPECT_EQ(logger->Lines(), std::vector<std::wstring>{L"0:PostMessage() failed with error code 1400"});
    CString next;
    windowless.getNameOfNextProcessedPostMessage(next);
    EXPECT_NE(next.find(L"CMsgA"), CString::npos);
}

TEST_F(VoMessageDispatcherTest, DestroyedHandlerReleasesTheSendersOfItsQueuedSends)
{
    BxEvent sendQueued;
    auto handler = std::make_unique<CLocalRecorder>(L"DiesWithASend");
    std::thread([&] { handler->Init(); }).join();  // its window, and so its wake-ups, die with that thread
    handler->SetLogger(BxSmartPointer<Logging::ILogger>(new CCapturingLogger));
    handler->Subscribe(CMsgA::RTTI);
    handler->onSignalSend = [&] { sendQueued.Set(); };
    LRESULT result = -1;
    std::thread sender([&] { result = VoMessageDispatcher::SendMessageW(CMsgA(1)); });
    ASSERT_TRUE(sendQueued.Wait(10000));
    handler.reset();  // unsubscribes, then releases the waiting sender
    sender.join();
    EXPECT_EQ(result, 0);
}

TEST_F(VoMessageDispatcherTest, WindowMessageRanges)
{
    CLocalRecorder local(L"Ranges");
    local.Init();
    const int systemBefore = local.systemMessages.load();  // the creation message went there
    int handled = 0;
    EXPECT_EQ(local.WindowProcHook(0x8001, 0, 5, handled), 0x8001 + 5);
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(local.WindowProcHook(0xBFFF, 0, 0, handled), 0xBFFF);
    EXPECT_EQ(local.applicationMessages.load(), 2);
    EXPECT_EQ(local.WindowProcHook(0xC000, 0, 0, handled), 7);
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(local.WindowProcHook(0x400, 0, 0, handled), 0);
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(local.WindowProcHook(0x7FFF, 0, 0, handled), 0);
    EXPECT_EQ(local.userMessages.load(), 2);
    handled = 1;
    EXPECT_EQ(local.WindowProcHook(0x10, 0, 0, handled), 0);
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(local.WindowProcHook(0x10000, 0, 0, handled), 0);
    EXPECT_EQ(local.systemMessages.load(), systemBefore + 2);
    // Through the window itself: the application range answers with the hook's value.
    EXPECT_EQ(::SendMessageW(local.GetHWND(), 0x9000, 0, 1), 0x9001);
    EXPECT_EQ(local.applicationMessages.load(), 3);
}

struct SInterceptor : Messaging::IInterceptorMessageDispatcher
{
    void OnSubscribe(const Messaging::CContext& c) override { record(L"subscribe", c); }
    void OnSubscribeCommand(const Messaging::CContext& c) override { record(L"subscribeCommand", c); }
    void OnUnsubscribeCommand(const Messaging::CContext& c) override { record(L"unsubscribeCommand", c); }
    void OnUnsubscribe(const Messaging::CContext& c) override { record(L"unsubscribe", c); }
    void record(const wchar_t* hook, const Messaging::CContext& c)
    {
        std::lock_guard lock(mutex);
        calls.push_back(std::wstring(hook) + L" " + c.GetMessageHandler()->GetName() + L" " + c.GetRTTI()->GetName());
    }
    std::mutex mutex;
    std::vector<std::wstring> calls;
};

TEST_F(VoMessageDispatcherTest, InterceptorsHearEverySubscriptionChange)
{
    auto interceptor = std::make_shared<SInterceptor>();
    VoMessageDispatcher::GetInstance().GetDispatcher()->Add(interceptor);
    {
        CThreadedRecorder handler(L"Hooked");
        ASSERT_TRUE(handler.StartAndWait());
        handler.Subscribe(CMsgA::RTTI);
        handler.Subscribe(CMsgA::RTTI);  // already there: no hook
        handler.SubscribeCommand(3);
        handler.UnsubscribeCommand(3);
        handler.Unsubscribe(CMsgA::RTTI);
        handler.Unsubscribe(CMsgA::RTTI);  // not there: no hook
    }  // UnsubscribeAll: the CreateHWND subscription goes
    VoMessageDispatcher::GetInstance().GetDispatcher()->Remove(interceptor);
    std::lock_guard lock(interceptor->mutex);
    EXPECT_EQ(interceptor->calls, (std::vector<std::wstring>{
                                      L"subscribe Hooked VoMessageCreateHWND", L"subscribe Hooked CMsgA",
                                      L"subscribeCommand Hooked VoMessageCommand",
                                      L"unsubscribeCommand Hooked VoMessageCommand", L"unsubscribe Hooked CMsgA",
                                      L"unsubscribe Hooked VoMessageCreateHWND"}));
}

TEST_F(VoMessageDispatcherTest, SendMonitorsSeeEverySendAndCannotStopIt)
{
    std::vector<std::wstring> seen;
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    const auto first = dispatcher.AddSendMonitor([](const VoMessage&) { throw std::runtime_error("monitor"); });
    const auto second = dispatcher.AddSendMonitor([&](const VoMessage& m) { seen.push_back(m.GetClassNameW()); });
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgNobody()), 0);
    EXPECT_TRUE(dispatcher.RemoveSendMonitor(first));
    EXPECT_TRUE(dispatcher.RemoveSendMonitor(second));
    EXPECT_FALSE(dispatcher.RemoveSendMonitor(second));
    VoMessageDispatcher::SendMessageW(CMsgNobody());
    EXPECT_EQ(seen, std::vector<std::wstring>{L"CMsgNobody"});
}

TEST_F(VoMessageDispatcherTest, ShutdownUnsubscribesEveryoneAndCanBeRestarted)
{
    CThreadedRecorder handler(L"AtShutdown");
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    ASSERT_TRUE(dispatcher.ShutdownAndWait(INFINITE));
    EXPECT_FALSE(dispatcher.IsRunning());
    EXPECT_EQ(handler.getDispatcher(), nullptr);
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"AtShutdown"), nullptr);
    EXPECT_TRUE(dispatcher.ShutdownAndWait(0));  // not running: true at once

    ASSERT_TRUE(dispatcher.StartAndWait());
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA()), 0);  // the old subscription is gone
    handler.Subscribe(CMsgA::RTTI);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA()), 1);
}

TEST(VoMessageDispatcherLifecycle, ShutdownOfANeverStartedDispatcherReturnsAtOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // A fresh process, in which the dispatcher's thread never ran.
    EXPECT_EXIT(std::exit(VoMessageDispatcher::GetInstance().ShutdownAndWait(INFINITE) ? 0 : 1),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(VoMessageDispatcherTest, SendToAnUnsubscribedHandlerReturnsZero)
{
    CThreadedRecorder handler(L"Unsubscribed");
    ASSERT_TRUE(handler.StartAndWait());
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(1), handler), 0);
    EXPECT_EQ(handler.ReceivedCount(), 0u);
}

#ifndef NDEBUG
TEST_F(VoMessageDispatcherTest, DestroyingASubscribedHandlerAsserts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            VoMessageHandler* handler = new VoMessageHandler(L"Forgotten");
            ASSERT_TRUE(handler->initMessageHandler());
            handler->Subscribe(CMsgA::RTTI);
            delete handler;
        },
        "handler 'Forgotten' is destroyed while still subscribed; call UnsubscribeAll\\(\\)");
}
#endif

}  // namespace
}  // namespace MessagingTest
