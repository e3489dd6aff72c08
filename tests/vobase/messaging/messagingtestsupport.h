// Handlers, messages and a logger shared by the messaging tests.
#pragma once

#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vomessagehandler.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>
#include <vobase/messaging/vomessagestring.h>

#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthreadapi.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace MessagingTest {

// Test messages: CMsgB derives from CMsgA; CMsgDiamond's record lists two
// bases, CMsgA and CMsgC, both of which derive from VoMessage.
class CMsgA : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    explicit CMsgA(int value = 0) : value(value) {}
    int value;
};

class CMsgB : public CMsgA
{
    BX_DECLARE_RTTI();

public:
    using CMsgA::CMsgA;
};

class CMsgC : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    explicit CMsgC(int value = 0) : value(value) {}
    int value;
};

class CMsgDiamond : public CMsgA
{
    BX_DECLARE_RTTI();
};

// A message nobody subscribes to: a send of it returns once the dispatcher
// has routed everything queued before it.
class CMsgNobody : public VoMessage
{
    BX_DECLARE_RTTI();
};

/// Waits until the dispatcher has routed every post and send queued before.
inline void SyncDispatcher()
{
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgNobody()), 0);
}

/// Starts the dispatcher when its thread does not run.
inline void EnsureDispatcherRuns()
{
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    if (!dispatcher.IsRunning())
    {
        ASSERT_TRUE(dispatcher.StartAndWait());
    }
}

/// Keeps every line it is given, at every level.
class CCapturingLogger : public Logging::ILogger
{
public:
    bool IsEnabled(Logging::ELogLevel) const override { return true; }
    void Log(Logging::ELogLevel level, const char*, int, const char*, const std::wstring& message) override
    {
        std::lock_guard lock(m_lock);
        m_lines.push_back(std::to_wstring(level) + L":" + message);
    }
    std::vector<std::wstring> Lines() const
    {
        std::lock_guard lock(m_lock);
        return m_lines;
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    mutable std::mutex m_lock;
    std::vector<std::wstring> m_lines;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

/// What a recording handler keeps of each message: its class, its value
/// (CMsgA/CMsgC value or command id) and the handling thread.
struct SReceived
{
    std::wstring className;
    long long value;
    DWORD threadID;
};

/// Records what it handles and answers with `answer`; `onMessage` runs
/// inside handleMessage (on the handler's thread) before the answer.
template <class Base>
class CRecorder : public Base
{
public:
    template <class... Args>
    explicit CRecorder(Args&&... args) : Base(std::forward<Args>(args)...)
    {
    }

    std::vector<SReceived> Received() const
    {
        std::lock_guard lock(m_lock);
        return m_received;
    }
    std::size_t ReceivedCount() const
    {
        std::lock_guard lock(m_lock);
        return m_received.size();
    }
    std::vector<long long> Values() const
    {
        std::vector<long long> values;
        for (const auto& r : Received())
            values.push_back(r.value);
        return values;
    }

    std::atomic<LRESULT> answer{1};
    std::function<void(const VoMessage&)> onMessage;           // set before messages flow
    std::function<void()> onSignalPost, onSignalSend;           // called after each wake-up is posted
    std::function<void()> onSendAnswered;                       // called after a send's answer is in
    std::atomic<int> applicationMessages{0}, userMessages{0}, registeredMessages{0}, systemMessages{0};

    using Base::handleMessage;
    using Base::WindowProcHook;

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        long long value = -1;
        if (message.IsKindOf(CMsgA::RTTI))
            value = static_cast<const CMsgA&>(message).value;
        else if (message.IsKindOf(CMsgC::RTTI))
            value = static_cast<const CMsgC&>(message).value;
        else if (message.IsKindOf(VoMessageWindows::RTTI))
            value = static_cast<long long>(static_cast<const VoMessageWindows&>(message).GetWParam());
        else if (!message.IsKindOf(VoMessageString::RTTI))
            return Base::handleMessage(message);
        {
            std::lock_guard lock(m_lock);
            m_received.push_back(SReceived{message.GetClassNameW(), value, GetCurrentThreadId()});
        }
        if (onMessage)
            onMessage(message);
        return answer.load();
    }
    void processSendNotification(VoSendNotification& notification) override
    {
        Base::processSendNotification(notification);
        if (onSendAnswered)
            onSendAnswered();
    }
    void signalPostNotification() override
    {
        Base::signalPostNotification();
        if (onSignalPost)
            onSignalPost();
    }
    void signalSendNotification() override
    {
        Base::signalSendNotification();
        if (onSignalSend)
            onSignalSend();
    }
    LRESULT onApplicationWindowsMessage(unsigned int message, WPARAM, LPARAM lParam) override
    {
        ++applicationMessages;
        return static_cast<LRESULT>(message) + lParam;
    }
    void onUserWindowsMessage(unsigned int, WPARAM, LPARAM, int&) override { ++userMessages; }
    LRESULT onRegisteredWindowsMessage(unsigned int, WPARAM, LPARAM) override
    {
        ++registeredMessages;
        return 7;
    }
    void onSystemWindowsMessage(unsigned int, WPARAM, LPARAM, int&) override { ++systemMessages; }

private:
    mutable std::mutex m_lock;
    std::vector<SReceived> m_received;
};

/// A handler with its own thread.
class CThreadedRecorder : public CRecorder<VoMessageHandlerThreaded>
{
public:
    explicit CThreadedRecorder(const std::wstring& name) : CRecorder(name, BxThreadCore::eTP_Normal) {}
    ~CThreadedRecorder() override { UnsubscribeAll(); }
};

/// A handler living on the thread that calls Init (which must pump its messages).
class CLocalRecorder : public CRecorder<VoMessageHandler>
{
public:
    explicit CLocalRecorder(const std::wstring& name) : CRecorder(name) {}
    ~CLocalRecorder() override
    {
        UnsubscribeAll();
        if (GetHWND() != nullptr)
            destroyMessageHandler().Ignore();
    }
    void Init() { ASSERT_TRUE(initMessageHandler()); }
};

/// Base fixture: the dispatcher runs.
class CDispatcherTest : public ::testing::Test
{
protected:
    void SetUp() override { EnsureDispatcherRuns(); }
};

}  // namespace MessagingTest
