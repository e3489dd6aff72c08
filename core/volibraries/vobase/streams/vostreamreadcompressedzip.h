// Input filter that inflates a zlib stream (RFC 1950) read from an inner
// stream, the payload of compressed archives.
//
//   BxStreamReadBinaryBuffer bytes(data, size);
//   VoStreamReadCompressedZIP zip(bytes);
//   zip >> values;
//
// The inner stream is read in pieces of 1,024 bytes; a piece shorter than
// that marks the end of input. A read that still needs fewer than 1,536 bytes
// is served from a 3,072-byte inflated buffer (whose unread bytes form the
// base class's get area, so small typed reads avoid a virtual call); larger
// reads inflate straight into the caller's memory.
//
// Corrupt or truncated input is not detected as such: it ends in a short read
// (and so a BxExceptionStream from the typed reads), never in a hang or an
// allocation that depends on the data.
//
// A valid stream may inflate to any size, so there is no limit by default;
// SetMaximumSize(n) makes inflating more than n bytes in all throw
// BxExceptionStream ("VoStreamReadCompressedZIP::read").
#pragma once

#include <vobase/streams/vostreamfilter.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamreadbinary.h>

#include <cstddef>
#include <cstdint>
#include <memory>

struct z_stream_s;

/// Input filter that inflates a zlib stream (RFC 1950) read from an inner stream, the payload of compressed
/// archives.
class VOBASE_API VoStreamReadCompressedZIP : public VoStreamFilter<BxStreamReadBinary, BxStreamReadBinary>
{
public:
    static constexpr std::size_t c_InputSize = 1024;     ///< compressed bytes read from the inner stream at once
    static constexpr std::size_t c_InflatedSize = 3072;  ///< the inflated buffer
    static constexpr std::size_t c_DirectLimit = 1536;   ///< reads needing this much or more bypass the buffer

    /// Borrows `inner`. Throws BxExceptionStream ("VoStreamReadCompressedZIP::init")
    /// when zlib cannot start.
    explicit VoStreamReadCompressedZIP(BxStreamReadBinary& inner);
    /// Owns `inner`, otherwise as above.
    explicit VoStreamReadCompressedZIP(std::unique_ptr<BxStreamReadBinary> inner);
    ~VoStreamReadCompressedZIP() override;

    /// The most bytes the stream may inflate to; 0 (the default) means no limit.
    void SetMaximumSize(std::uint64_t size) noexcept { m_maximumSize = size; }
    /// The most bytes the stream may inflate to; 0 means no limit.
    std::uint64_t GetMaximumSize() const noexcept { return m_maximumSize; }

protected:
    /// Delivers up to `count` inflated bytes; fewer at the end of the data.
    std::size_t read(void* data, std::size_t count) override;

private:
    void init();
    std::size_t inflateToBuffer(void* out, std::size_t size);
    std::size_t copyFromInflatedBuffer(void* out, std::size_t size);

    std::unique_ptr<z_stream_s> m_stream;   ///< zlib state
    std::uint32_t m_endOfInput = 0;         ///< set once the inner stream delivered a short piece
    std::uint64_t m_maximumSize = 0;        ///< inflated bytes allowed in all; 0 for no limit
    unsigned char m_input[c_InputSize];
    unsigned char m_inflated[c_InflatedSize];
};
