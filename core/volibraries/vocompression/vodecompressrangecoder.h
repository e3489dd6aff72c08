// Range decoder: the read stream that reverses VoCompressRangeCoder.
//
// The constructor reads the whole message from the source at once (version
// 0, u32 byte count N, N coded bytes) and never touches the source again.
// The reading sequence must mirror the writing sequence: the same symbols
// with models in the same state, raw fields of the same widths. No end
// marker is stored: reading one item too many either throws
// BxExceptionStream or yields garbage while coded bytes remain.
//
//   BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
//   VoDecompressRangeCoder decoder(in, 256);
//   char c; unsigned int u;
//   decoder >> c >> u;
//   std::uint32_t field = decoder.ReadRawBits(17);
//
// Any byte sequence at all, however damaged, decodes to some values or ends
// in BxExceptionStream; it never faults or loops without consuming input.
// Not thread-safe.
#pragma once

#include <vocompression/vocompressionapi.h>
#include <vocompression/voprobabilitymodelquasistatic.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamreadbinary.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Range decoder: the read stream that reverses VoCompressRangeCoder.
class VOCOMPRESSION_API VoDecompressRangeCoder : private BxStreamReadBinary
{
public:
    /// Reads the message from `source`; decodes the symbol channel with an own
    /// model of `numberOfSymbols` symbols (16 total bits, target rescale 1,024).
    /// Throws BxExceptionStream for a missing or short message and
    /// BxExceptionWrongFileVersion for a newer one.
    VoDecompressRangeCoder(BxStreamReadBinary& source, std::uint32_t numberOfSymbols);
    /// As above with `model` (shared, not reset) as the own model.
    VoDecompressRangeCoder(BxStreamReadBinary& source, BxSmartPointer<VoProbabilityModelQuasiStatic> model);

    VoDecompressRangeCoder(const VoDecompressRangeCoder&) = delete;
    VoDecompressRangeCoder& operator=(const VoDecompressRangeCoder&) = delete;

    /// Decodes one symbol with `model` (which it updates).
    std::uint32_t ReadSymbol(VoProbabilityModelQuasiStatic& model)
    {
        normalize();
        // normalize() leaves range >= 2^16 and b <= 16, so the divisor is at least 1.
        m_range >>= model.GetTotalBits();
        std::uint32_t value = (m_code - m_low) / m_range;
        std::uint32_t frequency;
        const std::uint32_t symbol = model.GetSymbol(value, frequency);
        m_low += m_range * value;
        m_range *= frequency;
        return symbol;
    }

    /// Decodes a raw field of `bitCount` bits (0 to 32; 0 decodes nothing and returns 0).
    std::uint32_t ReadRawBits(std::uint32_t bitCount);

    /// Decodes `count` bytes written as 8-bit raw fields.
    void ReadRaw(void* data, std::size_t count) { read(data, count); }

    /// The symbol channel: each decodes one symbol of the own model and stores
    /// it in the target type.
    VoDecompressRangeCoder& operator>>(char& v) { return symbol(v); }
    /// Decodes one symbol into a byte.
    VoDecompressRangeCoder& operator>>(unsigned char& v) { return symbol(v); }
    /// Decodes one symbol into a 16-bit value.
    VoDecompressRangeCoder& operator>>(unsigned short& v) { return symbol(v); }
    /// Decodes one symbol into an int.
    VoDecompressRangeCoder& operator>>(int& v) { return symbol(v); }
    /// Decodes one symbol.
    VoDecompressRangeCoder& operator>>(unsigned int& v) { return symbol(v); }
    /// Decodes one symbol into a 64-bit value.
    VoDecompressRangeCoder& operator>>(long& v) { return symbol(v); }
    /// Decodes one symbol into a 64-bit value.
    VoDecompressRangeCoder& operator>>(unsigned long& v) { return symbol(v); }
    /// Decodes one symbol into a 64-bit value.
    VoDecompressRangeCoder& operator>>(long long& v) { return symbol(v); }
    /// Decodes one symbol into a 64-bit value.
    VoDecompressRangeCoder& operator>>(unsigned long long& v) { return symbol(v); }

    /// The decoder's own model.
    const BxSmartPointer<VoProbabilityModelQuasiStatic>& GetModel() const noexcept { return m_model; }
    /// The size N of the coded message and how much of it has been consumed.
    std::size_t GetCodedSize() const noexcept { return m_input.size(); }
    /// Coded bytes consumed so far (the first 4 are taken at construction).
    std::size_t GetReadPosition() const noexcept { return static_cast<std::size_t>(m_readPosition); }

protected:
    /// Decodes `count` raw bytes; returns `count` or throws BxExceptionStream.
    std::size_t read(void* data, std::size_t count) override;

private:
    template <class T>
    VoDecompressRangeCoder& symbol(T& v)
    {
        v = static_cast<T>(ReadSymbol(*m_model));
        return *this;
    }

    /// Decodes a field of at most 16 bits.
    std::uint32_t decodeRaw(std::uint32_t bitCount)
    {
        normalize();
        m_range >>= bitCount;
        const std::uint32_t value = ((m_code - m_low) / m_range) & ((1u << bitCount) - 1);
        m_low += m_range * value;
        return value;
    }

    /// Mirrors the encoder's normalisation, shifting coded bytes into code.
    /// Afterwards range >= 2^16 whatever the bytes were: a range below 2^16
    /// reaches step 2 only with a non-zero low 16 bits of low (else the first
    /// loop would still run), so 0 - (low << 16) >= 2^16. A range of 0 keeps
    /// the loop consuming bytes until the message runs dry.
    void normalize()
    {
        while ((m_low ^ (m_low + m_range)) < c_top) {
            if (m_readPosition >= m_input.size())
                throwRunDry();
            m_code = (m_code << 8) + m_input[m_readPosition++];
            m_low <<= 8;
            m_range <<= 8;
        }
        if (m_range < c_bottom) {
            if (m_readPosition + 1 >= m_input.size())
                throwRunDry();
            m_code = (m_code << 16) + (std::uint32_t(m_input[m_readPosition]) << 8) + m_input[m_readPosition + 1];
            m_readPosition += 2;
            m_low <<= 16;
            m_range = 0 - m_low;
        }
    }

    /// Loads the whole message and the first 4 bytes of code.
    void initialize(BxStreamReadBinary& source);
    /// range 0xFFFFFFFF, low 0, code 0, no input.
    void reset();
    [[noreturn]] static void throwRunDry();

    static constexpr std::uint32_t c_top = 1u << 24;
    static constexpr std::uint32_t c_bottom = 1u << 16;

    BxSmartPointer<VoProbabilityModelQuasiStatic> m_model;
    std::uint32_t m_code = 0;
    std::uint32_t m_low = 0;
    std::uint32_t m_range = 0xFFFFFFFF;
    std::vector<std::uint8_t> m_input;
    std::uint64_t m_readPosition = 0;
};
