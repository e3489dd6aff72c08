// The handler of the demo's main thread, which plays the part of an
// application's user-interface thread: it receives the worker's answers
// (CMsgAnswer) and the task graph's progress (CMsgProgress), and the thread
// pumps its own message loop while it waits for them (PumpUntil), so it is
// never blocked while work runs elsewhere.
//
//   CUiHandler ui;
//   ui.Open();                                         // window on this thread, subscribed
//   CMessenger::Post(BxSmartPointer<const VoMessage>(new CMsgRequest(3, true)));
//   ui.PumpUntil([&] { return ui.GetAnswers().size() == 1; }, 2000ms);
//   ui.Close();
//
// Everything delivered runs on the thread that called Open, so the lists
// below are touched by that thread only.
#pragma once

#include <vobase/messaging/vomessagehandler.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CUiHandler : public VoMessageHandler
{
public:
    /// One posted answer of the worker.
    struct SAnswer
    {
        std::int32_t value;
        std::int64_t result;
        std::uint32_t threadID;  ///< the worker's thread
    };
    /// One progress report of a work item.
    struct SProgress
    {
        std::string item;
        std::uint32_t threadID;  ///< the pool thread that ran the item
        bool succeeded;
    };

    CUiHandler();
    /// Unsubscribes and destroys the window when Close was not called.
    ~CUiHandler() override;

    /// Creates the handler's window on the calling thread, which must pump
    /// its messages from now on; throws BxException when it cannot be made.
    void Open();
    /// Unsubscribes and destroys the window; nothing when not open.
    void Close();

    /// Pumps the calling thread's message loop until `done` answers true or
    /// `limit` has passed; returns the last answer of `done`.
    bool PumpUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);

    /// The answers received so far, in arrival order.
    const std::vector<SAnswer>& GetAnswers() const noexcept { return m_answers; }
    /// The progress reports received so far, in arrival order.
    const std::vector<SProgress>& GetProgress() const noexcept { return m_progress; }
    /// Forgets the progress reports (before a new run of the task graph).
    void ClearProgress() { m_progress.clear(); }

protected:
    /// Subscribes CMsgAnswer and CMsgProgress once the window exists.
    void onSubscribeMessages() override;
    /// Keeps answers and progress reports; anything else goes to the base.
    LRESULT handleMessage(const VoMessage& message) override;

private:
    std::vector<SAnswer> m_answers;
    std::vector<SProgress> m_progress;
};
