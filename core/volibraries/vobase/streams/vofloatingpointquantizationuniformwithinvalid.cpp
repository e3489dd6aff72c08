#include <vobase/streams/vofloatingpointquantizationuniformwithinvalid.h>

#include <cmath>

VoFloatingPointQuantizationUniformWithInvalid::VoFloatingPointQuantizationUniformWithInvalid(float minimum,
                                                                                             float maximum,
                                                                                             float scale,
                                                                                             float invalid)
    : VoFloatingPointQuantizationUniform(minimum, maximum, scale), m_invalidValue(invalid), m_invalidCode(0)
{
    const std::uint32_t range = GetMaxValue();
    if (m_bits == 32 && range >= 0xFFFFFFFF) {
        m_invalidCode = VoFloatingPointQuantizationUniform::Map(invalid);
        return;
    }
    if (std::uint64_t(range) == (std::uint64_t(1) << m_bits) - 1)
        ++m_bits;
    m_invalidCode = static_cast<std::uint32_t>((std::uint64_t(1) << m_bits) - 1);
}

bool VoFloatingPointQuantizationUniformWithInvalid::isInvalid(float value) const noexcept
{
    return value == m_invalidValue || (std::isnan(value) && std::isnan(m_invalidValue));
}

unsigned int VoFloatingPointQuantizationUniformWithInvalid::Map(float value) const
{
    return isInvalid(value) ? m_invalidCode : VoFloatingPointQuantizationUniform::Map(value);
}

float VoFloatingPointQuantizationUniformWithInvalid::Unmap(unsigned int code) const
{
    return code == m_invalidCode ? m_invalidValue : VoFloatingPointQuantizationUniform::Unmap(code);
}
