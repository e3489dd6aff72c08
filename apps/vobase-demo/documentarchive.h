// Saves a document subtree as a compressed archive (the 28-byte archive
// header followed by a zlib stream, VoStreamWriteBinaryFile with eCM_ZIP)
// and loads it back into another data manager's tree.
//
//   CDocumentArchive::SInfo info = CDocumentArchive::Save(documentNode, L"/tmp/doc.vac");   // under a read lock
//   BxSmartPointer<VoNode> copy = CDocumentArchive::Load(L"/tmp/doc.vac", otherManager);
//   std::wstring difference;
//   if (!CDocumentArchive::Equal(*documentNode, *copy, difference)) report(difference);
//
// The payload: version 1, then each node depth first as its registered class
// name, its name, its value (for the typed nodes the demo uses: a UTF-16
// string, a double or a 32-bit integer; nothing for a plain VoNode) and its
// child count (u32) before its children. Loading creates each node through
// the type registry; an unknown or unsupported class, or data that ends
// early, throws BxExceptionStream.
#pragma once

#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxsmartpointer.h>

#include <cstdint>
#include <string>

class CDocumentArchive
{
public:
    /// What a save produced.
    struct SInfo
    {
        std::uint64_t payloadBytes = 0;  ///< bytes before compression
        std::uint64_t fileBytes = 0;     ///< the archive file's size, header included
    };

    CDocumentArchive() = delete;

    /// Writes `document` and its subtree to `path` (replacing the file). The
    /// caller holds at least a read lock on the document.
    static SInfo Save(const VoNode& document, const std::wstring& path);
    /// Reads the archive at `path` and inserts the document it holds under
    /// `manager`'s root; returns the document node.
    static BxSmartPointer<VoNode> Load(const std::wstring& path, VoDataManager& manager);
    /// True when both subtrees have the same classes, names, values and
    /// shapes; otherwise `difference` names the first difference found.
    static bool Equal(const VoNode& left, const VoNode& right, std::wstring& difference);
};
