#include <vocompression/vodecompressrangecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>

#include <algorithm>

namespace {

constexpr std::uint32_t c_ownTotalBits = 16;
constexpr std::uint32_t c_ownTargetRescale = 1024;
constexpr const char* c_initializeName = "VoDecompressRangeCoder::initialize";

// The input grows by at most this much ahead of the bytes that actually
// arrived, so a damaged byte count cannot allocate more than the source holds.
constexpr std::size_t c_readStep = std::size_t(1) << 20;

}  // namespace

VoDecompressRangeCoder::VoDecompressRangeCoder(BxStreamReadBinary& source, std::uint32_t numberOfSymbols)
    : VoDecompressRangeCoder(source, BxSmartPointer<VoProbabilityModelQuasiStatic>(new VoProbabilityModelQuasiStatic(
                                         numberOfSymbols, c_ownTotalBits, c_ownTargetRescale)))
{
}

VoDecompressRangeCoder::VoDecompressRangeCoder(BxStreamReadBinary& source,
                                               BxSmartPointer<VoProbabilityModelQuasiStatic> model)
    : m_model(std::move(model))
{
    if (!m_model)
        BX_THROW(BxExceptionPreconditionViolation, "VoDecompressRangeCoder::VoDecompressRangeCoder",
                 "the model is null");
    reset();
    initialize(source);
}

void VoDecompressRangeCoder::reset()
{
    m_range = 0xFFFFFFFF;
    m_low = 0;
    m_code = 0;
    m_input.clear();
    m_readPosition = 0;
}

void VoDecompressRangeCoder::initialize(BxStreamReadBinary& source)
{
    reset();
    try {
        source.ReadAndCompareVersion(0);
    } catch (const BxExceptionStream&) {
        BX_THROW(BxExceptionStream, c_initializeName, "the coded message is missing");
    }
    std::uint32_t count = 0;
    if (source.ReadBuffer(&count, sizeof count) != sizeof count)
        BX_THROW(BxExceptionStream, c_initializeName, "the coded message has no byte count");
    std::size_t arrived = 0;
    while (arrived < count) {
        const std::size_t step = std::min<std::size_t>(count - arrived, c_readStep);
        m_input.resize(arrived + step);
        const std::size_t got = source.ReadBuffer(m_input.data() + arrived, step);
        arrived += got;
        if (got != step)
            break;
    }
    if (count < 4 || arrived < count)
        BX_THROW(BxExceptionStream, c_initializeName,
                 "the coded message is too short: " + std::to_string(arrived) + " of " + std::to_string(count) +
                     " bytes (at least 4)");
    for (int i = 0; i < 4; ++i)
        m_code = (m_code << 8) + m_input[i];
    m_readPosition = 4;
}

std::uint32_t VoDecompressRangeCoder::ReadRawBits(std::uint32_t bitCount)
{
    if (bitCount > 32)
        BX_THROW(BxExceptionPreconditionViolation, "VoDecompressRangeCoder::ReadRawBits",
                 "a raw field has at most 32 bits");
    if (bitCount == 0)
        return 0;
    if (bitCount <= 16)
        return decodeRaw(bitCount);
    const std::uint32_t high = decodeRaw(bitCount - 16);
    return (high << 16) + decodeRaw(16);
}

std::size_t VoDecompressRangeCoder::read(void* data, std::size_t count)
{
    auto* bytes = static_cast<std::uint8_t*>(data);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = std::uint8_t(decodeRaw(8));
    return count;
}

void VoDecompressRangeCoder::throwRunDry()
{
    BX_THROW(BxExceptionStream, "VoDecompressRangeCoder::normalize", "the coded message has run dry");
}
