// Buffer-to-buffer LZMA decompression through the separately loaded LZMA
// module (see VoCompressLZMA for how the module is found).
//
//   VoDecompressLZMA lzma;
//   if (lzma.Decompress(packed.data(), unsigned(packed.size())))
//       use(lzma.GetData(), lzma.GetSize());
//
// Reads the .lzma and .xz formats. The result size is not known in advance:
// the output space starts at four times the input (at least 64 KiB) and
// doubles while the module reports it too small, up to GetMaximumSize()
// (256 MiB unless changed), so corrupt input cannot make it allocate without
// bound: data that would decompress to more throws BxExceptionStream
// ("VoDecompressLZMA::Decompress").
#pragma once

#include <vocompression/vocompresslzma.h>
#include <vocompression/vocompressionapi.h>

#include <memory>
#include <string>

/// Buffer-to-buffer LZMA decompression through the separately loaded LZMA module (see VoCompressLZMA for how the
/// module is found).
class VOCOMPRESSION_API VoDecompressLZMA
{
public:
    /// The largest result a new decompressor accepts: 256 MiB.
    static constexpr unsigned int c_DefaultMaximumSize = 256u << 20;

    /// Loads the module and resolves the decompress entry. Throws BxException
    /// ("VoDecompressLZMA::VoDecompressLZMA") when either fails.
    VoDecompressLZMA();
    /// As above, with the module at `modulePath`.
    explicit VoDecompressLZMA(const std::wstring& modulePath);

    /// Decompresses `size` bytes into a result kept in this object; any earlier
    /// result is freed first. Returns false (and keeps no result) for corrupt,
    /// truncated or unsupported data; throws BxExceptionStream (and keeps no
    /// result) when the data decompresses to more than the maximum size.
    bool Decompress(const void* data, unsigned int size);

    /// The last result (null when there is none; an empty result is not null).
    const unsigned char* GetData() const noexcept { return m_buffer.get(); }
    /// The size of the last result in bytes.
    unsigned int GetSize() const noexcept { return m_size; }

    /// The largest result Decompress accepts.
    unsigned int GetMaximumSize() const noexcept { return m_maximumSize; }
    /// Sets the largest result Decompress accepts, in bytes; larger results
    /// throw BxExceptionStream. Applies to the following calls.
    void SetMaximumSize(unsigned int size) noexcept { m_maximumSize = size; }

private:
    VoCompressLZMA::CModule m_module;
    VoCompressLZMA::FEntry m_entry;
    std::unique_ptr<unsigned char[]> m_buffer;
    unsigned int m_size = 0;
    unsigned int m_maximumSize = c_DefaultMaximumSize;
};
