#include <bxbase/diagnostics/bxtracerecorder.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/diagnostics/bxtracebuffer.h>
#include <bxbase/threading/bxthreadapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <ostream>
#include <pthread.h>
#include <unistd.h>
#include <vector>

std::atomic<bool> BxTraceRecorder::s_recording{false};

namespace
{

/// Every thread's ring. A ring lives as long as its thread or the registry
/// keeps it; Start() drops the rings of threads that have ended.
struct SRegistry
{
    std::mutex lock;                                    ///< guards every field below
    std::vector<std::shared_ptr<BxTraceBuffer>> buffers;
    std::size_t eventsPerThread = BxTraceRecorder::kDefaultEventsPerThread;
    std::uint64_t origin = 0;                           ///< Now() at the latest Start()
    std::string exitPath;                               ///< VOBASE_TRACE, written at exit
};

SRegistry& registry()
{
    static SRegistry instance;
    return instance;
}

std::string currentThreadName()
{
    char name[32] = {};
    if (::pthread_getname_np(::pthread_self(), name, sizeof name) != 0 || name[0] == '\0')
        return "Thread " + std::to_string(GetCurrentThreadId());
    return name;
}

/// The calling thread's ring, made and registered on its first event.
BxTraceBuffer& threadBuffer()
{
    thread_local std::shared_ptr<BxTraceBuffer> buffer;
    if (!buffer)
    {
        SRegistry& r = registry();
        std::lock_guard guard(r.lock);
        buffer = std::make_shared<BxTraceBuffer>(r.eventsPerThread, GetCurrentThreadId(), currentThreadName());
        r.buffers.push_back(buffer);
    }
    return *buffer;
}

/// Stops recording and waits until no thread is inside its ring; the caller holds the registry lock.
bool pauseLocked(SRegistry& r)
{
    const bool wasOn = BxTraceRecorder::IsOn();
    BxTraceRecorder::Stop(); // only the flag; Stop does not take the registry lock
    for (const auto& buffer : r.buffers)
        buffer->WaitUntilQuiet();
    return wasOn;
}

void writeEscaped(std::ostream& out, std::string_view text)
{
    out << '"';
    for (const char c : text)
    {
        switch (c)
        {
        case '"': out << "\\\""; break;
        case '\\': out << "\\\\"; break;
        case '\n': out << "\\n"; break;
        case '\r': out << "\\r"; break;
        case '\t': out << "\\t"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20)
            {
                char code[8];
                std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
                out << code;
            }
            else
                out << c;
        }
    }
    out << '"';
}

/// Microseconds since `origin`, with nanosecond digits.
void writeMicroseconds(std::ostream& out, std::uint64_t nanoseconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%llu.%03u", static_cast<unsigned long long>(nanoseconds / 1000),
                  static_cast<unsigned>(nanoseconds % 1000));
    out << text;
}

void writeEvent(std::ostream& out, const BxTraceEvent& event, std::uint32_t tid, std::uint64_t origin)
{
    out << "{\"name\":";
    writeEscaped(out, event.name);
    out << ",\"cat\":";
    writeEscaped(out, event.category);
    out << ",\"ph\":\"" << event.phase << "\",\"ts\":";
    writeMicroseconds(out, event.time > origin ? event.time - origin : 0);
    if (event.phase == 'X')
    {
        out << ",\"dur\":";
        writeMicroseconds(out, event.duration);
    }
    if (event.phase == 's' || event.phase == 'f' || event.phase == 'b' || event.phase == 'e')
        out << ",\"id\":" << event.id;
    if (event.phase == 'f')
        out << ",\"bp\":\"e\"";
    if (event.phase == 'i')
        out << ",\"s\":\"t\"";
    out << ",\"pid\":" << ::getpid() << ",\"tid\":" << tid << '}';
}

