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
void runExample()
{
    VoTaskManager tasks;
    for (const char* name : {"load", "left", "right", "merge"})
        tasks.Add(name, [name] { std::printf("%s\n", name), ++g_steps; });     // runs on a pool thread
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
