#include <vobase/streams/vostreamreadpredictivecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

VoStreamReadPredictiveCoder::VoStreamReadPredictiveCoder(BxStreamReadBinary& source, std::uint32_t bits)
    : VoStreamReadPredictiveCoder(source, bits, 0)
{
    initialize();
}

VoStreamReadPredictiveCoder::VoStreamReadPredictiveCoder(BxStreamReadBinary& source, std::uint32_t bits,
                                                         std::uint32_t version)
    : VoStreamFilter(source), m_bits(bits), m_version(version)
{
    if (bits < 1 || bits > 32)
        BX_THROW(BxExceptionPreconditionViolation, "VoStreamReadPredictiveCoder::VoStreamReadPredictiveCoder",
                 "the values must have 1 to 32 bits");
}

void VoStreamReadPredictiveCoder::initialize()
{
    BxStreamReadBinary& source = GetInnerStream();
    source.ReadAndCompareVersion(m_version);
    m_decoder = std::make_unique<VoDecompressRangeCoder>(source, 2 * m_bits + 1);
}

std::size_t VoStreamReadPredictiveCoder::read(void* data, std::size_t count)
{
    if (!m_decoder)
        throwNotInitialized();
    m_decoder->ReadRaw(data, count);
    return count;
}

void VoStreamReadPredictiveCoder::throwNotInitialized()
{
    BX_THROW(BxExceptionPreconditionViolation, "VoStreamReadPredictiveCoder::ReadValue",
             "the reader has not been initialized");
}
