#include <vobase/graphs/vograph.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamwriteasciitrace.h>
#include <bxbase/bxstreamwritebinary.h>

#include <memory>
#include <string>
#include <unordered_map>

BX_IMPLEMENT_RTTI(VoGraph)

VoGraph::VoGraph() : VoAttributeContainer(1, 10000)
{
    auto [entry, inserted] = m_attributeDefinitions.try_emplace(
        eNA_Branch, L"eNA_Branch", 4u, static_cast<std::uint32_t>(eNA_Branch), VoConstructor<std::uint32_t>());
    AddDefinition(entry->second);
}

VoGraph::~VoGraph()
{
    RemoveAllNodes();
}

void VoGraph::InsertNode(VoGraphNode* node)
{
    std::unique_ptr<VoGraphNode> owned(node);
    if (!node)
        BX_THROW(BxExceptionPreconditionViolation, "VoGraph::InsertNode", "null node");
    if (node->m_graph) {
        owned.release();
        BX_THROW(BxExceptionPreconditionViolation, "VoGraph::InsertNode", "the node belongs to a graph");
    }
    if (IsIndicesAccurate())
        m_byIndex.push_back(node);
    try {
        node->m_attributeElement = CreateElement();
    } catch (...) {
        if (IsIndicesAccurate())
            m_byIndex.pop_back();
        throw;
    }
    owned.release();
    node->m_graph = this;
    node->m_listPrevious = m_tail;
    node->m_listNext = nullptr;
    (m_tail ? m_tail->m_listNext : m_head) = node;
    m_tail = node;
    setIndex(*node, m_count++);
}

void VoGraph::unlink(VoGraphNode& node) noexcept
{
    (node.m_listPrevious ? node.m_listPrevious->m_listNext : m_head) = node.m_listNext;
    (node.m_listNext ? node.m_listNext->m_listPrevious : m_tail) = node.m_listPrevious;
    node.m_listPrevious = node.m_listNext = nullptr;
    node.m_graph = nullptr;
    --m_count;
}

void VoGraph::RemoveNode(VoGraphNode& node)
{
    if (node.m_graph != this)
        BX_THROW(BxExceptionPreconditionViolation, "VoGraph::RemoveNode", "the node is not in this graph");
    if (&node != m_tail)
        setIndicesAccurate(false);
    else if (IsIndicesAccurate())
        m_byIndex.pop_back();
    unlink(node);
    if (m_count == 0)
        setIndicesAccurate(true);  // an empty list starts afresh
    ReleaseElement(node.m_attributeElement);
    node.m_attributeElement = nullptr;
    deleteNode(&node);
}

void VoGraph::RemoveAllNodes()
{
    // Every connection goes with the graph: drop them all first, so that no
    // node has to take its connections out of its neighbours' lists.
    for (VoGraphNode* node = m_head; node; node = node->m_listNext) {
        node->m_outgoing.ReleaseAll();
        node->m_incoming.ReleaseAll();
    }
    while (m_tail)
        RemoveNode(*m_tail);
}

void VoGraph::deleteNode(VoGraphNode* node)
{
    delete node;
}

VoGraphNode* VoGraph::FindNode(std::uint32_t index)
{
    return const_cast<VoGraphNode*>(static_cast<const VoGraph&>(*this).FindNode(index));
}

const VoGraphNode* VoGraph::FindNode(std::uint32_t index) const
{
    if (IsIndicesAccurate())
        return index < m_byIndex.size() ? m_byIndex[index] : nullptr;
    for (const VoGraphNode* node = m_head; node; node = node->m_listNext)
        if (node->m_index == index)
            return node;
    return nullptr;
}

void VoGraph::setIndicesAccurate(bool accurate)
{
    m_indicesAccurate = accurate ? 1 : 0;
    if (!accurate) {
        m_byIndex.clear();
        m_byIndex.shrink_to_fit();
    }
}

std::uint32_t VoGraph::CreateIndices()
{
    if (IsIndicesAccurate())
        return m_count;
    m_byIndex.clear();
    m_byIndex.reserve(m_count);
    std::uint32_t index = 0;
    for (VoGraphNode* node = m_head; node; node = node->m_listNext) {
        setIndex(*node, index++);
        m_byIndex.push_back(node);
    }
    m_indicesAccurate = 1;
    return m_count;
}

void VoGraph::setIndex(VoGraphNode& node, std::uint32_t index) noexcept
{
    if (node.m_index == index)
        return;
    node.m_index = index;
    // The lists at the other ends mirror the index.
    for (const VoGraphConnectionList::SEntry& e : node.m_outgoing.GetEntries()) {
        VoGraphConnection& c = *e.connection;
        c.GetNode(VoGraphConnection::eNT_Target)->m_incoming.mirrorIndex(c.m_positions[VoGraphConnection::eNT_Target], index);
    }
    for (const VoGraphConnectionList::SEntry& e : node.m_incoming.GetEntries()) {
        VoGraphConnection& c = *e.connection;
        c.GetNode(VoGraphConnection::eNT_Source)->m_outgoing.mirrorIndex(c.m_positions[VoGraphConnection::eNT_Source], index);
    }
}

