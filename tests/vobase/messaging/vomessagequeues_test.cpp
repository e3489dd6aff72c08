// The handlers' and the dispatcher's queues under pressure: a million posts
// from four threads to three handlers, a dispatcher shut down while queues
// are full, and a consumer slower than its producer.
#include "messagingtestsupport.h"

#include <bxbase/windows/bxmessageloop.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <array>
#include <cstdlib>
#include <thread>

namespace MessagingTest {
namespace {

constexpr int kProducers = 4;

// A message of one producer; counts the live instances, so that a test sees
// that what was handled is freed.
class CMsgSeq : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    CMsgSeq(int producer = -1, int sequence = 0) : producer(producer), sequence(sequence) { ++s_live; }
    CMsgSeq(const CMsgSeq& other) : VoMessage(other), producer(other.producer), sequence(other.sequence) { ++s_live; }
    ~CMsgSeq() override { --s_live; }
    static int Live() { return s_live.load(); }

    int producer;
    int sequence;

private:
    static inline std::atomic<int> s_live{0};
};
BX_IMPLEMENT_RTTI(CMsgSeq, &VoMessage::RTTI)

BxSmartPointer<const VoMessage> seq(int producer, int sequence)
{
    return BxSmartPointer<const VoMessage>(new CMsgSeq(producer, sequence));
}

// Checks that every producer's messages arrive once each and in order: each
// must carry the sequence after the previous one. Its fields belong to the
// handler's thread; they are read after a send to the handler has returned.
struct SSequenceCheck
{
    std::array<int, kProducers> next{};
    long long faults = 0;
    long long handled = 0;

    // Returns the answer for a send: 2 for the final synchronisation, else 1.
    LRESULT Take(const CMsgSeq& message)
    {
        if (message.producer < 0)
            return 2;
        if (message.sequence != next[message.producer])
            ++faults;
        next[message.producer] = message.sequence + 1;
        ++handled;
        return 1;
    }
};

template <class Base>
class CSequenceHandler : public Base
{
public:
    template <class... Args>
    explicit CSequenceHandler(Args&&... args) : Base(std::forward<Args>(args)...)
    {
    }
    SSequenceCheck check;

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CMsgSeq::RTTI))
            return Base::handleMessage(message);
        return check.Take(static_cast<const CMsgSeq&>(message));
    }
};

class CThreadedSequence : public CSequenceHandler<VoMessageHandlerThreaded>
{
public:
    explicit CThreadedSequence(const std::wstring& name) : CSequenceHandler(name, BxThreadCore::eTP_Normal) {}
    ~CThreadedSequence() override { UnsubscribeAll(); }
};

// A handler that lives on a thread of the test, which pumps its own loop.
class CPumpedSequence : public CSequenceHandler<VoMessageHandler>
{
public:
    explicit CPumpedSequence(const std::wstring& name) : CSequenceHandler(name) {}

    /// Starts the thread: window, subscription, loop until Stop.
    void Start()
    {
        BxEvent ready;
        m_thread = std::thread([this, ready]() mutable {
            EXPECT_TRUE(initMessageHandler());
            Subscribe(CMsgSeq::RTTI);
            ready.Set();
            BxMessageLoop::Run();
            destroyMessageHandler().Ignore();
        });
        ready.Wait();
    }
    void Stop()
    {
        UnsubscribeAll();
        ::PostMessageW(GetHWND(), WM_QUIT, 0, 0);
        m_thread.join();
    }

private:
    std::thread m_thread;
};

class VoMessageQueuesTest : public CDispatcherTest
{
};

TEST_F(VoMessageQueuesTest, FourProducersThreeHandlersEveryPostOnceAndInOrder)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kPostsPerProducer = 10000;  // the sanitizers run the route about ten times slower
#else
    constexpr int kPostsPerProducer = 250000;
#endif
    CThreadedSequence first(L"QueuesFirst"), second(L"QueuesSecond");
    CPumpedSequence pumped(L"QueuesPumped");
    ASSERT_TRUE(first.StartAndWait());
    ASSERT_TRUE(second.StartAndWait());
    first.Subscribe(CMsgSeq::RTTI);
    second.Subscribe(CMsgSeq::RTTI);
    pumped.Start();

    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([p] {
            for (int i = 0; i < kPostsPerProducer; ++i)
                VoMessageDispatcher::PostMessageW(seq(p, i));
        });
    for (auto& producer : producers)
        producer.join();
    // Each handler takes its posts before a later send: when the sends
    // return, everything posted has been handled.
    const CMsgSeq final(-1, 0);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(final, first), 2);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(final, second), 2);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(final, pumped), 2);

    for (const SSequenceCheck* check : {&first.check, &second.check, &pumped.check})
    {
        EXPECT_EQ(check->faults, 0);
        EXPECT_EQ(check->handled, static_cast<long long>(kProducers) * kPostsPerProducer);
        for (int next : check->next)
            EXPECT_EQ(next, kPostsPerProducer);
    }
    pumped.Stop();
    EXPECT_EQ(CMsgSeq::Live(), 1);  // only `final`
}

