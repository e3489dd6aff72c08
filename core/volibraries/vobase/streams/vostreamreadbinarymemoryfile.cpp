#include <vobase/streams/vostreamreadbinarymemoryfile.h>

#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadcompressedzip.h>

#include <bxbase/bxexceptionstream.h>

VoStreamReadBinaryMemoryFile::VoStreamReadBinaryMemoryFile(const void* data, std::size_t size)
    : m_buffer(data, size), m_data(static_cast<const unsigned char*>(data)), m_size(data ? size : 0)
{
    init();
}

VoStreamReadBinaryMemoryFile::VoStreamReadBinaryMemoryFile(const BxArray<unsigned char>& data)
    : VoStreamReadBinaryMemoryFile(data.data(), data.size())
{
}

VoStreamReadBinaryMemoryFile::~VoStreamReadBinaryMemoryFile() = default;

void VoStreamReadBinaryMemoryFile::init()
{
    constexpr const char* function = "VoStreamReadBinaryMemoryFile::init";
    if (m_size >= VoStreamCompressionHeader::c_HeaderSize && VoStreamCompressionHeader::HasSignature(m_data, m_size)) {
        unsigned char bytes[VoStreamCompressionHeader::c_HeaderSize];
        if (m_buffer.ReadBuffer(bytes, sizeof bytes) != sizeof bytes)
            BX_THROW(BxExceptionStream, function, "the archive header is truncated");
        VoStreamCompressionHeader header;
        (void)header.Parse(bytes, sizeof bytes);
        switch (header.GetCompressionType()) {
        case VoStreamCompressionHeader::eCT_Stored:
            break;
        case VoStreamCompressionHeader::eCT_Retired:
            BX_THROW(BxExceptionStream, function, "compression type 1 is no longer supported");
        case VoStreamCompressionHeader::eCT_ZIP:
            m_decompressingStream = std::make_unique<VoStreamReadCompressedZIP>(m_buffer);
            return;
        default:
            BX_THROW(BxExceptionStream, function,
                     "unknown compression type " + std::to_string(header.GetCompressionType()));
        }
    }
    // Plain or stored data: the rest of the block is this stream's own get area,
    // so reads copy straight from it.
    const auto* begin = reinterpret_cast<const std::byte*>(m_data);
    setGetArea(begin + m_buffer.GetPosition(), begin + m_size);
}

std::size_t VoStreamReadBinaryMemoryFile::read(void* data, std::size_t count)
{
    if (m_decompressingStream)
        return m_decompressingStream->ReadBuffer(data, count);
    return 0;  // the whole plain block is the get area, which the base class has used up
}

std::optional<std::uint64_t> VoStreamReadBinaryMemoryFile::remaining() const
{
    if (m_decompressingStream)
        return std::nullopt;
    return getAreaSize();
}

void VoStreamReadBinaryMemoryFile::SetMaximumSize(std::uint64_t size) noexcept
{
    if (m_decompressingStream)
        m_decompressingStream->SetMaximumSize(size);
}
