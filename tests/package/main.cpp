// A client of the installed package: the README's example (a fork-join task
// graph on the shared pool) plus one use of each library, checked.
#include <bxbase/bxbase.h>
#include <vobase/vobase.h>
#include <vocompression/vocompression.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{
std::atomic<int> g_steps{0};

// --- The README example -------------------------------------------------------
struct CStep : IWorkItem // one unit of work, run on a pool thread
{
    explicit CStep(const char* name) : m_name(name) {}
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    void Run(TaskManager::SWorkItemStatus&) override { std::printf("%s\n", m_name), ++g_steps; }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_count; }
    const char* m_name;
    mutable BxReferenceCounter<unsigned int> m_count;
};

void runExample()
{
    VoTaskManager tasks;
    for (const char* name : {"load", "left", "right", "merge"})
        tasks.Add(name, BxSmartPointer<IWorkItem>(new CStep(name)));
    tasks.AddDependency("load", "left"), tasks.AddDependency("load", "right");   // fork
    tasks.AddDependency("left", "merge"), tasks.AddDependency("right", "merge"); // join
    tasks.Start("load", ITaskManager::eP_Normal); // left and right run in parallel
    tasks.WaitUntilTerminate("merge");
}
// ------------------------------------------------------------------------------
} // namespace

int main()
{
    runExample();

    BxStreamWriteBinaryBuffer out;
    out << 7 << std::wstring(L"package");
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    int seven = 0;
    std::wstring text;
    in >> seven >> text;

    BxSmartPointer<BxInt32> value(new BxInt32(seven));
    const bool ok = g_steps == 4 && seven == 7 && text == L"package" && value->Get() == 7 &&
                    std::strcmp(VoBaseGetVersionString(), BxGetVersionString()) == 0 &&
                    std::strcmp(VoCompressionGetVersionString(), BxGetVersionString()) == 0;
    std::printf("VoBase %s package client: %s\n", BxGetVersionString(), ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}
