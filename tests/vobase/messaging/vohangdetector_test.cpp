// Blocked sends are reported once, named, and listed while they last; the
// waits themselves still never give up. Each hang is made on purpose with a
// short detection time and released where the design allows it; the hangs
// that cannot be released run in a child process.
#include "messagingtestsupport.h"

#include <vobase/messaging/vohangdetector.h>

#include <bxbase/threading/bxthread.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <functional>
#include <thread>
#include <utility>

namespace MessagingTest {
namespace {

constexpr std::uint32_t kDetectionMs = 100;
constexpr DWORD kReportDeadlineMs = 10000;  // generous: sanitizers and a loaded machine

/// Keeps the hang reports and sets an event at the first one.
class CHangLogger : public Logging::ILogger
{
public:
    bool IsEnabled(Logging::ELogLevel) const override { return true; }
    void Log(Logging::ELogLevel level, const char*, int, const char* function, const std::wstring& message) override
    {
        std::lock_guard lock(m_lock);
        m_lines.push_back(message);
        m_levels.push_back(level);
        m_functions.push_back(function);
        reported.Set();
    }
    std::vector<std::wstring> Lines() const
    {
        std::lock_guard lock(m_lock);
        return m_lines;
    }
    std::vector<Logging::ELogLevel> Levels() const
    {
        std::lock_guard lock(m_lock);
        return m_levels;
    }
    std::vector<std::string> Functions() const
    {
        std::lock_guard lock(m_lock);
        return m_functions;
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

    BxEvent reported;

private:
    mutable std::mutex m_lock;
    std::vector<std::wstring> m_lines;
    std::vector<Logging::ELogLevel> m_levels;
    std::vector<std::string> m_functions;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

bool contains(const std::wstring& text, const std::wstring& part)
{
    return text.find(part) != std::wstring::npos;
}

/// The listed wait of `threadID`, or null.
const VoHangDetector::SBlockedWait* waitOf(const std::vector<VoHangDetector::SBlockedWait>& waits,
                                           std::uint32_t threadID)
{
    auto it = std::find_if(waits.begin(), waits.end(), [threadID](const auto& w) { return w.threadID == threadID; });
    return it == waits.end() ? nullptr : &*it;
}

/// Releases a hang and joins the threads caught in it, at Now() or at the
/// latest on the way out of the test, also after a failed assertion.
class CRelease
{
public:
    explicit CRelease(std::function<void()> release) : m_release(std::move(release)) {}
    ~CRelease() { Now(); }
    CRelease(const CRelease&) = delete;
    CRelease& operator=(const CRelease&) = delete;

    void Now()
    {
        if (m_release)
            std::exchange(m_release, nullptr)();
        for (auto& thread : threads)
            if (thread.joinable())
                thread.join();
    }

    std::vector<std::thread> threads;

private:
    std::function<void()> m_release;
};

/// Short detection time and a capturing logger for one test; restores both.
class VoHangDetectorTest : public CDispatcherTest
{
protected:
    void SetUp() override
    {
        CDispatcherTest::SetUp();
        m_savedTimeout = VoHangDetector::GetTimeout();
        VoHangDetector::SetTimeout(kDetectionMs);
        VoHangDetector::SetLogger(logger);
    }
    void TearDown() override
    {
        VoHangDetector::SetTimeout(m_savedTimeout);
        VoHangDetector::SetLogger(nullptr);
        EXPECT_TRUE(VoHangDetector::GetBlockedWaits().empty()) << "a released wait is still listed";
    }

    BxSmartPointer<CHangLogger> logger{new CHangLogger};

private:
    std::uint32_t m_savedTimeout = 0;
};

// A ring of handlers on their own threads: each answers CMsgA(v) by sending
// CMsgA(v + 1) to the next one, so the last send of the round waits on the
// first handler's thread, which waits for the second...
class CRing
{
public:
    explicit CRing(std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i)
            handlers.push_back(std::make_unique<CThreadedRecorder>(L"HangRing" + std::to_wstring(i)));
        for (std::size_t i = 0; i < size; ++i)
        {
            CThreadedRecorder& next = *handlers[(i + 1) % size];
            handlers[i]->onMessage = [&next](const VoMessage& message) {
                const int value = static_cast<const CMsgA&>(message).value;
                (void)VoMessageDispatcher::SendMessageW(CMsgA(value + 1), next);
            };
            EXPECT_TRUE(handlers[i]->StartAndWait());
            handlers[i]->Subscribe(CMsgA::RTTI);
        }
    }

    std::vector<std::unique_ptr<CThreadedRecorder>> handlers;
};

class VoHangDetectorCycleTest : public VoHangDetectorTest, public ::testing::WithParamInterface<std::size_t>
{
};

TEST_P(VoHangDetectorCycleTest, ACycleOfSendsIsReportedOnceAndBrokenByUnsubscribing)
{
    const std::size_t size = GetParam();
    CRing ring(size);
    // Unsubscribing the first handler drops the send queued for it: the round unwinds.
    CRelease release([&ring] { ring.handlers[0]->Unsubscribe(CMsgA::RTTI); });
    std::atomic<std::uint32_t> starterThread{0};
    release.threads.emplace_back([&ring, &starterThread] {
        starterThread = GetCurrentThreadId();
        (void)VoMessageDispatcher::SendMessageW(CMsgA(1), *ring.handlers[0]);
    });

    ASSERT_TRUE(logger->reported.Wait(kReportDeadlineMs)) << "the cycle was not reported";
    const auto waits = VoHangDetector::GetBlockedWaits();
    const auto lines = logger->Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(logger->Levels()[0], Logging::eLL_Warn);
    EXPECT_EQ(logger->Functions()[0], "VoMessageDispatcher::SendMessageW");
    EXPECT_TRUE(contains(lines[0], L"Blocked send: cycle of synchronous sends: ")) << lines[0];

    // Every handler's thread is a member: it sends CMsgA to the next handler
    // and lists the whole cycle starting with itself.
    for (std::size_t i = 0; i < size; ++i)
    {
        const CThreadedRecorder& handler = *ring.handlers[i];
        const CThreadedRecorder& next = *ring.handlers[(i + 1) % size];
        const auto* wait = waitOf(waits, handler.GetThreadID());
        ASSERT_NE(wait, nullptr) << "member " << i;
        EXPECT_EQ(wait->kind, VoHangDetector::eK_SendCycle);
        EXPECT_TRUE(wait->reported);
        EXPECT_EQ(wait->messageClass, CMsgA::RTTI.GetName());
        EXPECT_GE(wait->waitedMs, kDetectionMs);
        ASSERT_EQ(wait->cycle.size(), size);
        EXPECT_EQ(wait->cycle[0], handler.GetThreadID());
        EXPECT_EQ(wait->cycle[1 % size], next.GetThreadID());
        ASSERT_FALSE(wait->handlers.empty());
        EXPECT_EQ(wait->handlers[0].name, next.GetName());
        EXPECT_EQ(wait->handlers[0].threadID, next.GetThreadID());
        EXPECT_TRUE(contains(lines[0], L"thread " + std::to_wstring(handler.GetThreadID()) + L" \"" +
                                           handler.GetName() + L"\" sends CMsgA to handler \"" + next.GetName() +
                                           L"\" on thread " + std::to_wstring(next.GetThreadID())))
            << lines[0];
    }
    // The starter waits behind the cycle without being part of it: listed, not reported.
    if (const auto* wait = waitOf(waits, starterThread.load()); wait != nullptr)
    {
        EXPECT_EQ(wait->kind, VoHangDetector::eK_Waiting);
        EXPECT_FALSE(wait->reported);
    }

    // Looking again, period after period, adds no line.
    logger->reported.Reset();
    EXPECT_FALSE(logger->reported.Wait(3 * kDetectionMs));

    release.Now();
    EXPECT_EQ(logger->Lines().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(RingSizes, VoHangDetectorCycleTest, ::testing::Values(2u, 3u));

TEST_F(VoHangDetectorTest, ASendToAHandlerWhoseThreadEndedIsReported)
{
    CThreadedRecorder handler(L"HangEnded");
    handler.SetLogger(BxSmartPointer<Logging::ILogger>(new CCapturingLogger));  // its failed wake-up lands here
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgC::RTTI);
    const std::uint32_t handlerThread = handler.GetThreadID();
    // The loop ends without unsubscribing: the handler stays a subscriber without a thread.
    ASSERT_TRUE(PostMessageW(handler.GetHWND(), WM_QUIT, 0, 0));
    ASSERT_TRUE(handler.WaitUntilTerminate(INFINITE));

    CRelease release([&handler] { handler.Unsubscribe(CMsgC::RTTI); });  // purges the send, releases its sender
    std::uint32_t senderThread = 0;
    BxEvent senderKnown;
    release.threads.emplace_back([&] {
        senderThread = GetCurrentThreadId();
        senderKnown.Set();
        EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgC(5), handler), 0);  // released without an answer
    });
    ASSERT_TRUE(senderKnown.Wait(kReportDeadlineMs));
    ASSERT_TRUE(logger->reported.Wait(kReportDeadlineMs));

