#include "document.h"

#include <vobase/data/vodatahandlelockonly.h>

#include <bxbase/bxexception.h>

#include <cmath>
#include <numbers>

namespace {

/// The test signal: two tones and a slow drift, quantised as a 12-bit
/// converter over +-2 would deliver it.
double sampleAt(std::size_t index, std::int32_t sampleRate)
{
    const double t = static_cast<double>(index) / sampleRate;
    const double value = 0.9 * std::sin(2 * std::numbers::pi * 50 * t) + 0.25 * std::sin(2 * std::numbers::pi * 120 * t) +
                         0.1 * std::sin(2 * std::numbers::pi * 0.5 * t);
    return std::round(value * 1024) / 1024;
}

template <class TNode>
BxSmartPointer<TNode> typedChild(const BxSmartPointer<VoNode>& parent, const wchar_t* name)
{
    if (!parent)
        BX_THROW(BxException, "CDocument::typedChild", L"the document was not created");
    BxSmartPointer<TNode> node = BxSmartPointerCast<TNode>(parent->FindChild(name));
    if (!node)
        BX_THROW(BxException, "CDocument::typedChild", std::wstring(L"the document has no node ") + name);
    return node;
}

void insert(VoDataManager& manager, const BxSmartPointer<VoNode>& parent, BxSmartPointer<VoNode> child)
{
    if (!manager.InsertNode(parent, std::move(child)))
        BX_THROW(BxException, "CDocument::Create", L"a node could not be inserted into the tree");
}

}  // namespace

CDocument::CDocument(VoDataManager& manager) : m_manager(manager) {}

template <int N>
void CDocument::WithLock(VoDataManager& manager, BxSmartPointer<VoNode> node, const std::function<void()>& body)
{
    VoDataHandleLockOnly<N> handle(manager, std::move(node));
    VoDataManager::ELockStatus status = VoDataManager::eLS_Granted;
    if (!manager.TryLockAndWait(c_LockTimeoutMs, status))
        BX_THROW(BxException, "CDocument::WithLock",
                 std::wstring(N ? L"write" : L"read") + L" lock refused (status " + std::to_wstring(status) + L")");
    body();
}

template void CDocument::WithLock<0>(VoDataManager&, BxSmartPointer<VoNode>, const std::function<void()>&);
template void CDocument::WithLock<1>(VoDataManager&, BxSmartPointer<VoNode>, const std::function<void()>&);

void CDocument::Create(const std::wstring& title, std::size_t sampleCount, std::int32_t sampleRate)
{
    if (m_node)
        BX_THROW(BxException, "CDocument::Create", L"the document exists already");
    BxSmartPointer<VoNode> document(new VoNode(L"Document", true, VoNode::eTMM_Track));
    insert(m_manager, m_manager.GetRootNode(), document);
    m_node = document;

    // The nodes are inserted empty and filled under one write lock on the document.
    insert(m_manager, document, BxSmartPointer<VoNode>(new VoDataNodeString(L"Title")));
    insert(m_manager, document, BxSmartPointer<VoNode>(new VoDataNodeString(L"Status")));
    insert(m_manager, document, BxSmartPointer<VoNode>(new VoDataNodeInt32(L"SampleRate")));
    BxSmartPointer<VoNode> samples(new VoNode(L"Samples", true, VoNode::eTMM_Track));
    insert(m_manager, document, samples);
    for (std::size_t i = 0; i < sampleCount; ++i)
        insert(m_manager, samples, BxSmartPointer<VoNode>(new VoDataNodeFloat64(std::to_wstring(i))));
    BxSmartPointer<VoNode> results(new VoNode(L"Results", true, VoNode::eTMM_Track));
    insert(m_manager, document, results);
    for (const wchar_t* name : {L"Mean", L"Min", L"Max", L"Rms"})
        insert(m_manager, results, BxSmartPointer<VoNode>(new VoDataNodeFloat64(name)));
    insert(m_manager, results, BxSmartPointer<VoNode>(new VoDataNodeInt32(L"Crossings")));

    WithLock<1>(m_manager, document, [&] {
        typedChild<VoDataNodeString>(document, L"Title")->GetData()->Set(title);
        typedChild<VoDataNodeString>(document, L"Status")->GetData()->Set(L"new");
        typedChild<VoDataNodeInt32>(document, L"SampleRate")->GetData()->Set(sampleRate);
        std::size_t index = 0;
        for (const BxSmartPointer<VoNode>& node : samples->GetChildren())
            BxSmartPointerCast<VoDataNodeFloat64>(node)->GetData()->Set(sampleAt(index++, sampleRate));
    });
}

