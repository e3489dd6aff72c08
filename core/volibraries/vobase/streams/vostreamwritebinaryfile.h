// Binary output file, optionally ZIP-compressed behind the 28-byte archive
// header (see VoStreamCompressionHeader).
//
//   VoStreamWriteBinaryFile out(L"$HOME/data/scene.bin", VoStreamWriteBinaryFile::eAM_Create,
//                               VoStreamWriteBinaryFile::eCM_ZIP, VoStreamWriteBinaryFile::eCL_Default);
//   out.WriteVersion(1);
//   out << count << values;
//   out.Flush();   // ends the zlib stream and patches the size into the header
//
// The path passes through VoFileSystem::InterpretEnvironment first. An
// uncompressed file is the bare payload, without a header. A compressed file
// is the header (signature, type 2, uncompressed size) and a zlib stream.
//
// The stream is finished by Flush; writing afterwards throws. The destructor
// flushes a stream that is still open and swallows any error, so call Flush
// to learn about a failed final write.
//
// The constructor over a std::ostream writes the bare payload into that
// stream (it replaces the original platform's archive constructor).
//
// Like every stream of the library, an object is used by one thread at a
// time; it holds no lock.
#pragma once

#include <vobase/platform/vofilesystem.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamwritebinary.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

class VoStreamWriteCompressedZIP;

/// Binary output file, optionally ZIP-compressed behind the 28-byte archive header (see
/// VoStreamCompressionHeader).
class VOBASE_API VoStreamWriteBinaryFile : public BxStreamWriteBinary
{
public:
    /// How the file is opened.
    enum EAccessMode {
        eAM_Create = 0,  ///< create, or truncate an existing file
        eAM_Append = 1,  ///< append to an existing file
    };
    /// Whether the payload is compressed.
    enum ECompressionMode {
        eCM_None = 0,  ///< the bare payload, no header
        eCM_ZIP = 1,   ///< header, then a zlib stream
    };
    /// The ZIP level selector: 0 is zlib's default level, 1 the fastest, 2 the best.
    enum ECompressionLevel {
        eCL_Default = 0,
        eCL_Fast = 1,
        eCL_Best = 2,
    };

    /// Opens `path` after environment interpretation. Throws BxException
    /// ("translateAccessMode", "translateCompressionMode") for a bad mode,
    /// BxExceptionPreconditionViolation ("translateCompressionLevelZip") for a
    /// bad level with compression, and the raw writer's exceptions when the
    /// file cannot be opened.
    VoStreamWriteBinaryFile(const wchar_t* path, EAccessMode accessMode = eAM_Create,
                            ECompressionMode compressionMode = eCM_None, ECompressionLevel level = eCL_Default);
    /// The same for a std::wstring path.
    VoStreamWriteBinaryFile(const std::wstring& path, EAccessMode accessMode = eAM_Create,
                            ECompressionMode compressionMode = eCM_None, ECompressionLevel level = eCL_Default);
    /// Opens `name` inside a special directory, as above.
    VoStreamWriteBinaryFile(VoFileSystem::ESpecialDirectory directory, const wchar_t* name,
                            EAccessMode accessMode = eAM_Create, ECompressionMode compressionMode = eCM_None,
                            ECompressionLevel level = eCL_Default);
    /// The same for a std::wstring name.
    VoStreamWriteBinaryFile(VoFileSystem::ESpecialDirectory directory, const std::wstring& name,
                            EAccessMode accessMode = eAM_Create, ECompressionMode compressionMode = eCM_None,
                            ECompressionLevel level = eCL_Default);
    /// Writes the bare payload into `archive`, which must have a stream buffer
    /// and be in a good state (else BxExceptionStream from the adapter). The
    /// stream is borrowed and must outlive this object.
    explicit VoStreamWriteBinaryFile(std::ostream& archive);

    /// Flushes a stream that is still open, ignoring errors.
    ~VoStreamWriteBinaryFile() override;

    /// Finishes the file: ends the zlib stream, patches the uncompressed size
    /// (saturated at 0xFFFFFFFF) at offset 24 and closes the file. Throws
    /// BxExceptionStream ("VoStreamWriteBinaryFile::Flush") when the seek or
    /// the size write fails. Does nothing on a finished stream.
    void Flush();

    /// The file name after environment interpretation (empty for a std::ostream).
    const wchar_t* GetFilename() const noexcept { return m_filename.c_str(); }

    /// The number of payload bytes written so far (before compression).
    std::uint64_t GetByteCount() const noexcept { return m_byteCount; }

protected:
    /// Hands the bytes to the active stream; throws BxExceptionStream after Flush.
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

private:
    void open(const std::wstring& path, EAccessMode accessMode, ECompressionMode compressionMode,
              ECompressionLevel level);
    void init(ECompressionMode compressionMode, ECompressionLevel level);

    std::unique_ptr<BxStreamWriteBinary> m_rawStream;                 ///< the file writer or the archive adapter
    std::unique_ptr<VoStreamWriteCompressedZIP> m_compressedStream;  ///< writes into m_rawStream; null when plain
    BxStreamWriteBinary* m_activeStream = nullptr;                   ///< receives write(); null once finished
    std::uint64_t m_byteCount = 0;
    std::wstring m_filename;
};
