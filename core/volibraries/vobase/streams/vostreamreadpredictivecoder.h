// Predictive decoder: the read stream that reverses VoStreamWritePredictiveCoder.
//
// The reader checks the block's version and then loads the whole range-coded
// message at once. Each ReadValue must be given the same prediction the
// writer used for that value.
//
//   BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
//   VoStreamReadPredictiveCoder decoder(in, 16);
//   std::uint32_t previous = 0;
//   for (auto& sample : samples)
//       previous = sample = decoder.ReadValue(previous);
//
// Bytes read through the binary stream interface (operator>>, ReadBuffer)
// are decoded from the raw channel of the same message. Damaged input yields
// wrong values or BxExceptionStream, never a fault. Not thread-safe.
#pragma once

#include <vobase/streams/vostreamfilter.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamreadbinary.h>
#include <vocompression/vodecompressrangecoder.h>

#include <cstdint>
#include <memory>

/// Predictive decoder: the read stream that reverses VoStreamWritePredictiveCoder.
class VOBASE_API VoStreamReadPredictiveCoder : public VoStreamFilter<BxStreamReadBinary, BxStreamReadBinary>
{
public:
    /// Reads a block of version 0 with values of `bits` (1 to 32) bits from
    /// `source`. Throws BxExceptionWrongFileVersion for a newer block and
    /// BxExceptionStream for a missing or short one.
    VoStreamReadPredictiveCoder(BxStreamReadBinary& source, std::uint32_t bits);

    /// Decodes the next value, given the prediction the writer used.
    std::uint32_t ReadValue(std::uint32_t prediction)
    {
        if (!m_decoder)
            throwNotInitialized();
        std::uint32_t symbol = 0;
        *m_decoder >> symbol;
        if (symbol == m_bits)
            return prediction;
        // The model only yields symbols below 2B+1, so k stays below B <= 32.
        if (symbol > m_bits) {
            const std::uint32_t k = symbol - m_bits - 1;
            return prediction + (1u << k) + m_decoder->ReadRawBits(k);
        }
        const std::uint32_t k = m_bits - symbol - 1;
        return prediction - (1u << k) - m_decoder->ReadRawBits(k);
    }

    /// The bits B.
    std::uint32_t GetBits() const noexcept { return m_bits; }
    /// The newest version this reader accepts.
    std::uint32_t GetVersion() const noexcept { return m_version; }

protected:
    /// Prepares a reader of blocks up to `version` without reading; the
    /// derived class calls initialize() once it is ready.
    VoStreamReadPredictiveCoder(BxStreamReadBinary& source, std::uint32_t bits, std::uint32_t version);

    /// Checks the version (at most the one given at construction) and loads the message.
    void initialize();

    /// Decodes `count` raw bytes; returns `count` or throws BxExceptionStream.
    std::size_t read(void* data, std::size_t count) override;

private:
    [[noreturn]] static void throwNotInitialized();

    std::unique_ptr<VoDecompressRangeCoder> m_decoder;
    std::uint32_t m_bits;
    std::uint32_t m_version;
};
