// Simple work queues and the finalizer: a sequential queue runs tasks one
// after another on its worker thread; a pooling queue runs each pending key
// once however often it is posted; a finalizer runs work on the thread pool
// and its completion back on the main thread, which pumps its messages.
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/tasks/votaskfinalizer.h>
#include <vobase/tasks/votaskmanagerpooling.h>
#include <vobase/tasks/votaskmanagersequential.h>
#include <vobase/tasks/votasksimplet.h>

#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/windows/bxmessageloop.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>

int main()
{
    BxEvent lastLine;
    BxSmartPointer<VoTaskManagerSequential> lines(new VoTaskManagerSequential(VoTaskManagerSequential::EThreadPriority::eTP_Normal));
    for (int i = 1; i <= 3; ++i)
        lines->AddTask(VoMakeTaskSimple([i, lastLine]() mutable {
            std::printf("sequential: line %d\n", i);
            if (i == 3)
                lastLine.Set();
        }));
    lastLine.Wait(INFINITE);

    std::mutex mutex;
    std::map<std::wstring, int> runs;  // guarded by mutex
    BxEvent busy, open, allDone;
    BxSmartPointer<VoTaskManagerPooling> thumbnails(new VoTaskManagerPooling(
        [&](const CStringT<wchar_t>& key) {
            return VoMakeTaskSimple([&, key] {
                if (key == L"first") {
                    busy.Set();
                    open.Wait(INFINITE);  // keeps the worker busy while more keys arrive
                }
                std::lock_guard lock(mutex);
                if (++runs[key], runs.size() == 3)
                    allDone.Set();
            });
        },
        VoTaskManagerPooling::EThreadPriority::eTP_Normal));
    thumbnails->AddTask(L"first");
    busy.Wait(INFINITE);
    for (const wchar_t* key : {L"a.png", L"a.png", L"b.png", L"a.png"})
        thumbnails->AddTask(key);  // pending keys are kept once
    open.Set();
    allDone.Wait(INFINITE);
    {
        std::lock_guard lock(mutex);
        std::printf("pooling: a.png posted 3 times ran %d time(s), b.png ran %d time(s)\n", runs[L"a.png"], runs[L"b.png"]);
    }

    if (!VoMessageDispatcher::GetInstance().StartAndWait())  // the finalizer reports through the dispatcher
        return 1;
    std::atomic<std::uint32_t> workThread{0};
    std::uint32_t doneThread = 0;
    {
        VoTaskFinalizer finalizer(false, [&] { workThread = GetCurrentThreadId(); }, [&] { doneThread = GetCurrentThreadId(); });
        while (!finalizer.IsDone())
            BxMessageLoop::ProcessPending(INFINITE);
    }
    const bool onMain = doneThread == GetCurrentThreadId() && workThread != doneThread;
    std::printf("finalizer: work on pool thread %u, completion on the main thread: %s\n", workThread.load(),
                onMain ? "yes" : "no");
    VoMessageDispatcher::GetInstance().ShutdownAndWait(INFINITE);
    return runs[L"a.png"] == 1 && onMain ? 0 : 1;
}
