// Abstract mapping between floats and unsigned integer codes of a fixed width,
// used by the compressed floating-point streams.
//
//   const VoFloatingPointQuantizationUniform quantization(0.0f, 1.0f, 255.0f);
//   unsigned int code = quantization.Map(0.5f);     // 128
//   float back = quantization.Unmap(code);          // 0.50196
//   std::uint32_t width = quantization.GetBits();   // 8
//
// Implementations are immutable after construction, so one object may serve
// any number of streams and threads.
#pragma once

#include <vobase/vobaseapi.h>

#include <cstdint>

/// Abstract mapping between floats and unsigned integer codes of a fixed width, used by the compressed floating-
/// point streams.
class VOBASE_API VoFloatingPointQuantization
{
public:
    virtual ~VoFloatingPointQuantization() = default;

    /// The code of `value`: at most GetBits() bits wide.
    virtual unsigned int Map(float value) const = 0;
    /// The value a code stands for.
    virtual float Unmap(unsigned int code) const = 0;

    /// The number of bits a code needs (1 to 32).
    std::uint32_t GetBits() const noexcept { return m_bits; }

protected:
    /// A mapping whose codes are `bits` wide; a derived constructor may set
    /// m_bits again once it knows the width.
    explicit VoFloatingPointQuantization(std::uint32_t bits) : m_bits(bits) {}
    /// Copies the code width (derived classes copy their own parameters).
    VoFloatingPointQuantization(const VoFloatingPointQuantization&) = default;
    /// Takes over the code width of `other`.
    VoFloatingPointQuantization& operator=(const VoFloatingPointQuantization&) = default;

    /// The width of the codes in bits (1 to 32), returned by GetBits; set only
    /// during construction.
    std::uint32_t m_bits;
};
