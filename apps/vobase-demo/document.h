// The demo's document: a subtree of a data manager's tree, read and written
// only under the manager's locks.
//
//   Root
//    |-- Document          VoNode
//        |-- Title         VoDataNodeString
//        |-- Status        VoDataNodeString   ("new", "processing", "done")
//        |-- SampleRate    VoDataNodeInt32    (samples per second)
//        |-- Samples       VoNode, one VoDataNodeFloat64 child per sample ("0", "1", ...)
//        |-- Results       VoNode: Mean, Min, Max, Rms (VoDataNodeFloat64), Crossings (VoDataNodeInt32)
//
//   VoDataManager manager;
//   CDocument document(manager);
//   document.Create(L"Vibration log", 2048, 8000);
//   document.SetTitle(L"Vibration log, pump 2");       // under a write lock on Title
//   std::vector<double> samples = document.GetSamples();   // under a read lock on Samples
//
// Every accessor takes its lock with a time-out and throws BxException when
// the lock is not granted, so a stuck lock shows as an error, not a hang.
// Any thread may use the accessors.
#pragma once

#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vodatanodefloat64.h>
#include <vobase/objects/vodatanodeint32.h>
#include <vobase/objects/vodatanodestring.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxsmartpointer.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CDocument
{
public:
    /// The analysis results kept under Results.
    struct SResults
    {
        double mean = 0;
        double min = 0;
        double max = 0;
        double rms = 0;
        std::int32_t crossings = 0;  ///< sign changes between neighbouring samples

        bool operator==(const SResults&) const = default;
    };

    /// How long an accessor waits for its lock.
    static constexpr unsigned int c_LockTimeoutMs = 2000;

    /// A document in `manager`'s tree (not yet created).
    explicit CDocument(VoDataManager& manager);

    /// Builds the document under the root: `sampleCount` samples of a
    /// quantised test signal at `sampleRate` samples per second. Throws
    /// BxException when a document exists already or a lock is refused.
    void Create(const std::wstring& title, std::size_t sampleCount, std::int32_t sampleRate);

    /// The data manager that guards the document.
    VoDataManager& GetDataManager() const noexcept { return m_manager; }
    /// The Document node (null before Create).
    BxSmartPointer<VoNode> GetNode() const noexcept { return m_node; }
    /// The child `name` of the document; throws BxException when it is missing.
    BxSmartPointer<VoNode> GetChild(const wchar_t* name) const;
    /// Title and Samples as the nodes the undoable operations edit.
    BxSmartPointer<VoDataNodeString> GetTitleNode() const;
    BxSmartPointer<VoNode> GetSamplesNode() const { return GetChild(L"Samples"); }

    std::wstring GetTitle() const;
    void SetTitle(const std::wstring& title);
    std::wstring GetStatus() const;
    void SetStatus(const std::wstring& status);
    std::int32_t GetSampleRate() const;
    std::size_t GetSampleCount() const;
    std::vector<double> GetSamples() const;
    SResults GetResults() const;
    void SetResults(const SResults& results);

    /// Calls `read` with the document while holding a read lock on it.
    void Read(const std::function<void(const VoNode&)>& read) const;

    /// Takes a read (N = 0) or write (N = 1) lock on `node` for the calling
    /// thread, calls `body` and releases the lock; throws BxException when
    /// the lock is not granted within c_LockTimeoutMs.
    template <int N>
    static void WithLock(VoDataManager& manager, BxSmartPointer<VoNode> node, const std::function<void()>& body);

private:
    VoDataManager& m_manager;
    BxSmartPointer<VoNode> m_node;
};
