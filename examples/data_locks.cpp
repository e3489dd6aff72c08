// A data tree shared by two threads: a writer moves a quantity between two
// accounts under a write lock on their parent node, while the main thread
// reads both under a read lock and always finds the total unchanged. Then
// the main thread holds a read lock and a writer is refused at once.
#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vodatanodeint32.h>

#include <cstdio>
#include <thread>

int main()
{
    VoDataManager manager;  // owns the tree below its root
    BxSmartPointer<VoNode> bank(new VoNode(L"Bank", true, VoNode::eTMM_Track));
    BxSmartPointer<VoDataNodeInt32> checking(new VoDataNodeInt32(L"Checking"));
    BxSmartPointer<VoDataNodeInt32> savings(new VoDataNodeInt32(L"Savings"));
    checking->GetData()->Set(1000);
    if (!manager.InsertNode(manager.GetRootNode(), bank) || !manager.InsertNode(bank, checking) ||
        !manager.InsertNode(bank, savings))
        return 1;

    std::thread writer([&] {
        for (int i = 0; i < 1000; ++i) {
            VoDataHandleLockOnly<1> write(manager, bank);  // the whole subtree, for writing
            if (!manager.TryLockAndWait(INFINITE))
                return;
            checking->GetData()->Set(checking->GetData()->Get() - 1);
            savings->GetData()->Set(savings->GetData()->Get() + 1);
        }  // released with the handle
    });
    int reads = 0, inconsistent = 0, saved = 0;
    while (saved < 1000) {
        VoDataHandleLockOnly<0> read(manager, bank);
        if (!manager.TryLockAndWait(INFINITE))
            return 1;
        saved = savings->GetData()->Get();
        inconsistent += checking->GetData()->Get() + saved != 1000;
        ++reads;
    }
    writer.join();
    std::printf("reader: %d snapshots, %d with a wrong total; checking %d, savings %d\n", reads, inconsistent,
                checking->GetData()->Get(), savings->GetData()->Get());

    VoDataHandleLockOnly<0> read(manager, bank);
    if (!manager.TryLockAndWait(INFINITE))
        return 1;
    VoDataManager::ELockStatus status = VoDataManager::eLS_Granted;
    bool refused = false;
    std::thread([&] {
        VoDataHandleLockOnly<1> write(manager, checking);  // inside the subtree being read
        refused = !manager.TryLockAndWait(0, status);
    }).join();
    std::printf("while read-locked, a writer was %s (status %d = busy)\n", refused ? "refused" : "GRANTED",
                static_cast<int>(status));
    return inconsistent == 0 && refused && status == VoDataManager::eLS_Busy ? 0 : 1;
}
