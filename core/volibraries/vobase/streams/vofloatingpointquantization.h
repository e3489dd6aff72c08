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
    explicit VoFloatingPointQuantization(std::uint32_t bits) : m_bits(bits) {}
    VoFloatingPointQuantization(const VoFloatingPointQuantization&) = default;
    VoFloatingPointQuantization& operator=(const VoFloatingPointQuantization&) = default;

    std::uint32_t m_bits;
};