    const auto waits = VoHangDetector::GetBlockedWaits();
    const auto* wait = waitOf(waits, senderThread);
    ASSERT_NE(wait, nullptr);
    EXPECT_EQ(wait->kind, VoHangDetector::eK_HandlerThreadEnded);
    EXPECT_EQ(wait->messageClass, L"CMsgC");
    ASSERT_EQ(wait->handlers.size(), 1u);
    EXPECT_EQ(wait->handlers[0].name, L"HangEnded");
    EXPECT_EQ(wait->handlers[0].threadID, handlerThread);
    EXPECT_FALSE(wait->handlers[0].answering);
    const auto lines = logger->Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(contains(lines[0], L"sends CMsgC to handler \"HangEnded\", whose thread " +
                                       std::to_wstring(handlerThread) + L" has ended; blocked for "))
        << lines[0];
}

// A handler stuck in one answer: the send it is answering only waits (a long
// answer is no hang), the send queued behind it is reported.
TEST_F(VoHangDetectorTest, ASendQueuedBehindAStuckAnswerIsReportedTheAnsweredOneIsNot)
{
    CThreadedRecorder handler(L"HangStalled");
    BxEvent entered, gate;
    handler.onMessage = [&](const VoMessage& message) {
        if (static_cast<const CMsgA&>(message).value != 1)
            return;
        entered.Set();
        gate.Wait(INFINITE);
    };
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);

