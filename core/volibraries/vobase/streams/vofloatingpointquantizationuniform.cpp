#include <vobase/streams/vofloatingpointquantizationuniform.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <bit>
#include <cmath>
#include <limits>

namespace {

constexpr const char* c_constructorName = "VoFloatingPointQuantizationUniform::VoFloatingPointQuantizationUniform";

// x if integral, else floor(x + 0.5): halves round towards +infinity. The sum
// is exact in double for every float.
double Round(float x)
{
    const double value = x;
    return std::floor(value) == value ? value : std::floor(value + 0.5);
}

std::int32_t QuantizedBound(float value, float scale)
{
    const double rounded = Round(value * scale);
    if (!(rounded >= std::numeric_limits<std::int32_t>::min() && rounded <= std::numeric_limits<std::int32_t>::max()))
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName, "a quantized bound exceeds 32 bits");
    return static_cast<std::int32_t>(rounded);
}

}  // namespace

VoFloatingPointQuantizationUniform::VoFloatingPointQuantizationUniform(float minimum, float maximum, float scale)
    : VoFloatingPointQuantization(1), m_scale(scale)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum) || !std::isfinite(scale) || !(scale > 0))
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName, "the bounds and a positive scale must be finite");
    if (minimum > maximum)
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName, "the minimum exceeds the maximum");
    m_quantizedMinimum = QuantizedBound(minimum, scale);
    m_quantizedRange = static_cast<std::uint32_t>(std::int64_t(QuantizedBound(maximum, scale)) - m_quantizedMinimum);
    m_bits = m_quantizedRange == 0 ? 1 : static_cast<std::uint32_t>(std::bit_width(m_quantizedRange));
}

unsigned int VoFloatingPointQuantizationUniform::Map(float value) const
{
    double code = Round(value * m_scale) - m_quantizedMinimum;
    if (std::isnan(code))
        return 0;
    // The upper bound first, then negatives become 0.
    if (code > m_quantizedRange)
        code = m_quantizedRange;
    if (code < 0)
        code = 0;
    return static_cast<unsigned int>(code);
}

float VoFloatingPointQuantizationUniform::Unmap(unsigned int code) const
{
    return static_cast<float>(std::int64_t(m_quantizedMinimum) + code) / m_scale;
}
