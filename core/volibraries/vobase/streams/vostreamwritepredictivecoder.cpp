#include <vobase/streams/vostreamwritepredictivecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>

VoStreamWritePredictiveCoder::VoStreamWritePredictiveCoder(BxStreamWriteBinary& target, std::uint32_t bits,
                                                           std::uint32_t capacity)
    : VoStreamWritePredictiveCoder(target, bits, capacity, 0)
{
}

VoStreamWritePredictiveCoder::VoStreamWritePredictiveCoder(BxStreamWriteBinary& target, std::uint32_t bits,
                                                           std::uint32_t capacity, std::uint32_t version)
    : VoStreamFilter(target), m_bits(bits), m_version(version)
{
    if (bits < 1 || bits > 32)
        BX_THROW(BxExceptionPreconditionViolation, "VoStreamWritePredictiveCoder::VoStreamWritePredictiveCoder",
                 "the values must have 1 to 32 bits");
    m_coder = std::make_unique<VoCompressRangeCoder>(target, 2 * bits + 1, capacity >> 2);
}

VoStreamWritePredictiveCoder::~VoStreamWritePredictiveCoder()
{
    try {
        Close();
    } catch (...) {
        // A destructor must not throw; Close() reports the target's failure.
    }
}

void VoStreamWritePredictiveCoder::Close()
{
    if (m_closed)
        return;
    m_closed = true;
    // The version goes first: the coder holds its whole message until it is closed.
    GetInnerStream().WriteVersion(m_version);
    m_coder->Close();
}

BxStreamWriteBinary& VoStreamWritePredictiveCoder::write(const void* data, std::size_t count)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    for (std::size_t done = 0; done < count;) {
        const std::size_t step = std::min<std::size_t>(count - done, 0xFFFFFFFF);
        m_coder->WriteRaw(bytes + done, static_cast<std::uint32_t>(step));
        done += step;
    }
    return *this;
}
