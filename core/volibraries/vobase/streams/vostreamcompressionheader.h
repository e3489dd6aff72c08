// The 28-byte header at the start of a compressed archive. All integers are
// little-endian:
//
//   offset  0, 20 bytes  signature: the first 20 characters of c_ArchiveSignature
//   offset 20, u32       compression type: 0 stored, 1 retired (refused), 2 ZIP (zlib stream)
//   offset 24, u32       uncompressed size, saturated at 0xFFFFFFFF (writers patch it on Flush)
//
//   VoStreamCompressionHeader header;
//   if (header.Parse(bytes, count) && header.GetCompressionType() == VoStreamCompressionHeader::eCT_ZIP) ...
//   VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_ZIP).Serialize(bytes);
//
// Writers produce only c_ArchiveSignature; readers accept it and the older
// c_ArchiveSignatureOld. Readers never check the size field.
#pragma once

#include <vobase/vobaseapi.h>

#include <cstddef>
#include <cstdint>

/// The 28-byte header at the start of a compressed archive.
class VOBASE_API VoStreamCompressionHeader
{
public:
    /// The current signature; only its first 20 characters are written and compared.
    static const char* c_ArchiveSignature;
    /// The older signature, accepted by readers and never written.
    static const char* c_ArchiveSignatureOld;

    static constexpr std::size_t c_SignatureSize = 20;      ///< signature bytes in the header
    static constexpr std::size_t c_HeaderSize = 28;         ///< bytes of the whole header
    static constexpr std::size_t c_SizeFieldOffset = 24;    ///< offset of the uncompressed size

    /// The compression type field.
    enum ECompressionType : std::uint32_t {
        eCT_Stored = 0,   ///< the payload follows uncompressed
        eCT_Retired = 1,  ///< a retired type that readers refuse
        eCT_ZIP = 2,      ///< the payload is a zlib stream
    };

    /// A header of the given type and size, with the current signature.
    explicit VoStreamCompressionHeader(std::uint32_t compressionType = eCT_Stored, std::uint32_t size = 0) noexcept
        : m_compressionType(compressionType), m_size(size)
    {
    }

    /// True when the first 20 of `count` bytes at `data` match either signature.
    static bool HasSignature(const void* data, std::size_t count) noexcept;

    /// Takes the type and size from the 28 bytes at `data`; false (and no
    /// change) when `count` is below 28 or the signature does not match.
    bool Parse(const void* data, std::size_t count) noexcept;

    /// Writes the 28 header bytes to `out`.
    void Serialize(void* out) const noexcept;

    /// A byte count as stored in the size field: counts above 0xFFFFFFFF become 0xFFFFFFFF.
    static std::uint32_t SaturateSize(std::uint64_t count) noexcept;

    /// The compression type field (ECompressionType values; others are possible
    /// after Parse and are refused by the readers).
    std::uint32_t GetCompressionType() const noexcept { return m_compressionType; }
    /// The uncompressed size field in bytes, saturated at 0xFFFFFFFF; 0 in a
    /// header that was never patched. Readers do not rely on it.
    std::uint32_t GetSize() const noexcept { return m_size; }

private:
    std::uint32_t m_compressionType;
    std::uint32_t m_size;
};
