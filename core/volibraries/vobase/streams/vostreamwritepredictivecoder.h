// Predictive coder: a write stream that codes unsigned integers as their
// difference from a prediction the caller supplies (the previous sample, a
// neighbour, a linear extrapolation).
//
// With B bits, the magnitude class of each difference is one adaptive symbol
// of a 2B+1 symbol alphabet, range-coded with a quasi-static model:
// - symbol B: the value equals the prediction;
// - symbol B+1+k: value - prediction = d with 2^k <= d < 2^(k+1);
// - symbol B-1-k: prediction - value = d in the same class k;
// and a non-zero class is followed by k raw bits holding d - 2^k. So a value
// close to its prediction costs a few bits, whatever its size.
//
// The finished block is the coder's version (u32) followed by the range
// coder's message (version 0, u32 byte count, coded bytes); it goes to the
// target when the stream is closed or destroyed.
//
//   BxStreamWriteBinaryBuffer out;
//   {
//       VoStreamWritePredictiveCoder coder(out, 16, 1 << 16);
//       std::uint32_t previous = 0;
//       for (std::uint16_t sample : samples) {
//           coder.WriteValue(sample, previous);
//           previous = sample;
//       }
//   }
//
// Bytes written through the binary stream interface (operator<<, WriteBuffer)
// are coded raw, 8 bits each, inside the same message. The difference must be
// below 2^B; a larger one makes WriteValue throw BxExceptionPreconditionViolation
// ("VoProbabilityModelQuasiStatic::GetFrequencies"). Not thread-safe.
#pragma once

#include <vobase/streams/vostreamfilter.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamwritebinary.h>
#include <vocompression/vocompressrangecoder.h>

#include <bit>
#include <cstdint>
#include <memory>

/// Predictive coder: a write stream that codes unsigned integers as their difference from a prediction the caller
/// supplies (the previous sample, a neighbour, a linear extrapolation).
class VOBASE_API VoStreamWritePredictiveCoder : public VoStreamFilter<BxStreamWriteBinary, BxStreamWriteBinary>
{
public:
    /// Codes values of up to `bits` (1 to 32) bits into `target`, with version 0;
    /// the coder reserves `capacity` / 4 bytes for its message up front.
    VoStreamWritePredictiveCoder(BxStreamWriteBinary& target, std::uint32_t bits, std::uint32_t capacity);
    /// Finishes the block unless Close() already did; a failure of the target
    /// is swallowed here, so call Close() to see it.
    ~VoStreamWritePredictiveCoder() override;

    /// Codes `value` as its difference from `prediction`.
    void WriteValue(std::uint32_t value, std::uint32_t prediction)
    {
        if (value == prediction) {
            *m_coder << m_bits;
        } else if (value < prediction) {
            const std::uint32_t difference = prediction - value;
            const std::uint32_t k = std::bit_width(difference) - 1;
            *m_coder << (m_bits - k - 1);
            m_coder->WriteRawBits(difference - (1u << k), k);
        } else {
            const std::uint32_t difference = value - prediction;
            const std::uint32_t k = std::bit_width(difference) - 1;
            *m_coder << (m_bits + 1 + k);
            m_coder->WriteRawBits(difference - (1u << k), k);
        }
    }

    /// Writes the version and then the coded message to the target; later
    /// calls do nothing. Throws what the target throws. Nothing may be written afterwards.
    void Close();

    /// The bits B.
    std::uint32_t GetBits() const noexcept { return m_bits; }
    /// The version written in front of the message.
    std::uint32_t GetVersion() const noexcept { return m_version; }

protected:
    /// As the public constructor, writing `version` in front of the message.
    VoStreamWritePredictiveCoder(BxStreamWriteBinary& target, std::uint32_t bits, std::uint32_t capacity,
                                 std::uint32_t version);

private:
    /// Codes each byte as 8 raw bits.
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

    std::unique_ptr<VoCompressRangeCoder> m_coder;
    std::uint32_t m_bits;
    std::uint32_t m_version;
    bool m_closed = false;
};