// A handler that stops at given messages until the test lets it go on.
class CGatedSequence : public CThreadedSequence
{
public:
    using CThreadedSequence::CThreadedSequence;
    int stopEvery = 0;          ///< set before messages flow, or while it stands; 0: never
    BxEvent stopped, resume;    ///< the handler sets `stopped` and waits for `resume`
    int expectedSends = 0;      ///< `sendsQueued` is set when this many sends are queued
    BxEvent sendsQueued;

protected:
    void signalSendNotification() override
    {
        CThreadedSequence::signalSendNotification();
        if (++m_sendsSignalled == expectedSends)
            sendsQueued.Set();
    }
    LRESULT handleMessage(const VoMessage& message) override
    {
        const LRESULT result = CThreadedSequence::handleMessage(message);
        if (stopEvery > 0 && message.IsKindOf(CMsgSeq::RTTI) && check.handled % stopEvery == 0 && check.handled > 0)
        {
            stopped.Set();
            resume.Wait();
            resume.Reset();
        }
        return result;
    }

private:
    std::atomic<int> m_sendsSignalled{0};
};

TEST_F(VoMessageQueuesTest, SlowConsumerHoldsOnlyWhatIsQueuedAndLosesNothing)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kRounds = 20;
#else
    constexpr int kRounds = 100;
#endif
    constexpr int kStep = 500;  // the handler stops after every 500 messages...
    constexpr int kAhead = 2000;  // ...while the producer is up to 2000 ahead of it
    const int baseline = CMsgSeq::Live();
    CGatedSequence slow(L"QueuesSlow");
    slow.stopEvery = kStep;
    ASSERT_TRUE(slow.StartAndWait());
    slow.Subscribe(CMsgSeq::RTTI);

    int posted = 0;
    auto post = [&](int count) {
        for (int i = 0; i < count; ++i)
            VoMessageDispatcher::PostMessageW(seq(0, posted++));
    };
    post(kAhead);
    for (int round = 1; round <= kRounds; ++round)
    {
        ASSERT_TRUE(slow.stopped.Wait(60000));
        slow.stopped.Reset();
        // The handler stands still inside message round * kStep: alive are
        // that one and the queued rest; everything handled before is freed.
        SyncDispatcher();  // everything posted is in the handler's queue now
        EXPECT_EQ(slow.check.handled, static_cast<long long>(round) * kStep);
        EXPECT_EQ(CMsgSeq::Live() - baseline, posted - round * kStep + 1) << "round " << round;
        post(kStep);
        slow.resume.Set();
    }
    ASSERT_TRUE(slow.stopped.Wait(60000));
    slow.stopEvery = 0;  // the handler stands still; it reads this after the resume
    slow.resume.Set();
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgSeq(-1, 0), slow), 2);
    EXPECT_EQ(slow.check.faults, 0);
    EXPECT_EQ(slow.check.handled, posted);
    EXPECT_EQ(CMsgSeq::Live(), baseline);
}

TEST_F(VoMessageQueuesTest, ShutdownWithFullQueuesReleasesTheSendersItRouted)
{
    constexpr int kPosts = 1000;
    constexpr int kSenders = 3;
    CGatedSequence handler(L"QueuesShutdown");
    handler.stopEvery = 1;
    handler.expectedSends = kSenders;
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgSeq::RTTI);
    VoMessageDispatcher::PostMessageW(seq(0, 0));
    ASSERT_TRUE(handler.stopped.Wait(10000));  // the handler stands inside the first post
    for (int i = 1; i < kPosts; ++i)
        VoMessageDispatcher::PostMessageW(seq(0, i));
    std::array<std::atomic<LRESULT>, kSenders> results{};
    std::vector<std::thread> senders;
    for (int s = 0; s < kSenders; ++s)
    {
        results[s] = -1;
        senders.emplace_back([s, &results] { results[s] = VoMessageDispatcher::SendMessageW(CMsgSeq(s + 1, 0)); });
    }
    ASSERT_TRUE(handler.sendsQueued.Wait(10000));  // routed: the sends wait in the handler's queue

    // The dispatcher unsubscribes everyone and ends; what it routed stays queued.
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    ASSERT_TRUE(dispatcher.ShutdownAndWait(INFINITE));
    EXPECT_EQ(handler.getDispatcher(), nullptr);
    EXPECT_EQ(VoMessageDispatcher::FindMessageHandler(L"QueuesShutdown"), nullptr);
    for (const auto& result : results)
        EXPECT_EQ(result.load(), -1);  // still waiting for the handler

    handler.stopEvery = 0;
    handler.resume.Set();
    for (auto& sender : senders)
        sender.join();
    for (const auto& result : results)
        EXPECT_EQ(result.load(), 1);  // answered by the handler, after its posts
    EXPECT_EQ(handler.check.faults, 0);
    EXPECT_EQ(handler.check.handled, kPosts + kSenders);

    ASSERT_TRUE(dispatcher.StartAndWait());  // the later tests need it
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgSeq(-1, 0), handler), 0);  // no longer subscribed
}

TEST(VoMessageQueuesShutdown, AfterShutdownPostsReturnAndSendsWait)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // In a process of its own: the send made there never returns.
    EXPECT_EXIT(
        {
            VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
            if (!dispatcher.StartAndWait() || !dispatcher.ShutdownAndWait(INFINITE))
                std::_Exit(2);
            VoMessageDispatcher::PostMessageW(seq(0, 0));  // queued for a thread that is gone; returns
            std::atomic<bool> returned{false};
            std::thread([&returned] {
                VoMessageDispatcher::SendMessageW(CMsgSeq(0, 1));
                returned = true;
            }).detach();
            CString next;
            while (next.empty())  // until the send is queued at the dispatcher
            {
                dispatcher.getNameOfNextProcessedSendMessage(next);
                std::this_thread::yield();
            }
            CString nextPost;
            dispatcher.getNameOfNextProcessedPostMessage(nextPost);
            std::_Exit(!returned && next.find(L"CMsgSeq") != CString::npos &&
                               nextPost.find(L"CMsgSeq") != CString::npos
                           ? 0
                           : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace MessagingTest
