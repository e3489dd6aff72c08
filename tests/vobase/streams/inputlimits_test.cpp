// Limits on what declared sizes in the input may make a reader do: a length
// the data cannot back is refused at once, and decompressing readers stop at
// the maximum size they are given.
#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadbinarymemoryfile.h>
#include <vobase/streams/vostreamreadcompressedzip.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritecompressedzip.h>
#include <vobase/streams/vostreamcompressionheader.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/iserializable.h>

#include <cstring>

using namespace streamtest;

namespace {

// 100 bytes: a u32 length of 0xFFFFFFFF, then 96 bytes of text.
Bytes hugeLengthIn100Bytes()
{
    Bytes bytes(100, 'x');
    const std::uint32_t length = 0xFFFFFFFFu;
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

// A reader that cannot tell how much is left: strings grow as bytes arrive.
class CTrickleReader : public BxStreamReadBinary
{
public:
    explicit CTrickleReader(const Bytes& bytes) : m_bytes(bytes) {}
    std::size_t delivered = 0;

protected:
    std::size_t read(void* data, std::size_t count) override
    {
        const std::size_t n = std::min(count, m_bytes.size() - delivered);
        std::memcpy(data, m_bytes.data() + delivered, n);
        delivered += n;
        return n;
    }

private:
    const Bytes& m_bytes;
};

Bytes zipOf(const Bytes& payload)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWriteCompressedZIP zip(out, VoStreamWriteBinaryFile::eCL_Default);
        zip.WriteBuffer(payload.data(), payload.size());
    }
    const auto* data = reinterpret_cast<const unsigned char*>(out.GetData());
    return Bytes(data, data + out.GetCount());
}

}  // namespace

TEST(InputLimits, AFourGigabyteStringLengthInAHundredBytesThrowsAtOnce)
{
    const Bytes bytes = hugeLengthIn100Bytes();
    {
        BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
        std::string text;
        EXPECT_THROW(in >> text, BxExceptionStream);
        EXPECT_EQ(in.GetPosition(), 4u);  // refused on the length, before reading or allocating
        EXPECT_TRUE(text.empty());
    }
    {
        BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
        std::wstring text;
        EXPECT_THROW(in >> text, BxExceptionStream);
        EXPECT_EQ(in.GetPosition(), 4u);
    }
    {
        VoStreamReadBinaryMemoryFile in(bytes.data(), bytes.size());
        std::string text;
        EXPECT_THROW(in >> text, BxExceptionStream);
    }
    {
        BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());  // a chunk's class name
        EXPECT_THROW(in.ReadChunk(), BxExceptionStream);
        EXPECT_EQ(in.GetPosition(), 4u);
    }
    // without a known remaining size the string grows only with the data
    CTrickleReader trickle(bytes);
    std::string text;
    EXPECT_THROW(trickle >> text, BxExceptionStream);
    EXPECT_EQ(trickle.delivered, bytes.size());
    EXPECT_LE(text.capacity(), std::size_t(2) << 20);
}

TEST(InputLimits, ZipReadersStopAtTheirMaximumSize)
{
    const Bytes payload = TextLike(20000, 3);
    const Bytes packed = zipOf(payload);
    ASSERT_LT(packed.size(), payload.size() / 2);

    const auto readAll = [&](std::uint64_t maximum) {
        BxStreamReadBinaryBuffer inner(packed.data(), packed.size());
        VoStreamReadCompressedZIP zip(inner);
        EXPECT_EQ(zip.GetMaximumSize(), 0u);  // no limit by default
        zip.SetMaximumSize(maximum);
        Bytes back(payload.size() + 100);
        return Bytes(back.begin(), back.begin() + static_cast<std::ptrdiff_t>(zip.ReadBuffer(back.data(), back.size())));
    };
    EXPECT_EQ(readAll(0), payload);
    EXPECT_EQ(readAll(payload.size()), payload);  // exactly at the maximum
    try {
        readAll(payload.size() - 1);
        ADD_FAILURE() << "inflated beyond the maximum";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamReadCompressedZIP::read");
    }
    // small typed reads through the buffer stop as well
    {
        BxStreamReadBinaryBuffer inner(packed.data(), packed.size());
        VoStreamReadCompressedZIP zip(inner);
        zip.SetMaximumSize(1000);
        EXPECT_THROW(
            {
                for (int i = 0; i < 20000; ++i) {
                    char c;
                    zip >> c;
                }
            },
            BxExceptionStream);
    }

    // an archive in memory hands the maximum to its ZIP reader
    BxStreamWriteBinaryBuffer archive;
    unsigned char header[VoStreamCompressionHeader::c_HeaderSize];
    VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_ZIP).Serialize(header);
    archive.WriteBuffer(header, sizeof header);
    archive.WriteBuffer(packed.data(), packed.size());
    VoStreamReadBinaryMemoryFile in(archive.GetData(), archive.GetCount());
    in.SetMaximumSize(100);
    Bytes back(200);
    EXPECT_THROW(in.ReadBuffer(back.data(), back.size()), BxExceptionStream);
}
