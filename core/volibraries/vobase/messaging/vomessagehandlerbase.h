// The receiving side of the message dispatcher: a handler bound to one
// thread, with a send queue and a post queue that any thread may fill, and a
// window procedure hook that processes one queued entry per wake-up window
// message on the handler's own thread.
//
//   class CDocumentHandler : public VoMessageHandler {
//   public:
//       CDocumentHandler() : VoMessageHandler(L"Document") {}
//   protected:
//       void onSubscribeMessages() override { VoMessageHandler::onSubscribeMessages(); Subscribe(CMsgSave::RTTI); }
//       LRESULT handleMessage(const VoMessage& m) override {
//           if (m.IsKindOf(CMsgSave::RTTI)) return save();
//           return VoMessageHandler::handleMessage(m);       // misdirected: trace line, E_FAIL
//       }
//   };
//
// Window messages: 1 (created) stores the thread id and subscribes
// (onSubscribeMessages), 2 (destroyed) calls onUnsubscribeMessages,
// WM_VO_SEND_NOTIFICATION (0xB000) and WM_VO_POST_NOTIFICATION (0xB001) take
// one entry of the send or post queue, WM_VO_MESSAGE_STRING (0xB011) carries a
// VoMessageString's text; 0x400..0x7FFF go to onUserWindowsMessage,
// 0x8000..0xBFFF to onApplicationWindowsMessage, 0xC000..0xFFFF to
// onRegisteredWindowsMessage, everything else to onSystemWindowsMessage.
//
// Posts that reached a handler before a synchronous send are handled before
// it, in their order, also when the handler lives on the sender's thread
// (flushPostNotifications).
//
// Locks: m_sendQueueLock guards m_sendQueue, m_postQueueLock guards
// m_postQueue; they are never held together. The flushing flag and the
// deferred-signal count belong to the handler's thread. The dispatcher
// back-pointer and the thread id are atomics (written on the dispatcher's or
// the handler's thread, read anywhere).
//
// A handler must call UnsubscribeAll() before it is destroyed; destroying a
// handler that is still known to the dispatcher stops a debug build with a
// message naming the handler (release builds only remove its name).
#pragma once

#include <vobase/messaging/vopostnotification.h>
#include <vobase/messaging/vosendnotification.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcheckreturn.h>
#include <bxbase/bxiclassname.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/windows/bxwindowtypes.h>

#include <atomic>
#include <cstdint>
#include <deque>

class VoMessageDispatcher;
class VoMessageSubscription;
class VoThreadSendStatus;

/// Wake-up of a handler for one queued send entry.
inline constexpr unsigned int WM_VO_SEND_NOTIFICATION = 0xB000;
/// Wake-up of a handler for one queued post entry.
inline constexpr unsigned int WM_VO_POST_NOTIFICATION = 0xB001;
/// Carries the text of a VoMessageString (wParam: window, lParam: text from CoTaskMemAlloc).
inline constexpr unsigned int WM_VO_MESSAGE_STRING = 0xB011;

/// The receiving side of the message dispatcher: a handler bound to one thread, with a send queue and a post
/// queue that any thread may fill, and a window procedure hook that processes one queued entry per wake-up window
/// message on the handler's own thread.
class VOBASE_API VoMessageHandlerBase : public BxIClassName<0, CStringW>
{
public:
    /// A handler named `name`; the name is its key in the dispatcher's registry.
    explicit VoMessageHandlerBase(const CStringW& name);
    VoMessageHandlerBase(const VoMessageHandlerBase&) = delete;
    VoMessageHandlerBase& operator=(const VoMessageHandlerBase&) = delete;
    /// Releases the senders of queued sends (without an answer from this
    /// handler) and the queued posts; removes the name from the registry when
    /// the dispatcher still knows the handler (asserting in debug builds: it
    /// should have called UnsubscribeAll).
    virtual ~VoMessageHandlerBase();

    /// The handler's type record; null unless a derived handler registers its class.
    virtual const BxRTTI* GetRTTI() const { return nullptr; }
    /// Kernel id of the handler's thread; 0 until its window exists.
    virtual std::uint32_t GetThreadID() const { return m_threadID.load(std::memory_order_acquire); }
    /// The handler's window (null until created).
    virtual HWND GetHWND() const = 0;

    // Subscription requests, sent synchronously to the dispatcher (whose thread must run).
    /// Subscribes to the message class `rtti` and all classes derived from it. Returns when the dispatcher has
    /// handled the request; a name already registered for another handler makes it fail silently. Not from the
    /// dispatcher's own thread.
    void Subscribe(const BxRTTI& rtti);
    /// Subscribes to the VoMessageCommand with `commandID` as its wParam; otherwise as Subscribe.
    void SubscribeCommand(std::uint64_t commandID);
    /// A command subscribes its id, anything else its class.
    void SubscribeMessage(const VoMessage& message);
    /// Unsubscribes, then purges matching queued entries.
    void Unsubscribe(const BxRTTI& rtti);
    /// Ends the subscription to command `commandID`, then purges queued commands with that id (their senders are
    /// released without an answer from this handler).
    void UnsubscribeCommand(std::uint64_t commandID);
    /// A command unsubscribes its id (UnsubscribeCommand), anything else its class (Unsubscribe).
    void UnsubscribeMessage(const VoMessage& message);
    /// Forgets every subscription and the registry name (only when the
    /// dispatcher knows the handler); purges nothing already queued.
    virtual void UnsubscribeAll();

    /// Appends a copy under the post-queue lock and signals it (any thread).
    void queuePostNotification(const VoPostNotification& notification);
    /// Appends a copy under the send-queue lock and signals it (any thread).
    void queueSendNotification(const VoSendNotification& notification);