const VoAttributeDefinition& VoGraph::Assert(ENodeAttribute attribute) const
{
    const auto found = m_attributeDefinitions.find(attribute);
    if (found == m_attributeDefinitions.end())
        BX_THROW(BxExceptionPreconditionViolation, "VoGraph::Assert",
                 "no attribute definition " + std::to_string(static_cast<std::uint32_t>(attribute)));
    return found->second;
}

void VoGraph::RemoveAttributes(std::uint32_t mask)
{
    for (VoGraphNode* node = m_head; node; node = node->m_listNext)
        node->m_attributeFlags &= ~mask;
}

void VoGraph::ResetWeights()
{
    for (VoGraphNode* node = m_head; node; node = node->m_listNext)
        node->m_weight = VoGraphNode::GetInitialWeight();
}

void* VoGraph::get(const VoAttributeDefinition& definition, const VoGraphNode& node) const
{
    return slot(definition, node.m_attributeElement);
}

void VoGraph::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    stream << L"VoGraph: " << m_count << L" nodes\r\n";
    for (const VoGraphNode* node = m_head; node; node = node->m_listNext) {
        stream << L"Node " << node->m_index << L" weight " << node->m_weight << L":";
        for (const BxSmartPointer<VoGraphConnection>& c : node->m_outgoing)
            stream << L" -> " << c->GetNode(VoGraphConnection::eNT_Target)->m_index << L" (" << c->GetWeight()
                   << L")";
        stream << L"\r\n";
    }
}

void VoGraph::Dump() const
{
    BxStreamWriteASCIITrace trace;
    Dump(trace);
}

void VoGraph::DumpDot(BxStreamWriteASCIIT<CStringW>& stream, int directed) const
{
    stream << (directed ? L"digraph G {\r\n" : L"graph G {\r\n");
    const wchar_t* separator = directed ? L" -> " : L" -- ";
    for (const VoGraphNode* node = m_head; node; node = node->m_listNext) {
        for (const BxSmartPointer<VoGraphConnection>& c : node->m_outgoing) {
            const VoGraphNode* target = c->GetNode(VoGraphConnection::eNT_Target);
            if (!directed && target->m_index < node->m_index)
                continue;
            stream << node->m_index << separator << target->m_index << L" [label = \"" << c->GetWeight()
                   << L"\"];\r\n";
        }
    }
    stream << L"}\r\n";
}

void VoGraph::Serialize(BxStreamWriteBinary& stream) const
{
    stream.WriteVersion(1);
    stream << m_count;
    for (const VoGraphNode* node = m_head; node; node = node->m_listNext)
        stream << node->m_index;
    for (const VoGraphNode* node = m_head; node; node = node->m_listNext) {
        stream << node->m_outgoing.GetCount();
        for (const BxSmartPointer<VoGraphConnection>& c : node->m_outgoing)
            stream << c->GetNode(VoGraphConnection::eNT_Target)->m_index << c->GetWeight();
    }
}

void VoGraph::Serialize(BxStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(1);
    RemoveAllNodes();
    try {
        std::uint32_t count = 0;
        stream >> count;
        // Nodes are made one by one as their indices arrive, so a count that
        // the data does not back costs no memory.
        bool dense = true;
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t index = 0;
            stream >> index;
            InsertNode(new VoGraphNode());
            setIndex(*m_tail, index);
            dense = dense && index == i;
        }
        if (!dense)
            setIndicesAccurate(false);

        // Targets are found by index: the first node in list order with it.
        std::unordered_map<std::uint32_t, VoGraphNode*> byIndex;
        if (!dense) {
            byIndex.reserve(count);
            for (VoGraphNode* node = m_head; node; node = node->m_listNext)
                byIndex.try_emplace(node->m_index, node);
        }
        for (VoGraphNode* node = m_head; node; node = node->m_listNext) {
            std::uint32_t connections = 0;
            stream >> connections;
            for (std::uint32_t k = 0; k < connections; ++k) {
                std::uint32_t targetIndex = 0;
                float weight = 0.0f;
                stream >> targetIndex >> weight;
                VoGraphNode* target = nullptr;
                if (dense) {
                    target = targetIndex < count ? m_byIndex[targetIndex] : nullptr;
                } else if (const auto found = byIndex.find(targetIndex); found != byIndex.end()) {
                    target = found->second;
                }
                if (!target)
                    BX_THROW(BxExceptionStream, "VoGraph::Serialize",
                             "connection to index " + std::to_string(targetIndex) + ", which no node has");
                node->AddConnection(*target, weight);
            }
        }
    } catch (...) {
        RemoveAllNodes();
        throw;
    }
}
