#include <vobase/streams/vostreamreadcompressedfloatingpoint.h>
#include <vobase/streams/vostreamwritecompressedfloatingpoint.h>

VoStreamReadCompressedFloatingPoint::VoStreamReadCompressedFloatingPoint(
    BxStreamReadBinary& source, const VoFloatingPointQuantization& quantization, bool flag)
    : VoStreamReadPredictiveCoder(source, quantization.GetBits(), 0), m_quantization(&quantization), m_flag(flag)
{
    initialize();
}

VoStreamReadCompressedFloatingPoint::VoStreamReadCompressedFloatingPoint(BxStreamReadBinary& source)
    : VoStreamReadCompressedFloatingPoint(source, VoStreamWriteCompressedFloatingPoint::GetDefaultQuantization(),
                                          false)
{
}
