// ANSI text file read through the token reader (see VoStreamReadASCIIT).
//
//   VoStreamReadASCIIFile in(L"$HOME/report.txt");
//   CStringA word; int count;
//   in >> word >> count;
//
// The file underneath is a VoStreamReadBinaryFile, so a compressed text file
// written by VoStreamWriteASCIIFile reads back as well.
#pragma once

#include <vobase/platform/vofilesystem.h>
#include <vobase/streams/vostreamreadasciit.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxtypes.h>

/// ANSI text file read through the token reader (see VoStreamReadASCIIT).
class VOBASE_API VoStreamReadASCIIFile : public VoStreamReadASCIIT<CStringT<char>>
{
public:
    /// Opens `path` as VoStreamReadBinaryFile does.
    explicit VoStreamReadASCIIFile(const CString& path);
    /// Opens `name` inside a special directory.
    VoStreamReadASCIIFile(VoFileSystem::ESpecialDirectory directory, const CString& name);

    /// The file name after environment interpretation.
    const wchar_t* GetFilename() const noexcept { return m_file.GetFilename(); }

protected:
    /// Reads one byte; true when there was none.
    bool read(char& c) override;

private:
    VoStreamReadBinaryFile m_file;
};
