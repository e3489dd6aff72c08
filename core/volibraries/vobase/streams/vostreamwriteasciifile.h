// ANSI (Windows-1252) text file, optionally ZIP-compressed behind the archive
// header, written through the framework's text operators.
//
//   VoStreamWriteASCIIFile out(L"$HOME/report.txt");
//   out << "count: " << 3 << "\n" << L"Grüße\n";   // wide text becomes one byte per character
//
// Narrow text is written as its bytes, without the terminator; wide text is
// converted to Windows-1252 in chunks of at most 1,024 characters, one byte
// per character ('?' for characters the code page cannot hold). The binary
// file underneath uses compression level 0 (zlib's default) when compressed.
#pragma once

#include <vobase/platform/vofilesystem.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/bxtypes.h>

#include <locale.h>

/// ANSI (Windows-1252) text file, optionally ZIP-compressed behind the archive header, written through the
/// framework's text operators.
class VOBASE_API VoStreamWriteASCIIFile : public BxStreamWriteASCIIT<CStringT<char>>
{
public:
    /// Opens `path` as VoStreamWriteBinaryFile does. `locale` is kept for the
    /// caller (GetLocale); the base class formats numbers independently of it.
    VoStreamWriteASCIIFile(const CString& path,
                           VoStreamWriteBinaryFile::EAccessMode accessMode = VoStreamWriteBinaryFile::eAM_Create,
                           VoStreamWriteBinaryFile::ECompressionMode compressionMode = VoStreamWriteBinaryFile::eCM_None,
                           locale_t locale = nullptr);
    /// Opens `name` inside a special directory, as above.
    VoStreamWriteASCIIFile(VoFileSystem::ESpecialDirectory directory, const CString& name,
                           VoStreamWriteBinaryFile::EAccessMode accessMode = VoStreamWriteBinaryFile::eAM_Create,
                           VoStreamWriteBinaryFile::ECompressionMode compressionMode = VoStreamWriteBinaryFile::eCM_None,
                           locale_t locale = nullptr);

    /// The file name after environment interpretation.
    const wchar_t* GetFilename() const noexcept { return m_file.GetFilename(); }
    /// The locale given to the constructor.
    locale_t GetLocale() const noexcept { return m_locale; }
    /// Finishes the file (see VoStreamWriteBinaryFile::Flush).
    void Flush() { m_file.Flush(); }

protected:
    /// Writes the bytes of `text` without the terminator.
    void write(const char* text) override;
    /// Writes `text` as Windows-1252, one byte per character. Throws
    /// BxException ("VoStreamWriteASCIIFile::write") when it cannot be converted.
    void write(const wchar_t* text) override;

private:
    VoStreamWriteBinaryFile m_file;
    locale_t m_locale;
};
