#include <vocompression/vocompressrangecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>

#include <cstring>
#include <limits>

namespace {

constexpr std::uint32_t c_ownTotalBits = 16;
constexpr std::uint32_t c_ownTargetRescale = 1024;

}  // namespace

VoCompressRangeCoder::VoCompressRangeCoder(BxStreamWriteBinary& target, std::uint32_t numberOfSymbols,
                                           std::uint32_t initialCapacity)
    : VoCompressRangeCoder(target,
                           BxSmartPointer<VoProbabilityModelQuasiStatic>(
                               new VoProbabilityModelQuasiStatic(numberOfSymbols, c_ownTotalBits, c_ownTargetRescale)),
                           initialCapacity)
{
    // The model is new and therefore already reset.
}

VoCompressRangeCoder::VoCompressRangeCoder(BxStreamWriteBinary& target,
                                           BxSmartPointer<VoProbabilityModelQuasiStatic> model,
                                           std::uint32_t initialCapacity)
    : m_model(std::move(model)), m_target(target)
{
    if (!m_model)
        BX_THROW(BxExceptionPreconditionViolation, "VoCompressRangeCoder::VoCompressRangeCoder", "the model is null");
    if (initialCapacity) {
        m_output = std::make_unique_for_overwrite<std::uint8_t[]>(initialCapacity);
        m_capacity = initialCapacity;
    }
    reset();
}

VoCompressRangeCoder::~VoCompressRangeCoder()
{
    try {
        flush();
    } catch (...) {
        // A destructor must not throw; Close() reports the target's failure.
    }
}

void VoCompressRangeCoder::reset()
{
    m_low = 0;
    m_range = 0xFFFFFFFF;
    m_count = 0;
}

void VoCompressRangeCoder::WriteRawBits(std::uint32_t value, std::uint32_t bitCount)
{
    checkOpen();
    if (bitCount > 32)
        BX_THROW(BxExceptionPreconditionViolation, "VoCompressRangeCoder::WriteRawBits",
                 "a raw field has at most 32 bits");
    if (bitCount == 0)
        return;
    if (bitCount <= 16) {
        encodeRaw(value & ((1u << bitCount) - 1), bitCount);
        return;
    }
    const std::uint32_t highBits = bitCount - 16;
    encodeRaw((value >> 16) & ((1u << highBits) - 1), highBits);
    encodeRaw(value & 0xFFFF, 16);
}

void VoCompressRangeCoder::WriteRaw(const void* data, std::uint32_t count)
{
    write(data, count);
}

BxStreamWriteBinary& VoCompressRangeCoder::write(const void* data, std::size_t count)
{
    checkOpen();
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    for (std::size_t i = 0; i < count; ++i)
        encodeRaw(bytes[i], 8);
    return *this;
}

void VoCompressRangeCoder::flush()
{
    if (m_range == 0)
        return;
    grow(4);
    for (int shift = 24; shift >= 0; shift -= 8)
        m_output[m_count++] = std::uint8_t(m_low >> shift);
    // Marked flushed before the target is involved, so that a failing target
    // is not handed a second, longer message by the destructor.
    m_range = 0;
    if (m_count > std::numeric_limits<std::uint32_t>::max())
        BX_THROW(BxExceptionStream, "VoCompressRangeCoder::flush", "the coded message exceeds 4 GiB");
    m_target.WriteVersion(0);
    m_target << std::uint32_t(m_count);
    m_target.WriteBuffer(m_output.get(), m_count);
}

void VoCompressRangeCoder::grow(std::size_t needed)
{
    if (m_capacity - m_count >= needed)
        return;
    std::size_t capacity = m_capacity ? m_capacity : 1;  // the first allocation is 1 byte
    while (capacity - m_count < needed)
        capacity *= 2;
    auto output = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    if (m_count)
        std::memcpy(output.get(), m_output.get(), m_count);
    m_output = std::move(output);
    m_capacity = capacity;
}

void VoCompressRangeCoder::throwClosed()
{
    BX_THROW(BxExceptionPreconditionViolation, "VoCompressRangeCoder::write", "the coder has already been closed");
}