void writeThread(std::ostream& out, const BxTraceBuffer& buffer, std::uint64_t origin, bool& first)
{
    auto separator = [&] { out << (first ? "\n" : ",\n"); first = false; };
    separator();
    out << "{\"name\":\"thread_name\",\"ph\":\"M\",\"pid\":" << ::getpid() << ",\"tid\":" << buffer.GetThreadId()
        << ",\"args\":{\"name\":";
    writeEscaped(out, buffer.GetThreadName());
    out << "}}";
    std::vector<BxTraceEvent> events;
    buffer.CopyTo(events);
    if (const std::uint64_t dropped = buffer.GetDropped(); dropped != 0 && !events.empty())
    {
        BxTraceEvent note;
        note.phase = 'i';
        note.category = "trace";
        note.time = events.front().time;
        note.SetName(std::to_string(dropped) + " older events dropped (ring full)");
        separator();
        writeEvent(out, note, buffer.GetThreadId(), origin);
    }
    for (const BxTraceEvent& event : events)
    {
        separator();
        writeEvent(out, event, buffer.GetThreadId(), origin);
    }
}

void writeAtExit()
{
    try
    {
        BxTraceRecorder::WriteFile(registry().exitPath);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "VOBASE_TRACE: %s\n", e.what());
    }
}

/// Reads VOBASE_TRACE when the library is loaded.
[[maybe_unused]] const bool g_startedFromEnvironment = (BxTraceRecorder::StartFromEnvironment(), true);

} // namespace

void BxTraceRecorder::Start(std::size_t eventsPerThread)
{
    SRegistry& r = registry();
    std::lock_guard guard(r.lock);
    pauseLocked(r);
    // Rings held only by the registry belong to threads that have ended.
    std::erase_if(r.buffers, [](const std::shared_ptr<BxTraceBuffer>& b) { return b.use_count() == 1; });
    for (const auto& buffer : r.buffers)
        buffer->Clear();
    r.eventsPerThread = std::max<std::size_t>(eventsPerThread, 1);
    r.origin = Now();
    s_recording.store(true, std::memory_order_seq_cst);
}

void BxTraceRecorder::Stop()
{
    s_recording.store(false, std::memory_order_seq_cst);
}

void BxTraceRecorder::Clear()
{
    SRegistry& r = registry();
    std::lock_guard guard(r.lock);
    const bool wasOn = pauseLocked(r);
    for (const auto& buffer : r.buffers)
        buffer->Clear();
    if (wasOn)
        s_recording.store(true, std::memory_order_seq_cst);
}

void BxTraceRecorder::Write(std::ostream& out)
{
    SRegistry& r = registry();
    std::lock_guard guard(r.lock);
    const bool wasOn = pauseLocked(r);
    std::uint64_t dropped = 0;
    bool first = true;
    out << "{\"traceEvents\":[";
    for (const auto& buffer : r.buffers)
    {
        writeThread(out, *buffer, r.origin, first);
        dropped += buffer->GetDropped();
    }
    out << "\n],\"displayTimeUnit\":\"ns\",\"otherData\":{\"producer\":\"VoBase\",\"droppedEvents\":\"" << dropped
        << "\"}}\n";
    if (wasOn)
        s_recording.store(true, std::memory_order_seq_cst);
}

void BxTraceRecorder::WriteFile(const std::string& path)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out)
        throw BxExceptionStream(__FILE__, __LINE__, "BxTraceRecorder::WriteFile", "cannot open " + path);
    Write(out);
    out.flush();
    if (!out)
        throw BxExceptionStream(__FILE__, __LINE__, "BxTraceRecorder::WriteFile", "cannot write " + path);
}

std::uint64_t BxTraceRecorder::GetDropped()
{
    SRegistry& r = registry();
    std::lock_guard guard(r.lock);
    const bool wasOn = pauseLocked(r);
    std::uint64_t dropped = 0;
    for (const auto& buffer : r.buffers)
        dropped += buffer->GetDropped();
    if (wasOn)
        s_recording.store(true, std::memory_order_seq_cst);
    return dropped;
}