    CRelease release([&gate] { gate.Set(); });
    std::uint32_t answeredThread = 0, queuedThread = 0;
    release.threads.emplace_back([&] {
        answeredThread = GetCurrentThreadId();
        EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(1), handler), 1);
    });
    ASSERT_TRUE(entered.Wait(kReportDeadlineMs));
    BxEvent queuedKnown;
    release.threads.emplace_back([&] {
        queuedThread = GetCurrentThreadId();
        queuedKnown.Set();
        EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(2), handler), 1);
    });
    ASSERT_TRUE(queuedKnown.Wait(kReportDeadlineMs));
    ASSERT_TRUE(logger->reported.Wait(kReportDeadlineMs));

    const auto waits = VoHangDetector::GetBlockedWaits();
    const auto* stalled = waitOf(waits, queuedThread);
    ASSERT_NE(stalled, nullptr);
    EXPECT_EQ(stalled->kind, VoHangDetector::eK_HandlerStalled);
    ASSERT_EQ(stalled->handlers.size(), 1u);
    EXPECT_EQ(stalled->handlers[0].name, L"HangStalled");
    EXPECT_EQ(stalled->handlers[0].threadID, handler.GetThreadID());
    EXPECT_FALSE(stalled->handlers[0].answering);
    EXPECT_GE(stalled->waitedMs, 2 * kDetectionMs);  // one period to list it, one to see no progress

    const auto* waiting = waitOf(waits, answeredThread);
    ASSERT_NE(waiting, nullptr);
    EXPECT_EQ(waiting->kind, VoHangDetector::eK_Waiting);
    EXPECT_FALSE(waiting->reported);
    ASSERT_EQ(waiting->handlers.size(), 1u);
    EXPECT_TRUE(waiting->handlers[0].answering);

    const auto lines = logger->Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(contains(lines[0], L"sends CMsgA to handler \"HangStalled\" on thread " +
                                       std::to_wstring(handler.GetThreadID()) +
                                       L", which took no send in 100 ms (1 waiting); blocked for "))
        << lines[0];

    release.Now();
    EXPECT_EQ(handler.Values(), (std::vector<long long>{1, 2}));
}

// A handler that keeps taking sends is busy, not stuck: senders queued behind
// it for several detection periods are listed while they wait, never reported.
TEST_F(VoHangDetectorTest, ABusyHandlerThatKeepsTakingSendsIsNotReported)
{
    constexpr int kSenders = 12;
    constexpr DWORD kWorkMs = 25;  // each answer lasts a quarter of the detection time
    CThreadedRecorder handler(L"HangBusy");
    handler.onMessage = [](const VoMessage&) { (void)BxEvent().Wait(kWorkMs); };
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);
    const std::uint64_t reportsBefore = VoHangDetector::GetReportCount();

    std::vector<std::thread> senders;
    for (int i = 0; i < kSenders; ++i)
        senders.emplace_back([&handler, i] { EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgA(i), handler), 1); });
    for (auto& sender : senders)
        sender.join();

    EXPECT_EQ(handler.ReceivedCount(), static_cast<std::size_t>(kSenders));
    EXPECT_TRUE(logger->Lines().empty()) << logger->Lines()[0];
    EXPECT_EQ(VoHangDetector::GetReportCount(), reportsBefore);
}

