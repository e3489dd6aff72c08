// Uniform quantization: a float x gets the code round(x * scale) - round(minimum * scale),
// clamped to 0 .. round(maximum * scale) - round(minimum * scale).
//
//   VoFloatingPointQuantizationUniform quantization(0.0f, 1.0f, 255.0f);
//   quantization.Map(0.5f);     // round(127.5) = 128: halves round up
//   quantization.Map(7.0f);     // 255: out-of-range values clamp to the nearest bound
//   quantization.Unmap(128);    // 128 / 255.0f
//   quantization.GetBits();     // 8
//
// round(x) is x when x is integral and floor(x + 0.5) otherwise. Products are
// taken in float; a NaN maps to 0 and infinities to the nearest bound.
#pragma once

#include <vobase/streams/vofloatingpointquantization.h>
#include <vobase/vobaseapi.h>

#include <cstdint>

/// Uniform quantization: a float x gets the code round(x * scale) - round(minimum * scale), clamped to 0 ..
class VOBASE_API VoFloatingPointQuantizationUniform : public VoFloatingPointQuantization
{
public:
    /// Codes [minimum, maximum] in steps of 1 / scale. Throws
    /// BxExceptionPreconditionViolation unless all three are finite, scale > 0,
    /// minimum <= maximum and both quantized bounds fit a 32-bit signed integer.
    VoFloatingPointQuantizationUniform(float minimum, float maximum, float scale);

    unsigned int Map(float value) const override;
    float Unmap(unsigned int code) const override;

    /// The quantized minimum round(minimum * scale), the value of code 0.
    int GetMinValue() const noexcept { return m_quantizedMinimum; }
    /// The quantized range: the largest code Map returns.
    unsigned int GetMaxValue() const noexcept { return m_quantizedRange; }
    /// The scale: codes per unit.
    float GetScale() const noexcept { return m_scale; }

private:
    float m_scale;
    std::int32_t m_quantizedMinimum;
    std::uint32_t m_quantizedRange;
};
