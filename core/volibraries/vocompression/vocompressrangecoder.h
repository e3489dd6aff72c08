// Range encoder: a write stream that range-codes what is written to it.
//
// A carry-less range coder with a 32-bit low and range (top threshold 2^24,
// bottom threshold 2^16). It has two channels:
// - the symbol channel: WriteSymbol codes a symbol with a
//   VoProbabilityModelQuasiStatic, and the typed operator<< code an integer
//   as one symbol of the coder's own model;
// - the raw channel: WriteRawBits codes a field of 1 to 32 bits at equal
//   probability, WriteRaw codes bytes as 8-bit fields.
//
// The whole coded message is kept in memory and handed to the target in one
// piece when the coder is closed (or destroyed): version 0 (u32), the u32
// byte count N, then the N coded bytes (N >= 4, the last 4 being the final
// low, most significant first). The target never sees a partial message.
//
//   BxStreamWriteBinaryBuffer out;
//   {
//       VoCompressRangeCoder encoder(out, 256, 4096);   // own model: 256 symbols, 16 bits
//       encoder << 'a' << 200u;                         // symbols
//       encoder.WriteRawBits(0x1ABCD, 17);              // raw bits
//   }                                                   // the message is now in `out`
//
// VoDecompressRangeCoder reads it back; the reading sequence must mirror the
// writing sequence exactly. Not thread-safe.
#pragma once

#include <vocompression/vocompressionapi.h>
#include <vocompression/voprobabilitymodelquasistatic.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamwritebinary.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// Range encoder: a write stream that range-codes what is written to it.
class VOCOMPRESSION_API VoCompressRangeCoder : private BxStreamWriteBinary
{
public:
    /// Codes into `target` with an own model of `numberOfSymbols` symbols
    /// (16 total bits, target rescale 1,024); reserves `initialCapacity` bytes.
    VoCompressRangeCoder(BxStreamWriteBinary& target, std::uint32_t numberOfSymbols, std::uint32_t initialCapacity);
    /// Codes into `target` with `model` (shared, not reset) as the own model.
    VoCompressRangeCoder(BxStreamWriteBinary& target, BxSmartPointer<VoProbabilityModelQuasiStatic> model,
                         std::uint32_t initialCapacity);
    /// Hands the message to the target unless Close() already did. A failure
    /// of the target is swallowed here: call Close() to see it.
    ~VoCompressRangeCoder() override;

    VoCompressRangeCoder(const VoCompressRangeCoder&) = delete;
    VoCompressRangeCoder& operator=(const VoCompressRangeCoder&) = delete;

    /// Codes `symbol` with `model` (which it updates).
    void WriteSymbol(std::uint32_t symbol, VoProbabilityModelQuasiStatic& model)
    {
        checkOpen();
        std::uint32_t cumulative;
        std::uint32_t frequency;
        model.GetFrequencies(symbol, cumulative, frequency);
        m_range >>= model.GetTotalBits();
        m_low += m_range * cumulative;
        m_range *= frequency;
        normalize();
    }

    /// Codes the low `bitCount` bits (0 to 32; 0 codes nothing) of `value` at
    /// equal probability. Fields above 16 bits are coded as their high part,
    /// then their low 16 bits.
    void WriteRawBits(std::uint32_t value, std::uint32_t bitCount);

    /// Codes `count` bytes as 8-bit raw fields.
    void WriteRaw(const void* data, std::uint32_t count);

    /// The symbol channel: each codes its value as one symbol of the own model,
    /// as WriteSymbol(value, *GetModel()) does. A char is sign-extended and a
    /// 64-bit value reduced to its low 32 bits first. A value outside the
    /// model's alphabet (negative values included) throws
    /// BxExceptionPreconditionViolation.
    VoCompressRangeCoder& operator<<(char v) { return symbol(std::uint32_t(std::int32_t(v))); }
    /// Codes the byte's value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(unsigned char v) { return symbol(v); }
    /// Codes the value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(unsigned short v) { return symbol(v); }
    /// Codes the value's 32-bit pattern as one symbol of the own model.
    VoCompressRangeCoder& operator<<(int v) { return symbol(std::uint32_t(v)); }
    /// Codes the value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(unsigned int v) { return symbol(v); }
    /// Codes the low 32 bits of the 64-bit value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(long v) { return symbol(std::uint32_t(v)); }
    /// Codes the low 32 bits of the 64-bit value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(unsigned long v) { return symbol(std::uint32_t(v)); }
    /// Codes the low 32 bits of the value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(long long v) { return symbol(std::uint32_t(v)); }
    /// Codes the low 32 bits of the value as one symbol of the own model.
    VoCompressRangeCoder& operator<<(unsigned long long v) { return symbol(std::uint32_t(v)); }

    /// Finishes the message and hands it to the target; later calls do nothing.
    /// Throws what the target throws. Nothing may be coded afterwards.
    void Close() { flush(); }

    /// True once the message has gone to the target.
    bool IsClosed() const noexcept { return m_range == 0; }
    /// The coder's own model.
    const BxSmartPointer<VoProbabilityModelQuasiStatic>& GetModel() const noexcept { return m_model; }
    /// Coded bytes produced so far (the final 4 bytes of low come at Close).
    std::size_t GetCodedSize() const noexcept { return m_count; }

private:
    /// Codes each byte as an 8-bit raw field.
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

    VoCompressRangeCoder& symbol(std::uint32_t value)
    {
        WriteSymbol(value, *m_model);
        return *this;
    }

    /// Codes a field of at most 16 bits; `value` is already masked.
    void encodeRaw(std::uint32_t value, std::uint32_t bitCount)
    {
        m_range >>= bitCount;
        m_low += m_range * value;
        normalize();
    }

    /// Emits the settled top bytes of low. A range below 2^16 emits two bytes
    /// at once and lets the new range run to the end of the 32-bit interval.
    void normalize()
    {
        if (m_capacity - m_count < c_maxBytesPerItem)
            grow(c_maxBytesPerItem);
        std::uint8_t* out = m_output.get() + m_count;
        while ((m_low ^ (m_low + m_range)) < c_top) {
            *out++ = std::uint8_t(m_low >> 24);
            m_low <<= 8;
            m_range <<= 8;
        }
        if (m_range < c_bottom) {
            *out++ = std::uint8_t(m_low >> 24);
            m_low <<= 8;
            *out++ = std::uint8_t(m_low >> 24);
            m_low <<= 8;
            m_range = 0 - m_low;
        }
        m_count = static_cast<std::size_t>(out - m_output.get());
    }

    /// Appends the final low and writes the message to the target (once).
    void flush();
    /// low 0, range 0xFFFFFFFF, output empty.
    void reset();
    /// Makes room for `needed` more bytes, doubling the capacity.
    void grow(std::size_t needed);
    void checkOpen() const
    {
        if (m_range == 0)
            throwClosed();
    }
    [[noreturn]] static void throwClosed();

    static constexpr std::uint32_t c_top = 1u << 24;
    static constexpr std::uint32_t c_bottom = 1u << 16;
    // The low and range of an open coder satisfy low + range <= 2^32 and
    // range >= 1 after any item, so one normalisation emits at most 4 + 2 bytes.
    static constexpr std::size_t c_maxBytesPerItem = 8;

    BxSmartPointer<VoProbabilityModelQuasiStatic> m_model;
    std::uint32_t m_low = 0;
    std::uint32_t m_range = 0xFFFFFFFF;  // 0 once the message has been flushed
    std::unique_ptr<std::uint8_t[]> m_output;
    std::size_t m_count = 0;
    std::size_t m_capacity = 0;
    BxStreamWriteBinary& m_target;
};
