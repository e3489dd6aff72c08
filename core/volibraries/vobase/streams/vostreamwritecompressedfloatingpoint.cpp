#include <vobase/streams/vostreamwritecompressedfloatingpoint.h>

VoStreamWriteCompressedFloatingPoint::VoStreamWriteCompressedFloatingPoint(
    BxStreamWriteBinary& target, const VoFloatingPointQuantization& quantization, bool flag, unsigned int capacity)
    : VoStreamWritePredictiveCoder(target, quantization.GetBits(), capacity, 0),
      m_quantization(&quantization),
      m_flag(flag)
{
}

VoStreamWriteCompressedFloatingPoint::VoStreamWriteCompressedFloatingPoint(BxStreamWriteBinary& target,
                                                                           unsigned int capacity)
    : VoStreamWriteCompressedFloatingPoint(target, GetDefaultQuantization(), false, capacity)
{
}

const VoFloatingPointQuantizationUniform& VoStreamWriteCompressedFloatingPoint::GetDefaultQuantization()
{
    static const VoFloatingPointQuantizationUniform quantization(-1.0f, 1.0f, 32767.0f);
    return quantization;
}
