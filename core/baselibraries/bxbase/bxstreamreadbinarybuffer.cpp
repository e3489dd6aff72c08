#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinarybuffer.h>

BxStreamReadBinaryBuffer::BxStreamReadBinaryBuffer(const void* data, std::size_t size)
    : m_begin(static_cast<const std::byte*>(data)), m_size(data ? size : 0)
{
    setGetArea(m_begin, m_begin + m_size);
}

void BxStreamReadBinaryBuffer::SetPosition(std::size_t position)
{
    if (position > m_size)
        throw BxExceptionPreconditionViolation(__FILE__, __LINE__, "BxStreamReadBinaryBuffer::SetPosition",
                                               "position beyond the end of the block");
    setGetArea(m_begin + position, m_begin + m_size);
}

std::size_t BxStreamReadBinaryBuffer::read(void*, std::size_t)
{
    // The whole block is the get area: once it is used up, the data has ended.
    return 0;
}

void BxStreamReadBinaryBuffer::endOfData(std::size_t size)
{
    // ReadExactly throws here, since read() adds nothing to the block.
    std::byte value[sizeof(long double)];
    ReadExactly(value, size, "BxStreamReadBinary::operator >>");
    throw BxExceptionStream(__FILE__, __LINE__, "BxStreamReadBinary::operator >>", "unexpected end of data");
}
