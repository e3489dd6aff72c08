// Uniform quantization with one code reserved for an "invalid" marker value
// (a missing sample, a masked pixel).
//
//   VoFloatingPointQuantizationUniformWithInvalid quantization(0.0f, 1.0f, 255.0f, -1.0f);
//   quantization.GetBits();      // 9: the 256 codes 0..255 are all in use, so the width grows
//   quantization.Map(-1.0f);     // 511, the invalid code
//   quantization.Unmap(511);     // -1.0f
//   quantization.Map(-0.5f);     // 0: any other value maps uniformly
//
// The invalid code is the largest code of the width, 2^bits - 1; the width
// grows by one bit when the uniform codes already fill it. With a 32-bit
// range of 2^32 - 1 there is no spare code and the invalid value simply maps
// uniformly. A NaN invalid value stands for every NaN.
#pragma once

#include <vobase/streams/vofloatingpointquantizationuniform.h>
#include <vobase/vobaseapi.h>

#include <cstdint>

/// Uniform quantization with one code reserved for an "invalid" marker value (a missing sample, a masked pixel).
class VOBASE_API VoFloatingPointQuantizationUniformWithInvalid : public VoFloatingPointQuantizationUniform
{
public:
    /// As the uniform quantization of [minimum, maximum] at `scale`, with `invalid` as the marker.
    VoFloatingPointQuantizationUniformWithInvalid(float minimum, float maximum, float scale, float invalid);

    /// The invalid code for the invalid value, else the uniform code.
    unsigned int Map(float value) const override;
    /// The invalid value for the invalid code, else the uniform value.
    float Unmap(unsigned int code) const override;

    /// The marker value given at construction.
    float GetInvalidValue() const noexcept { return m_invalidValue; }
    /// The code reserved for the marker.
    unsigned int GetInvalidCode() const noexcept { return m_invalidCode; }

private:
    bool isInvalid(float value) const noexcept;

    float m_invalidValue;
    std::uint32_t m_invalidCode;
};
