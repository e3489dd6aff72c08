// Runs one piece of work on the shared thread pool and then calls a
// completion function back on the thread that created the finalizer, by way
// of the message dispatcher: the pool task posts a VoMessageTaskDone to the
// finalizer's own message handler, which lives on the creating thread.
//
//   // on the user-interface thread, whose message loop runs:
//   new VoTaskFinalizer(true, [this] { m_image = load(path); }, [this] { showImage(m_image); });
//   // showImage runs later on this thread; the finalizer then deletes itself.
//
//   auto finalizer = std::make_unique<VoTaskFinalizer>(false, task, [&] { done = true; });
//   while (!done) BxMessageLoop::ProcessPending(INFINITE);
//
// The dispatcher must run, and the creating thread must pump its messages.
// A finalizer with deleteWhenDone must be made with new and not be touched
// after its construction. Destroying a finalizer whose work still runs waits
// for the work; its completion function then never runs.
#pragma once

#include <vobase/messaging/vomessage.h>
#include <vobase/messaging/vomessagehandler.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/threading/bxtask.h>

#include <atomic>
#include <functional>
#include <memory>

/// Runs one piece of work on the shared thread pool and then calls a completion function back on the thread that
/// created the finalizer, by way of the message dispatcher: the pool task posts a VoMessageTaskDone to the
/// finalizer's own message handler, which lives on the creating thread.
class VOBASE_API VoTaskFinalizer : private INonCopyable
{
public:
    /// The message a finalizer's pool task posts to its handler when the work is done.
    class VOBASE_API VoMessageTaskDone : public VoMessage
    {
        BX_DECLARE_RTTI();

    public:
        /// A message naming `finalizer` (not owned); the type registry's
        /// factory makes one without a finalizer.
        explicit VoMessageTaskDone(VoTaskFinalizer* finalizer = nullptr) : m_finalizer(finalizer) {}
        /// The finalizer whose work is done.
        VoTaskFinalizer* GetFinalizer() const noexcept { return m_finalizer; }

    private:
        VoTaskFinalizer* m_finalizer;
    };

    /// The finalizer's message handler, on the creating thread.
    class VOBASE_API VoMessageHandlerTaskFinalizer : public VoMessageHandler
    {
    public:
        /// A handler on the calling thread, under a name unique to this
        /// finalizer, that finishes `finalizer` (not owned; it owns the handler).
        explicit VoMessageHandlerTaskFinalizer(VoTaskFinalizer& finalizer);

    protected:
        /// A VoMessageTaskDone runs the completion (and may delete the finalizer):
        /// 0, or 0x80004005 when the completion threw. Other messages go to the base.
        LRESULT handleMessage(const VoMessage& message) override;

    private:
        VoTaskFinalizer& m_finalizer;
    };

    /// Runs `work` (a task) on the pool, then `onDone` on this thread.
    VoTaskFinalizer(bool deleteWhenDone, BxSmartPointer<BxTask> work, std::function<void()> onDone);
    /// Runs `work` (a function) on the pool, then `onDone` on this thread.
    VoTaskFinalizer(bool deleteWhenDone, std::function<void()> work, std::function<void()> onDone);
    /// Waits for the work when it still runs, then unsubscribes and destroys the handler.
    ~VoTaskFinalizer();

    /// True once the completion function has run.
    bool IsDone() const noexcept { return m_done.load(std::memory_order_acquire); }

private:
    /// Handles the done message on the creating thread.
    void complete();
    void start();
    void tearDownHandler();

    std::function<void()> m_onDone;
    std::unique_ptr<VoMessageHandlerTaskFinalizer> m_handler;
    bool m_deleteWhenDone;
    BxSmartPointer<BxTask> m_task; ///< the pool wrapper
    std::atomic<bool> m_done{false};
};
