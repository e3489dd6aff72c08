#include <vobase/streams/vostreamwritebinaryfile.h>

#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamwritebinaryfileraw.h>
#include <vobase/streams/vostreamwritecompressedzip.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>

#include <cstdio>
#include <ostream>

namespace {

// Writes into a std::ostream (the archive of the original platform in storing mode).
class CStreamWriteBinaryArchive : public BxStreamWriteBinary
{
public:
    explicit CStreamWriteBinaryArchive(std::ostream& archive) : m_archive(archive)
    {
        if (!archive.rdbuf() || !archive.good())
            BX_THROW(BxExceptionStream, "CStreamWriteBinaryArchive::CStreamWriteBinaryArchive",
                     "the archive is not open for storing");
    }
    ~CStreamWriteBinaryArchive() override { m_archive.flush(); }

protected:
    BxStreamWriteBinary& write(const void* data, std::size_t count) override
    {
        if (!m_archive.write(static_cast<const char*>(data), static_cast<std::streamsize>(count)))
            BX_THROW(BxExceptionStream, "CStreamWriteBinaryArchive::write", "cannot write to the archive");
        return *this;
    }

private:
    std::ostream& m_archive;
};

VoStreamWriteBinaryFile::EAccessMode translateAccessMode(VoStreamWriteBinaryFile::EAccessMode mode)
{
    if (mode != VoStreamWriteBinaryFile::eAM_Create && mode != VoStreamWriteBinaryFile::eAM_Append)
        BX_THROW(BxException, "translateAccessMode", "unknown access mode " + std::to_string(int(mode)));
    return mode;
}

VoStreamWriteBinaryFile::ECompressionLevel translateCompressionLevelZip(VoStreamWriteBinaryFile::ECompressionLevel level)
{
    if (level != VoStreamWriteBinaryFile::eCL_Default && level != VoStreamWriteBinaryFile::eCL_Fast &&
        level != VoStreamWriteBinaryFile::eCL_Best)
        BX_THROW(BxExceptionPreconditionViolation, "translateCompressionLevelZip",
                 "unknown compression level " + std::to_string(int(level)));
    return level;
}

}  // namespace

VoStreamWriteBinaryFile::VoStreamWriteBinaryFile(const wchar_t* path, EAccessMode accessMode,
                                                 ECompressionMode compressionMode, ECompressionLevel level)
{
    open(path ? path : L"", accessMode, compressionMode, level);
}

VoStreamWriteBinaryFile::VoStreamWriteBinaryFile(const std::wstring& path, EAccessMode accessMode,
                                                 ECompressionMode compressionMode, ECompressionLevel level)
{
    open(path, accessMode, compressionMode, level);
}

VoStreamWriteBinaryFile::VoStreamWriteBinaryFile(VoFileSystem::ESpecialDirectory directory, const wchar_t* name,
                                                 EAccessMode accessMode, ECompressionMode compressionMode,
                                                 ECompressionLevel level)
{
    open(VoFileSystem::JoinPath(VoFileSystem::GetDirectory(directory), name ? name : L""), accessMode,
         compressionMode, level);
}

VoStreamWriteBinaryFile::VoStreamWriteBinaryFile(VoFileSystem::ESpecialDirectory directory, const std::wstring& name,
                                                 EAccessMode accessMode, ECompressionMode compressionMode,
                                                 ECompressionLevel level)
{
    open(VoFileSystem::JoinPath(VoFileSystem::GetDirectory(directory), name), accessMode, compressionMode, level);
}

VoStreamWriteBinaryFile::VoStreamWriteBinaryFile(std::ostream& archive)
    : m_rawStream(std::make_unique<CStreamWriteBinaryArchive>(archive))
{
    m_activeStream = m_rawStream.get();
}

VoStreamWriteBinaryFile::~VoStreamWriteBinaryFile()
{
    if (!m_activeStream)
        return;
    try {
        Flush();
    } catch (...) {
        // A destructor cannot report the failure; Flush does.
    }
}

void VoStreamWriteBinaryFile::open(const std::wstring& path, EAccessMode accessMode,
                                   ECompressionMode compressionMode, ECompressionLevel level)
{
    m_filename = VoFileSystem::InterpretEnvironment(path);
    m_rawStream = std::make_unique<VoStreamWriteBinaryFileRaw>(m_filename.c_str(), translateAccessMode(accessMode));
    init(compressionMode, level);
}

void VoStreamWriteBinaryFile::init(ECompressionMode compressionMode, ECompressionLevel level)
{
    switch (compressionMode) {
    case eCM_None:
        m_activeStream = m_rawStream.get();
        return;
    case eCM_ZIP: {
        unsigned char header[VoStreamCompressionHeader::c_HeaderSize];
        VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_ZIP, 0).Serialize(header);
        m_rawStream->WriteBuffer(header, sizeof header);
        m_compressedStream = std::make_unique<VoStreamWriteCompressedZIP>(*m_rawStream, translateCompressionLevelZip(level));
        m_activeStream = m_compressedStream.get();
        return;
    }
    }
    BX_THROW(BxException, "translateCompressionMode", "unknown compression mode " + std::to_string(int(compressionMode)));
}

BxStreamWriteBinary& VoStreamWriteBinaryFile::write(const void* data, std::size_t count)
{
    if (!m_activeStream)
        BX_THROW(BxExceptionStream, "VoStreamWriteBinaryFile::write", "the stream is already flushed");
    m_activeStream->WriteBuffer(data, count);
    m_byteCount += count;
    return *this;
}

void VoStreamWriteBinaryFile::Flush()
{
    if (!m_activeStream)
        return;
    m_activeStream = nullptr;
    constexpr const char* function = "VoStreamWriteBinaryFile::Flush";
    if (m_compressedStream) {
        auto* raw = dynamic_cast<VoStreamWriteBinaryFileRaw*>(m_rawStream.get());
        std::unique_ptr<VoStreamWriteCompressedZIP> compressed = std::move(m_compressedStream);
        compressed->Finish();  // writes the last bytes of the zlib stream into the raw file
        compressed.reset();
        std::FILE* file = raw ? raw->GetHandle() : nullptr;
        if (!file || std::fseek(file, VoStreamCompressionHeader::c_SizeFieldOffset, SEEK_SET) != 0)
            BX_THROW(BxExceptionStream, function, "cannot seek to the size field");
        const std::uint32_t size = VoStreamCompressionHeader::SaturateSize(m_byteCount);
        if (std::fwrite(&size, sizeof size, 1, file) != 1)  // little-endian target
            BX_THROW(BxExceptionStream, function, "cannot write the size field");
    }
    if (auto* raw = dynamic_cast<VoStreamWriteBinaryFileRaw*>(m_rawStream.get()))
        raw->Close();
    m_rawStream.reset();
}
