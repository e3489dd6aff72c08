// Binary input file that recognises the compressed-archive header.
//
//   VoStreamReadBinaryFile in(L"$HOME/data/scene.bin");
//   unsigned version = in.ReadAndCompareVersion(1);
//   in >> count >> values;
//
// At construction the reader looks at the first 28 bytes. Without either
// archive signature (or with fewer than 28 bytes) the file is read as plain
// data from its start. With a signature, the header's type decides: 0 reads
// the bytes after the header as they are, 2 inflates them as a zlib stream,
// and 1 or any other type is refused. The choice never changes afterwards.
//
// The constructor over a std::istream reads that stream's bytes as they are
// (it replaces the original platform's archive constructor).
//
// Like every stream of the library, an object is used by one thread at a
// time; it holds no lock.
#pragma once

#include <vobase/platform/vofilesystem.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamreadbinary.h>

#include <iosfwd>
#include <cstdint>
#include <memory>
#include <string>

class VoStreamReadBinaryFileRaw;

/// Binary input file that recognises the compressed-archive header.
class VOBASE_API VoStreamReadBinaryFile : public BxStreamReadBinary
{
public:
    /// Opens `path` after environment interpretation. Throws the raw reader's
    /// exceptions when the file cannot be opened and BxExceptionStream
    /// ("VoStreamReadBinaryFile::init") for a short header or a refused type.
    explicit VoStreamReadBinaryFile(const wchar_t* path);
    /// The same for a std::wstring path.
    explicit VoStreamReadBinaryFile(const std::wstring& path);
    /// Opens `name` inside a special directory, as above.
    VoStreamReadBinaryFile(VoFileSystem::ESpecialDirectory directory, const wchar_t* name);
    /// The same for a std::wstring name.
    VoStreamReadBinaryFile(VoFileSystem::ESpecialDirectory directory, const std::wstring& name);
    /// Reads the bytes of `archive`, which must have a readable stream buffer
    /// and be in a good state (else BxExceptionStream from the adapter). The
    /// stream is borrowed and must outlive this object.
    explicit VoStreamReadBinaryFile(std::istream& archive);
    ~VoStreamReadBinaryFile() override;

    /// For a ZIP archive, the most bytes its payload may inflate to (0, the
    /// default, for no limit); beyond it reading throws BxExceptionStream.
    /// Plain and stored data ignore it: they cannot be larger than the input.
    void SetMaximumSize(std::uint64_t size) noexcept;

    /// The file name after environment interpretation (empty for a std::istream).
    const wchar_t* GetFilename() const noexcept { return m_filename.c_str(); }

protected:
    /// Forwards to the active stream and returns its count.
    std::size_t read(void* data, std::size_t count) override;

private:
    void open(const std::wstring& path);
    void init(std::unique_ptr<VoStreamReadBinaryFileRaw> raw);

    std::unique_ptr<BxStreamReadBinary> m_activeStream;  ///< the raw reader, or the ZIP reader owning it
    std::wstring m_filename;
};
