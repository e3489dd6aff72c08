#include "documentarchive.h"

#include <vobase/objects/vodatanodefloat64.h>
#include <vobase/objects/vodatanodeint32.h>
#include <vobase/objects/vodatanodestring.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxrtti.h>

#include <filesystem>
#include <memory>

namespace {

constexpr unsigned int c_Version = 1;

// ---- values of the node classes the archive knows

void writeValue(BxStreamWriteBinary& out, const VoNode& node)
{
    if (const auto* text = dynamic_cast<const VoDataNodeString*>(&node))
        out << text->GetData()->Get();
    else if (const auto* real = dynamic_cast<const VoDataNodeFloat64*>(&node))
        out << real->GetData()->Get();
    else if (const auto* integer = dynamic_cast<const VoDataNodeInt32*>(&node))
        out << integer->GetData()->Get();
    else if (node.GetRTTI().GetName() != std::wstring(L"VoNode"))
        BX_THROW(BxExceptionStream, "CDocumentArchive::Save",
                 std::wstring(L"cannot store a node of class ") + node.GetClassNameW());
}

void readValue(BxStreamReadBinary& in, VoNode& node)
{
    if (auto* text = dynamic_cast<VoDataNodeString*>(&node)) {
        std::wstring value;
        in >> value;
        text->GetData()->Set(value);
    } else if (auto* real = dynamic_cast<VoDataNodeFloat64*>(&node)) {
        double value = 0;
        in >> value;
        real->GetData()->Set(value);
    } else if (auto* integer = dynamic_cast<VoDataNodeInt32*>(&node)) {
        std::int32_t value = 0;
        in >> value;
        integer->GetData()->Set(value);
    }
}

bool sameValue(const VoNode& left, const VoNode& right)
{
    if (const auto* text = dynamic_cast<const VoDataNodeString*>(&left))
        return text->GetData()->Get() == static_cast<const VoDataNodeString&>(right).GetData()->Get();
    if (const auto* real = dynamic_cast<const VoDataNodeFloat64*>(&left))
        return real->GetData()->Get() == static_cast<const VoDataNodeFloat64&>(right).GetData()->Get();
    if (const auto* integer = dynamic_cast<const VoDataNodeInt32*>(&left))
        return integer->GetData()->Get() == static_cast<const VoDataNodeInt32&>(right).GetData()->Get();
    return true;
}

// ---- the tree

void writeNode(BxStreamWriteBinary& out, const VoNode& node)
{
    out << std::wstring(node.GetClassNameW()) << node.GetName();
    writeValue(out, node);
    const VoNode::ConstChildren children = node.GetChildren();
    out << static_cast<std::uint32_t>(children.size());
    for (const BxSmartPointer<const VoNode>& child : children)
        writeNode(out, *child);
}

BxSmartPointer<VoNode> makeNode(const std::wstring& className)
{
    std::unique_ptr<IObject> made = BxRTTI::CreateByName(className);
    auto* node = dynamic_cast<VoNode*>(made.get());
    if (node == nullptr)
        BX_THROW(BxExceptionStream, "CDocumentArchive::Load", L"the archive holds an unknown node class: " + className);
    (void)made.release();
    return BxSmartPointer<VoNode>(node);
}

/// Reads one node with its subtree and inserts it under `parent` (which is
/// in `manager`'s tree already, so that every insert links a single node).
BxSmartPointer<VoNode> readNode(BxStreamReadBinary& in, VoDataManager& manager, const BxSmartPointer<VoNode>& parent)
{
    std::wstring className, name;
    in >> className >> name;
    BxSmartPointer<VoNode> node = makeNode(className);
    node->SetName(name);
    readValue(in, *node);
    if (!manager.InsertNode(parent, node))
        BX_THROW(BxExceptionStream, "CDocumentArchive::Load", L"node " + name + L" cannot be inserted (a duplicate name?)");
    std::uint32_t count = 0;
    in >> count;
    for (std::uint32_t i = 0; i < count; ++i)
        readNode(in, manager, node);
    return node;
}

}  // namespace

CDocumentArchive::SInfo CDocumentArchive::Save(const VoNode& document, const std::wstring& path)
{
    SInfo info;
    {
        VoStreamWriteBinaryFile out(path, VoStreamWriteBinaryFile::eAM_Create, VoStreamWriteBinaryFile::eCM_ZIP,
                                    VoStreamWriteBinaryFile::eCL_Default);
        out.WriteVersion(c_Version);
        writeNode(out, document);
        out.Flush();
        info.payloadBytes = out.GetByteCount();
    }
    info.fileBytes = std::filesystem::file_size(std::filesystem::path(path));
    return info;
}

BxSmartPointer<VoNode> CDocumentArchive::Load(const std::wstring& path, VoDataManager& manager)
{
    VoStreamReadBinaryFile in(path);
    in.ReadAndCompareVersion(c_Version);
    return readNode(in, manager, manager.GetRootNode());
}

bool CDocumentArchive::Equal(const VoNode& left, const VoNode& right, std::wstring& difference)
{
    const std::wstring where = left.GetName();
    if (std::wstring(left.GetClassNameW()) != right.GetClassNameW() || left.GetName() != right.GetName()) {
        difference = L"node " + where + L" differs in class or name";
        return false;
    }
    if (!sameValue(left, right)) {
        difference = L"node " + where + L" differs in value";
        return false;
    }
    const VoNode::ConstChildren a = left.GetChildren();
    const VoNode::ConstChildren b = right.GetChildren();
    if (a.size() != b.size()) {
        difference = L"node " + where + L" differs in its number of children";
        return false;
    }
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j)
        if (!Equal(**i, **j, difference))
            return false;
    return true;
}