std::uint64_t BxTraceRecorder::Now() noexcept
{
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

std::uint64_t BxTraceRecorder::NewId() noexcept
{
    static std::atomic<std::uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

void BxTraceRecorder::record(char phase, const char* category, std::string_view name, std::uint64_t id,
                             std::uint64_t start) noexcept
{
    BxTraceBuffer* buffer = nullptr;
    try
    {
        buffer = &threadBuffer();
    }
    catch (...)
    {
        return; // no memory for a ring: the event is lost, the program goes on
    }
    if (!buffer->Enter(s_recording))
        return;
    BxTraceEvent event;
    event.phase = phase;
    event.category = category;
    event.id = id;
    const std::uint64_t now = Now();
    event.time = start != 0 ? start : now; // spans, and arrows bound to a span's start
    event.duration = phase == 'X' && now > start ? now - start : 0;
    event.SetName(name);
    buffer->Append(event);
    buffer->Leave();
}

void BxTraceRecorder::record(char phase, const char* category, std::wstring_view name, std::uint64_t id,
                             std::uint64_t start) noexcept
{
    char narrow[BxTraceEvent::kNameCapacity + 1];
    std::size_t size = 0;
    bool ascii = true;
    for (; size < name.size() && size < BxTraceEvent::kNameCapacity; ++size)
    {
        if (static_cast<std::uint32_t>(name[size]) >= 0x80)
        {
            ascii = false;
            break;
        }
        narrow[size] = static_cast<char>(name[size]);
    }
    if (ascii)
    {
        record(phase, category, std::string_view(narrow, size), id, start);
        return;
    }
    try
    {
        record(phase, category, BxStringConvert::WideToUtf8Lossy(name), id, start);
    }
    catch (...)
    {
    }
}

void BxTraceRecorder::Complete(const char* category, std::string_view name, std::uint64_t start) noexcept
{
    if (IsOn())
        record('X', category, name, 0, start);
}

void BxTraceRecorder::Instant(const char* category, std::string_view name) noexcept
{
    if (IsOn())
        record('i', category, name, 0, 0);
}

void BxTraceRecorder::FlowStart(const char* category, std::string_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('s', category, name, id, 0);
}

void BxTraceRecorder::FlowEnd(const char* category, std::string_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('f', category, name, id, 0);
}

void BxTraceRecorder::AsyncBegin(const char* category, std::string_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('b', category, name, id, 0);
}

void BxTraceRecorder::AsyncEnd(const char* category, std::string_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('e', category, name, id, 0);
}

void BxTraceRecorder::Complete(const char* category, std::wstring_view name, std::uint64_t start) noexcept
{
    if (IsOn())
        record('X', category, name, 0, start);
}

void BxTraceRecorder::Instant(const char* category, std::wstring_view name) noexcept
{
    if (IsOn())
        record('i', category, name, 0, 0);
}

void BxTraceRecorder::FlowStart(const char* category, std::wstring_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('s', category, name, id, 0);
}

void BxTraceRecorder::FlowEnd(const char* category, std::wstring_view name, std::uint64_t id) noexcept
{
    if (IsOn())
        record('f', category, name, id, 0);
}

void BxTraceRecorder::FlowStart(const char* category, std::wstring_view name, std::uint64_t id,
                                std::uint64_t time) noexcept
{
    if (IsOn())
        record('s', category, name, id, time);
}

void BxTraceRecorder::FlowEnd(const char* category, std::wstring_view name, std::uint64_t id,
                              std::uint64_t time) noexcept
{
    if (IsOn())
        record('f', category, name, id, time);
}

void BxTraceRecorder::StartFromEnvironment()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const char* path = std::getenv("VOBASE_TRACE");
        if (path == nullptr || *path == '\0')
            return;
        registry().exitPath = path;
        Start();
        std::atexit(&writeAtExit);
    });
}
