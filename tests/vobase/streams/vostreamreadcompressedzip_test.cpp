#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadcompressedzip.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinarybuffer.h>

#include <zlib.h>

using namespace streamtest;

namespace {

// Reads from a block and counts how often it is asked.
class CCountingReader : public BxStreamReadBinary
{
public:
    explicit CCountingReader(const Bytes& bytes) : m_bytes(bytes) {}
    int calls = 0;

protected:
    std::size_t read(void* data, std::size_t count) override
    {
        ++calls;
        const std::size_t n = std::min(count, m_bytes.size() - m_at);
        std::memcpy(data, m_bytes.data() + m_at, n);
        m_at += n;
        return n;
    }

private:
    const Bytes& m_bytes;
    std::size_t m_at = 0;
};

Bytes zlibCompress(const Bytes& data, int level)
{
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    Bytes out(size);
    EXPECT_EQ(compress2(out.data(), &size, data.data(), static_cast<uLong>(data.size()), level), Z_OK);
    out.resize(size);
    return out;
}

}  // namespace

// Random data is stored, so compressed and inflated sizes match to a few bytes:
// the inner reads show how much the reader inflated.
TEST(VoStreamReadCompressedZIP, SmallReadsFillTheInflatedBuffer)
{
    const Bytes data = RandomBytes(20000);
    const Bytes z = zlibCompress(data, 1);
    CCountingReader inner(z);
    VoStreamReadCompressedZIP zip(inner);
    Bytes got(10);
    ASSERT_EQ(zip.ReadBuffer(got.data(), 10), 10u);
    EXPECT_EQ(inner.calls, 4);  // 3,072 inflated bytes need 3,079 compressed ones
    Bytes more(3062);
    ASSERT_EQ(zip.ReadBuffer(more.data(), more.size()), more.size());
    EXPECT_EQ(inner.calls, 4);  // served from the buffer
    got.insert(got.end(), more.begin(), more.end());
    EXPECT_TRUE(std::equal(got.begin(), got.end(), data.begin()));
}

TEST(VoStreamReadCompressedZIP, LargeReadsBypassTheBuffer)
{
    const Bytes data = RandomBytes(20000);
    const Bytes z = zlibCompress(data, 1);
    CCountingReader inner(z);
    VoStreamReadCompressedZIP zip(inner);
    Bytes got(2000);
    ASSERT_EQ(zip.ReadBuffer(got.data(), got.size()), got.size());
    EXPECT_EQ(inner.calls, 2);  // only what 2,000 bytes need
    Bytes rest(30000);
    rest.resize(zip.ReadBuffer(rest.data(), rest.size()));
    got.insert(got.end(), rest.begin(), rest.end());
    EXPECT_EQ(got, data);
}

TEST(VoStreamReadCompressedZIP, MixedReadSizesReturnEveryByteOnce)
{
    const Bytes data = TextLike(300000);
    const Bytes z = zlibCompress(data, 6);
    BxStreamReadBinaryBuffer inner(z.data(), z.size());
    VoStreamReadCompressedZIP zip(inner);
    Bytes got;
    std::mt19937 random(5);
    for (;;) {
        const std::size_t want = random() % 4 == 0 ? random() % 5000 : random() % 40;
        Bytes block(want);
        const std::size_t n = zip.ReadBuffer(block.data(), want);
        got.insert(got.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(n));
        if (n < want)
            break;
    }
    EXPECT_EQ(got, data);
}

TEST(VoStreamReadCompressedZIP, DamagedInputEndsInAShortRead)
{
    const Bytes data = TextLike(100000);
    Bytes z = zlibCompress(data, 6);
    z.resize(z.size() / 2);
    BxStreamReadBinaryBuffer truncated(z.data(), z.size());
    VoStreamReadCompressedZIP zip(truncated);
    Bytes got(data.size());
    const std::size_t n = zip.ReadBuffer(got.data(), got.size());
    EXPECT_LT(n, data.size());
    EXPECT_TRUE(std::equal(got.begin(), got.begin() + static_cast<std::ptrdiff_t>(n), data.begin()));
    int v;
    EXPECT_THROW(zip >> v, BxExceptionStream);

    const Bytes garbage = RandomBytes(5000);
    BxStreamReadBinaryBuffer noise(garbage.data(), garbage.size());
    VoStreamReadCompressedZIP bad(noise);
    EXPECT_EQ(bad.ReadBuffer(got.data(), got.size()), 0u);
}
