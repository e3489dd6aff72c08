#include <vobase/streams/vostreamreadbinaryfile.h>

#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadbinaryfileraw.h>
#include <vobase/streams/vostreamreadcompressedzip.h>

#include <bxbase/bxexceptionstream.h>

#include <istream>

namespace {

// Reads from a std::istream (the archive of the original platform in loading mode).
class CStreamReadBinaryArchive : public BxStreamReadBinary
{
public:
    explicit CStreamReadBinaryArchive(std::istream& archive) : m_archive(archive)
    {
        // A buffer that cannot be read from reports -1 available characters.
        if (!archive.rdbuf() || !archive.good() || archive.rdbuf()->in_avail() < 0)
            BX_THROW(BxExceptionStream, "CStreamReadBinaryArchive::CStreamReadBinaryArchive",
                     "the archive is not open for loading");
    }

protected:
    std::size_t read(void* data, std::size_t count) override
    {
        m_archive.read(static_cast<char*>(data), static_cast<std::streamsize>(count));
        if (m_archive.bad())
            BX_THROW(BxExceptionStream, "CStreamReadBinaryArchive::read", "cannot read from the archive");
        return static_cast<std::size_t>(m_archive.gcount());
    }

private:
    std::istream& m_archive;
};

}  // namespace

VoStreamReadBinaryFile::VoStreamReadBinaryFile(const wchar_t* path)
{
    open(path ? path : L"");
}

VoStreamReadBinaryFile::VoStreamReadBinaryFile(const std::wstring& path)
{
    open(path);
}

VoStreamReadBinaryFile::VoStreamReadBinaryFile(VoFileSystem::ESpecialDirectory directory, const wchar_t* name)
{
    open(VoFileSystem::JoinPath(VoFileSystem::GetDirectory(directory), name ? name : L""));
}

VoStreamReadBinaryFile::VoStreamReadBinaryFile(VoFileSystem::ESpecialDirectory directory, const std::wstring& name)
{
    open(VoFileSystem::JoinPath(VoFileSystem::GetDirectory(directory), name));
}

VoStreamReadBinaryFile::VoStreamReadBinaryFile(std::istream& archive)
    : m_activeStream(std::make_unique<CStreamReadBinaryArchive>(archive))
{
}

VoStreamReadBinaryFile::~VoStreamReadBinaryFile() = default;

void VoStreamReadBinaryFile::open(const std::wstring& path)
{
    m_filename = VoFileSystem::InterpretEnvironment(path);
    init(std::make_unique<VoStreamReadBinaryFileRaw>(m_filename.c_str()));
}

void VoStreamReadBinaryFile::init(std::unique_ptr<VoStreamReadBinaryFileRaw> raw)
{
    constexpr const char* function = "VoStreamReadBinaryFile::init";
    unsigned char bytes[VoStreamCompressionHeader::c_HeaderSize];
    const std::size_t seen = raw->Peek(bytes, sizeof bytes);
    if (seen < sizeof bytes || !VoStreamCompressionHeader::HasSignature(bytes, seen)) {
        m_activeStream = std::move(raw);  // plain data from position 0
        return;
    }
    if (raw->ReadBuffer(bytes, sizeof bytes) != sizeof bytes)
        BX_THROW(BxExceptionStream, function, "the archive header is truncated");
    VoStreamCompressionHeader header;
    (void)header.Parse(bytes, sizeof bytes);
    switch (header.GetCompressionType()) {
    case VoStreamCompressionHeader::eCT_Stored:
        m_activeStream = std::move(raw);
        return;
    case VoStreamCompressionHeader::eCT_Retired:
        BX_THROW(BxExceptionStream, function, "compression type 1 is no longer supported");
    case VoStreamCompressionHeader::eCT_ZIP:
        m_activeStream = std::make_unique<VoStreamReadCompressedZIP>(std::move(raw));
        return;
    }
    BX_THROW(BxExceptionStream, function, "unknown compression type " + std::to_string(header.GetCompressionType()));
}

std::size_t VoStreamReadBinaryFile::read(void* data, std::size_t count)
{
    return m_activeStream->ReadBuffer(data, count);
}

void VoStreamReadBinaryFile::SetMaximumSize(std::uint64_t size) noexcept
{
    if (auto* zip = dynamic_cast<VoStreamReadCompressedZIP*>(m_activeStream.get()))
        zip->SetMaximumSize(size);
}