TEST_F(VoHangDetectorTest, DetectionOffLeavesABlockedSendUnlisted)
{
    VoHangDetector::SetTimeout(0);
    CThreadedRecorder handler(L"HangOff");
    BxEvent entered, gate;
    handler.onMessage = [&](const VoMessage&) {
        entered.Set();
        gate.Wait(INFINITE);
    };
    ASSERT_TRUE(handler.StartAndWait());
    handler.Subscribe(CMsgA::RTTI);
    CRelease release([&gate] { gate.Set(); });
    release.threads.emplace_back([&] { (void)VoMessageDispatcher::SendMessageW(CMsgA(1), handler); });
    release.threads.emplace_back([&] { (void)VoMessageDispatcher::SendMessageW(CMsgA(2), handler); });
    ASSERT_TRUE(entered.Wait(kReportDeadlineMs));
    EXPECT_FALSE(logger->reported.Wait(3 * kDetectionMs));
    EXPECT_TRUE(VoHangDetector::GetBlockedWaits().empty());
}

// The hangs below cannot be released: each runs in a child process, which
// leaves its blocked thread behind and exits 0 when the report was right.

/// In the child: waits for the report and checks it, then ends the process.
[[noreturn]] void expectReportAndExit(CHangLogger& logger, VoHangDetector::EKind kind, const std::wstring& part)
{
    bool ok = logger.reported.Wait(kReportDeadlineMs);
    const auto lines = logger.Lines();
    const auto waits = VoHangDetector::GetBlockedWaits();
    ok = ok && lines.size() == 1 && contains(lines[0], part);
    ok = ok && std::count_if(waits.begin(), waits.end(), [kind](const auto& w) { return w.kind == kind; }) == 1;
    if (!ok)
        std::fprintf(stderr, "lines %zu, waits %zu: %ls\n", lines.size(), waits.size(),
                     lines.empty() ? L"" : lines[0].c_str());
    std::fflush(stderr);
    std::_Exit(ok ? 0 : 1);
}

TEST(VoHangDetectorChild, ASendBeforeTheDispatcherRunsIsReported)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process: the dispatcher never ran
    EXPECT_EXIT(
        {
            BxSmartPointer<CHangLogger> logger(new CHangLogger);
            VoHangDetector::SetTimeout(kDetectionMs);
            VoHangDetector::SetLogger(logger);
            std::thread([] { (void)VoMessageDispatcher::SendMessageW(CMsgNobody()); }).detach();
            expectReportAndExit(*logger, VoHangDetector::eK_DispatcherNotRunning,
                                L"sends CMsgNobody but the dispatcher's thread does not run; blocked for ");
        },
        ::testing::ExitedWithCode(0), "");
}

// An interceptor's hook runs on the dispatcher's thread; a send made there waits for ever.
class CSendingInterceptor : public Messaging::IInterceptorMessageDispatcher
{
public:
    void OnSubscribe(const Messaging::CContext&) override { (void)VoMessageDispatcher::SendMessageW(CMsgNobody()); }
};

TEST(VoHangDetectorChild, ASendOnTheDispatchersOwnThreadIsReported)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            BxSmartPointer<CHangLogger> logger(new CHangLogger);
            VoHangDetector::SetTimeout(kDetectionMs);
            VoHangDetector::SetLogger(logger);
            VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
            if (!dispatcher.StartAndWait())
                std::_Exit(2);
            dispatcher.GetDispatcher()->Add(std::make_shared<CSendingInterceptor>());
            // The subscribing thread waits on the dispatcher's answer: listed, not reported.
            std::thread([] { (new CLocalRecorder(L"HangSubscriber"))->Subscribe(CMsgA::RTTI); }).detach();
            expectReportAndExit(*logger, VoHangDetector::eK_SendOnDispatcherThread,
                                L" sends CMsgNobody on the dispatcher's own thread; blocked for ");
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(VoHangDetectorChild, TheDetectionTimeComesFromTheEnvironment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ::setenv("VOBASE_HANG_TIMEOUT_MS", "1234", 1);
            std::_Exit(VoHangDetector::GetTimeout() == 1234 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            ::setenv("VOBASE_HANG_TIMEOUT_MS", "12s", 1);  // not a number: the default holds
            std::_Exit(VoHangDetector::GetTimeout() == VoHangDetector::kDefaultTimeoutMs ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace MessagingTest
