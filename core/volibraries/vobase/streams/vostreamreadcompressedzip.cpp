#include <vobase/streams/vostreamreadcompressedzip.h>

#include <bxbase/bxexceptionstream.h>

#include <algorithm>
#include <cstring>
#include <zlib.h>

VoStreamReadCompressedZIP::VoStreamReadCompressedZIP(BxStreamReadBinary& inner) : VoStreamFilter(inner)
{
    init();
}

VoStreamReadCompressedZIP::VoStreamReadCompressedZIP(std::unique_ptr<BxStreamReadBinary> inner)
    : VoStreamFilter(std::move(inner))
{
    init();
}

VoStreamReadCompressedZIP::~VoStreamReadCompressedZIP()
{
    inflateEnd(m_stream.get());
}

void VoStreamReadCompressedZIP::init()
{
    m_stream = std::make_unique<z_stream_s>();  // value-initialised: no input, default allocators
    if (inflateInit_(m_stream.get(), ZLIB_VERSION, static_cast<int>(sizeof(z_stream))) != Z_OK) {
        m_stream.reset();
        BX_THROW(BxExceptionStream, "VoStreamReadCompressedZIP::init", "zlib cannot start inflating");
    }
    // inflate's results are not looked at, so the trailing Adler-32 check could
    // change nothing that a caller sees: skip computing it.
    inflateValidate(m_stream.get(), 0);
}

std::size_t VoStreamReadCompressedZIP::read(void* data, std::size_t count)
{
    auto* out = static_cast<unsigned char*>(data);
    std::size_t done = copyFromInflatedBuffer(out, count);
    if (done == count)
        return done;
    const std::size_t rest = count - done;
    if (rest < c_DirectLimit) {
        const std::size_t inflated = inflateToBuffer(m_inflated, c_InflatedSize);
        setGetArea(reinterpret_cast<const std::byte*>(m_inflated),
                   reinterpret_cast<const std::byte*>(m_inflated + inflated));
        done += copyFromInflatedBuffer(out + done, rest);
    } else {
        done += inflateToBuffer(out + done, rest);
    }
    return done;
}

std::size_t VoStreamReadCompressedZIP::copyFromInflatedBuffer(void* out, std::size_t size)
{
    const std::size_t n = std::min(size, getAreaSize());
    if (n) {
        const std::byte* next = getPointer();
        std::memcpy(out, next, n);
        setGetArea(next + n, next + getAreaSize());
    }
    return n;
}

std::size_t VoStreamReadCompressedZIP::inflateToBuffer(void* out, std::size_t size)
{
    z_stream& z = *m_stream;
    // zlib counts output in 32-bit units: larger requests are served in part.
    size = std::min<std::size_t>(size, 1u << 30);
    // With a maximum, inflate at most one byte beyond it: enough to tell that
    // the data goes on, never much more than allowed.
    if (m_maximumSize)
        size = std::min<std::uint64_t>(size, m_maximumSize - std::min<std::uint64_t>(z.total_out, m_maximumSize) + 1);
    z.next_out = static_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(size);
    inflate(&z, m_endOfInput ? Z_FINISH : Z_NO_FLUSH);
    while (z.avail_out > 0 && !m_endOfInput) {
        const std::size_t got = m_inner->ReadBuffer(m_input, c_InputSize);
        if (got < c_InputSize)
            m_endOfInput = 1;
        z.next_in = m_input;
        z.avail_in = static_cast<uInt>(got);
        inflate(&z, m_endOfInput ? Z_FINISH : Z_NO_FLUSH);
    }
    if (m_maximumSize && z.total_out > m_maximumSize)
        BX_THROW(BxExceptionStream, "VoStreamReadCompressedZIP::read",
                 "the data inflates to more than the maximum of " + std::to_string(m_maximumSize) + " bytes");
    return size - z.avail_out;
}
