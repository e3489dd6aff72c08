#include <vobase/streams/vostreamcompressionheader.h>

#include <cstring>
#include <limits>

const char* VoStreamCompressionHeader::c_ArchiveSignature = "C2288012-30BB4396B65C-A8CE40307C01";
const char* VoStreamCompressionHeader::c_ArchiveSignatureOld = "Vorax AG, 2005, compressed archive";

bool VoStreamCompressionHeader::HasSignature(const void* data, std::size_t count) noexcept
{
    return count >= c_SignatureSize && (std::memcmp(data, c_ArchiveSignature, c_SignatureSize) == 0 ||
                                        std::memcmp(data, c_ArchiveSignatureOld, c_SignatureSize) == 0);
}

bool VoStreamCompressionHeader::Parse(const void* data, std::size_t count) noexcept
{
    if (count < c_HeaderSize || !HasSignature(data, count))
        return false;
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::memcpy(&m_compressionType, bytes + c_SignatureSize, 4);  // little-endian target
    std::memcpy(&m_size, bytes + c_SizeFieldOffset, 4);
    return true;
}

void VoStreamCompressionHeader::Serialize(void* out) const noexcept
{
    auto* bytes = static_cast<unsigned char*>(out);
    std::memcpy(bytes, c_ArchiveSignature, c_SignatureSize);
    std::memcpy(bytes + c_SignatureSize, &m_compressionType, 4);
    std::memcpy(bytes + c_SizeFieldOffset, &m_size, 4);
}

std::uint32_t VoStreamCompressionHeader::SaturateSize(std::uint64_t count) noexcept
{
    constexpr std::uint64_t limit = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(count > limit ? limit : count);
}