    /// Processes one send entry on this thread (the dispatcher and a waiting
    /// sender call it): handleMessage, add the result, count the status down.
    virtual void processSendNotification(VoSendNotification& notification);
    /// Processes one post entry: handleMessage, result and exceptions dropped.
    virtual void processPostNotification(VoPostNotification& notification);
    /// Handles every queued post now, in order, on the calling thread (which
    /// must be the handler's); wake-ups that arrive meanwhile are re-signalled.
    void flushPostNotifications();

    /// The window procedure hook, on the handler's thread.
    LRESULT WindowProcHook(unsigned int message, WPARAM wParam, LPARAM lParam, int& handled);

    /// Diagnostics: the C++ type name of the message at the head of the post
    /// (send) queue; `name` stays unchanged when the queue is empty.
    void getNameOfNextProcessedPostMessage(CString& name) const;
    /// Diagnostics: as getNameOfNextProcessedPostMessage, for the send queue.
    void getNameOfNextProcessedSendMessage(CString& name) const;

    /// The dispatcher that knows this handler (null before its first
    /// accepted subscription, after UnsubscribeAll and after shutdown).
    VoMessageDispatcher* getDispatcher() const noexcept { return m_dispatcher.load(std::memory_order_acquire); }
    /// Set by the dispatcher on its thread.
    void setDispatcher(VoMessageDispatcher* dispatcher) noexcept { m_dispatcher.store(dispatcher, std::memory_order_release); }

    /// Hands the handler another logger (default: category "Core.Messaging").
    void SetLogger(BxSmartPointer<Logging::ILogger> logger);
    /// The logger the handler writes to (never null: the default one unless SetLogger gave another).
    BxSmartPointer<Logging::ILogger> GetLogger() const;

protected:
    friend class VoMessageDispatcher;
    friend class VoMessageHandler;  // its window procedure reaches the hooks
    friend class VoHangDetector;    // reads the queue, the thread id and the two progress marks below

    /// Stores the handler's window; called on the handler's thread as its window is created (before the handler
    /// subscribes), and again by createHWND.
    virtual void setHWND(HWND hwnd) = 0;
    /// The window procedure registered with the handler's window class.
    virtual WNDPROC getWindowProc() const = 0;
    /// Handles a message; the base answers VoMessageCreateHWND and treats
    /// anything else as misdirected (trace line, E_FAIL).
    virtual LRESULT handleMessage(const VoMessage& message);
    /// Empty; no caller gives it a meaning.
    virtual void ReplyMessage() {}
    /// Ends the handler's messaging (threaded handlers end their loop).
    virtual void signalMessagingFinished() = 0;
    /// Called when the window exists: subscribes to VoMessageCreateHWND
    /// (except the dispatcher itself).
    virtual void onSubscribeMessages();
    /// Called when the window is destroyed; empty.
    virtual void onUnsubscribeMessages() {}
    /// Messages below 0x400 not handled above; empty.
    virtual void onSystemWindowsMessage(unsigned int, WPARAM, LPARAM, int&) {}
    /// Messages 0x400..0x7FFF; empty.
    virtual void onUserWindowsMessage(unsigned int, WPARAM, LPARAM, int&) {}
    /// Messages 0x8000..0xBFFF other than the notifications; 0 by default.
    virtual LRESULT onApplicationWindowsMessage(unsigned int, WPARAM, LPARAM) { return 0; }
    /// Messages 0xC000..0xFFFF; 0 by default.
    virtual LRESULT onRegisteredWindowsMessage(unsigned int, WPARAM, LPARAM) { return 0; }
    /// Wakes the handler's thread for one post entry (PostMessageW; a failure is logged).
    virtual void signalPostNotification();
    /// Wakes the handler's thread for one send entry.
    virtual void signalSendNotification();

    /// Takes one send entry (one per wake-up) and processes it.
    void onSendNotification();
    /// Takes one post entry, or only counts the wake-up while flushing.
    void onPostNotification();
    /// Purges queued entries that `subscription` invalidates; releases their senders.
    void invalidateUnsubscribedMessages(const VoMessageSubscription& subscription);

    /// Creates `handler`'s message-only window on the calling thread, with a
    /// window class named after `handler` (registered on first use) and
    /// `owner`'s name as title. False on failure (GetLastError tells why).
    static bool createHWND(VoMessageHandlerBase& owner, VoMessageHandlerBase& handler);

    /// Records the handler's home thread (set when its window is created); GetThreadID reads it from any thread.
    void setThreadID(std::uint32_t threadID) noexcept { m_threadID.store(threadID, std::memory_order_release); }

private:
    void signal(unsigned int notification);
    void sendSubscription(const VoMessageSubscription& subscription);

    bool m_flushing = false;                 ///< handler's thread only
    std::uint32_t m_deferredSignals = 0;     ///< wake-ups that arrived while flushing; handler's thread only
    std::deque<VoSendNotification> m_sendQueue;  ///< guarded by m_sendQueueLock
    std::deque<VoPostNotification> m_postQueue;  ///< guarded by m_postQueueLock
    mutable BxCriticalSection m_sendQueueLock;
    mutable BxCriticalSection m_postQueueLock;
    std::atomic<VoMessageDispatcher*> m_dispatcher{nullptr};
    std::atomic<std::uint32_t> m_threadID{0};
    // Progress marks for VoHangDetector, written by the handler's thread only.
    std::atomic<std::uint64_t> m_sendsTaken{0};                   ///< send entries taken from the queue
    std::atomic<const VoThreadSendStatus*> m_answering{nullptr};  ///< the send being answered, or null
    BxSmartPointer<Logging::ILogger> m_logger;  ///< set before use; not changed while messages flow
};
