// Binary input over a block of memory that may hold a compressed archive.
//
//   std::vector<unsigned char> bytes = receiveFile();
//   VoStreamReadBinaryMemoryFile in(bytes);
//   in >> count >> values;
//
// The block follows the same rule as VoStreamReadBinaryFile: with at least 28
// bytes and either archive signature at its start, the header's type decides
// (0 stored after the header, 2 a zlib stream, 1 and others refused);
// otherwise the block is read as plain data from its start.
//
// The block is not copied: the caller keeps it alive and unchanged for the
// stream's lifetime.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamreadbinarybuffer.h>

#include <cstddef>
#include <cstdint>
#include <memory>

class VoStreamReadCompressedZIP;

/// Binary input over a block of memory that may hold a compressed archive.
class VOBASE_API VoStreamReadBinaryMemoryFile : public BxStreamReadBinary
{
public:
    /// Reads the `size` bytes at `data`. Throws BxExceptionStream
    /// ("VoStreamReadBinaryMemoryFile::init") for a short header or a refused type.
    VoStreamReadBinaryMemoryFile(const void* data, std::size_t size);
    /// Reads the bytes of `data`, as above.
    explicit VoStreamReadBinaryMemoryFile(const BxArray<unsigned char>& data);
    ~VoStreamReadBinaryMemoryFile() override;

    /// For a ZIP archive, the most bytes its payload may inflate to (0, the
    /// default, for no limit); beyond it reading throws BxExceptionStream.
    /// Plain and stored data ignore it: they cannot be larger than the input.
    void SetMaximumSize(std::uint64_t size) noexcept;

protected:
    /// Header detection; runs from both constructors.
    void init();

    /// From the decompressing stream if there is one, else from the block.
    std::size_t read(void* data, std::size_t count) override;
    std::optional<std::uint64_t> remaining() const override;

private:
    std::unique_ptr<VoStreamReadCompressedZIP> m_decompressingStream;  ///< null for plain or stored data
    BxStreamReadBinaryBuffer m_buffer;                                 ///< reads the caller's block
    const unsigned char* m_data;
    std::uint64_t m_size;
};
