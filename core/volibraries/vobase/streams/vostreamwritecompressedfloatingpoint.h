// Compressed floating-point stream: quantizes each float to an integer code
// and codes that code with the predictive coder, against the code of a
// prediction the caller supplies.
//
//   const VoFloatingPointQuantizationUniform quantization(-10.0f, 10.0f, 1000.0f);  // steps of 0.001
//   BxStreamWriteBinaryBuffer out;
//   {
//       VoStreamWriteCompressedFloatingPoint coder(out, quantization, false, 1 << 16);
//       float previous = 0.0f;
//       for (float x : samples) {
//           coder.WriteValue(x, previous);
//           previous = quantization.Unmap(quantization.Map(x));   // what the reader will see
//       }
//   }
//
// The coding is lossy by the quantization: values read back are
// Unmap(Map(value)). Predicting from the quantized previous value, as above,
// keeps both sides using identical predictions.
//
// The block layout is that of VoStreamWritePredictiveCoder with version 0 and
// B = the quantization's bits. The quantization is borrowed and must outlive
// the stream. The flag is stored with the stream for the caller (GetFlag); it
// does not change the coded form.
//
// Default quantization: the constructor without one uses
// GetDefaultQuantization(), the uniform quantization of [-1, 1] at scale
// 32,767: 16-bit codes in steps of 1/32,767, as for normalised signals such
// as audio samples. Values outside [-1, 1] clamp to the bounds.
#pragma once

#include <vobase/streams/vofloatingpointquantization.h>
#include <vobase/streams/vofloatingpointquantizationuniform.h>
#include <vobase/streams/vostreamwritepredictivecoder.h>
#include <vobase/vobaseapi.h>

/// Compressed floating-point stream: quantizes each float to an integer code and codes that code with the
/// predictive coder, against the code of a prediction the caller supplies.
class VOBASE_API VoStreamWriteCompressedFloatingPoint : public VoStreamWritePredictiveCoder
{
public:
    /// Codes into `target` with `quantization` (borrowed); reserves `capacity` / 4 bytes.
    VoStreamWriteCompressedFloatingPoint(BxStreamWriteBinary& target, const VoFloatingPointQuantization& quantization,
                                         bool flag, unsigned int capacity);
    /// Codes into `target` with the default quantization (see above) and the flag false.
    VoStreamWriteCompressedFloatingPoint(BxStreamWriteBinary& target, unsigned int capacity);

    /// Codes Map(value) against the prediction Map(prediction).
    void WriteValue(float value, float prediction)
    {
        VoStreamWritePredictiveCoder::WriteValue(m_quantization->Map(value), m_quantization->Map(prediction));
    }

    /// The quantization in use.
    const VoFloatingPointQuantization& GetQuantization() const noexcept { return *m_quantization; }
    /// The flag given at construction.
    bool GetFlag() const noexcept { return m_flag; }

    /// The quantization of the constructors that take none: [-1, 1] at scale 32,767 (16 bits).
    static const VoFloatingPointQuantizationUniform& GetDefaultQuantization();

private:
    const VoFloatingPointQuantization* m_quantization;
    bool m_flag;
};
