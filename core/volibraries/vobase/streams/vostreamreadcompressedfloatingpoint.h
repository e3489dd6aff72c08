// Compressed floating-point reader: the read stream that reverses
// VoStreamWriteCompressedFloatingPoint. It must use the same quantization as
// the writer (the default one, [-1, 1] at scale 32,767, for the constructor
// without one) and be given the same predictions.
//
//   BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
//   VoStreamReadCompressedFloatingPoint decoder(in, quantization, false);
//   float previous = 0.0f;
//   for (float& x : samples)
//       previous = x = decoder.ReadValue(previous);
//
// The quantization is borrowed and must outlive the stream; the flag is only
// stored (GetFlag). Damaged input yields wrong values or BxExceptionStream.
#pragma once

#include <vobase/streams/vofloatingpointquantization.h>
#include <vobase/streams/vostreamreadpredictivecoder.h>
#include <vobase/vobaseapi.h>

/// Compressed floating-point reader: the read stream that reverses VoStreamWriteCompressedFloatingPoint.
class VOBASE_API VoStreamReadCompressedFloatingPoint : public VoStreamReadPredictiveCoder
{
public:
    /// Reads a block from `source` coded with `quantization` (borrowed).
    VoStreamReadCompressedFloatingPoint(BxStreamReadBinary& source, const VoFloatingPointQuantization& quantization,
                                        bool flag);
    /// Reads a block coded with the default quantization; the flag is false.
    explicit VoStreamReadCompressedFloatingPoint(BxStreamReadBinary& source);

    /// Unmap(the predictive value decoded against Map(prediction)).
    float ReadValue(float prediction)
    {
        return m_quantization->Unmap(VoStreamReadPredictiveCoder::ReadValue(m_quantization->Map(prediction)));
    }

    /// The quantization in use.
    const VoFloatingPointQuantization& GetQuantization() const noexcept { return *m_quantization; }
    /// The flag given at construction.
    bool GetFlag() const noexcept { return m_flag; }

private:
    const VoFloatingPointQuantization* m_quantization;
    bool m_flag;
};