BxSmartPointer<VoNode> CDocument::GetChild(const wchar_t* name) const
{
    if (!m_node)
        BX_THROW(BxException, "CDocument::GetChild", L"the document was not created");
    BxSmartPointer<VoNode> child = m_node->FindChild(name);
    if (!child)
        BX_THROW(BxException, "CDocument::GetChild", std::wstring(L"the document has no node ") + name);
    return child;
}

BxSmartPointer<VoDataNodeString> CDocument::GetTitleNode() const
{
    return typedChild<VoDataNodeString>(GetNode(), L"Title");
}

std::wstring CDocument::GetTitle() const
{
    std::wstring title;
    const BxSmartPointer<VoDataNodeString> node = GetTitleNode();
    WithLock<0>(m_manager, node, [&] { title = node->GetData()->Get(); });
    return title;
}

void CDocument::SetTitle(const std::wstring& title)
{
    const BxSmartPointer<VoDataNodeString> node = GetTitleNode();
    WithLock<1>(m_manager, node, [&] { node->GetData()->Set(title); });
}

std::wstring CDocument::GetStatus() const
{
    std::wstring status;
    const auto node = typedChild<VoDataNodeString>(GetNode(), L"Status");
    WithLock<0>(m_manager, node, [&] { status = node->GetData()->Get(); });
    return status;
}

void CDocument::SetStatus(const std::wstring& status)
{
    const auto node = typedChild<VoDataNodeString>(GetNode(), L"Status");
    WithLock<1>(m_manager, node, [&] { node->GetData()->Set(status); });
}

std::int32_t CDocument::GetSampleRate() const
{
    std::int32_t rate = 0;
    const auto node = typedChild<VoDataNodeInt32>(GetNode(), L"SampleRate");
    WithLock<0>(m_manager, node, [&] { rate = node->GetData()->Get(); });
    return rate;
}

std::size_t CDocument::GetSampleCount() const
{
    std::size_t count = 0;
    const BxSmartPointer<VoNode> samples = GetSamplesNode();
    WithLock<0>(m_manager, samples, [&] { count = samples->GetChildrenCount(); });
    return count;
}

std::vector<double> CDocument::GetSamples() const
{
    std::vector<double> values;
    const BxSmartPointer<VoNode> samples = GetSamplesNode();
    WithLock<0>(m_manager, samples, [&] {
        const VoNode::Children children = samples->GetChildren();
        values.reserve(children.size());
        for (const BxSmartPointer<VoNode>& node : children)
            values.push_back(BxSmartPointerCast<VoDataNodeFloat64>(node)->GetData()->Get());
    });
    return values;
}

CDocument::SResults CDocument::GetResults() const
{
    SResults results;
    const BxSmartPointer<VoNode> node = GetChild(L"Results");
    WithLock<0>(m_manager, node, [&] {
        results.mean = typedChild<VoDataNodeFloat64>(node, L"Mean")->GetData()->Get();
        results.min = typedChild<VoDataNodeFloat64>(node, L"Min")->GetData()->Get();
        results.max = typedChild<VoDataNodeFloat64>(node, L"Max")->GetData()->Get();
        results.rms = typedChild<VoDataNodeFloat64>(node, L"Rms")->GetData()->Get();
        results.crossings = typedChild<VoDataNodeInt32>(node, L"Crossings")->GetData()->Get();
    });
    return results;
}

void CDocument::SetResults(const SResults& results)
{
    const BxSmartPointer<VoNode> node = GetChild(L"Results");
    WithLock<1>(m_manager, node, [&] {
        typedChild<VoDataNodeFloat64>(node, L"Mean")->GetData()->Set(results.mean);
        typedChild<VoDataNodeFloat64>(node, L"Min")->GetData()->Set(results.min);
        typedChild<VoDataNodeFloat64>(node, L"Max")->GetData()->Set(results.max);
        typedChild<VoDataNodeFloat64>(node, L"Rms")->GetData()->Set(results.rms);
        typedChild<VoDataNodeInt32>(node, L"Crossings")->GetData()->Set(results.crossings);
    });
}

void CDocument::Read(const std::function<void(const VoNode&)>& read) const
{
    const BxSmartPointer<VoNode> node = GetNode();
    if (!node)
        BX_THROW(BxException, "CDocument::Read", L"the document was not created");
    WithLock<0>(m_manager, node, [&] { read(*node); });
}
