#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxvalue.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::vector<unsigned char> bytes(const BxStreamWriteBinaryBuffer& out)
{
    const auto* p = reinterpret_cast<const unsigned char*>(out.GetData());
    return std::vector<unsigned char>(p, p + out.GetCount());
}

// A reader that knows nothing of its remaining size and hands out one byte
// per call: the slow path of every typed read.
class CTrickleReader : public BxStreamReadBinary
{
public:
    explicit CTrickleReader(std::vector<unsigned char> data) : m_data(std::move(data)) {}
    std::size_t delivered = 0;

protected:
    std::size_t read(void* data, std::size_t count) override
    {
        if (m_position >= m_data.size() || count == 0)
            return 0;
        *static_cast<unsigned char*>(data) = m_data[m_position++];
        ++delivered;
        return 1;
    }

private:
    std::vector<unsigned char> m_data;
    std::size_t m_position = 0;
};

}  // namespace

TEST(BxStreamBinary, EncodesEveryTypeLittleEndianWithoutPadding)
{
    BxStreamWriteBinaryBuffer out;
    out << true << 'A' << static_cast<signed char>(-2) << static_cast<unsigned char>(0xFE)
        << static_cast<short>(-2) << static_cast<unsigned short>(0x1234) << -2 << 0x12345678u
        << -2LL << 0x0102030405060708ULL << 1.0f << -2.0;
    out.WriteVersion(3);
    const std::vector<unsigned char> expected = {
        0x01, 0x41, 0xFE, 0xFE, 0xFE, 0xFF, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0x78, 0x56, 0x34, 0x12,
        0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,
        0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x03, 0x00, 0x00, 0x00};
    EXPECT_EQ(bytes(out), expected);
}

TEST(BxStreamBinary, StringsCarryACountThenTheirUnits)
{
    BxStreamWriteBinaryBuffer out;
    out << std::string("ab") << std::wstring(L"\u00e9\U0001F600");
    const std::vector<unsigned char> expected = {2, 0, 0, 0, 'a', 'b', 3, 0, 0, 0, 0xE9, 0x00, 0x3D, 0xD8, 0x00, 0xDE};
    EXPECT_EQ(bytes(out), expected);
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    std::string narrow;
    std::wstring wide;
    in >> narrow >> wide;
    EXPECT_EQ(narrow, "ab");
    EXPECT_EQ(wide, L"\u00e9\U0001F600");
}

TEST(BxStreamBinary, RoundTripsThroughTheSlowPathAndGrowsTheBuffer)
{
    BxStreamWriteBinaryBuffer out(16);
    for (int k = 0; k < 10000; ++k)
        out << k << static_cast<double>(k) / 3 << std::wstring(k % 7, L'x');
    const auto data = bytes(out);
    CTrickleReader in(data);
    for (int k = 0; k < 10000; ++k) {
        int i;
        double d;
        std::wstring s;
        in >> i >> d >> s;
        ASSERT_EQ(i, k);
        ASSERT_EQ(d, static_cast<double>(k) / 3);
        ASSERT_EQ(s.size(), static_cast<std::size_t>(k % 7));
    }
    EXPECT_EQ(in.delivered, data.size());
}

TEST(BxStreamBinary, TruncatedDataThrowsAndReadBufferReportsShortCounts)
{
    const unsigned char three[] = {1, 2, 3};
    BxStreamReadBinaryBuffer in(three, sizeof three);
    int value;
    EXPECT_THROW(in >> value, BxExceptionStream);
    in.SetPosition(0);
    unsigned char buffer[8];
    EXPECT_EQ(in.ReadBuffer(buffer, 8), 3u);
    EXPECT_EQ(in.ReadBuffer(buffer, 8), 0u);
    EXPECT_THROW(in.SetPosition(4), BxException);
}

TEST(BxStreamBinary, AHugeDeclaredLengthIsRefusedBeforeAllocating)
{
    const unsigned char header[] = {0xFF, 0xFF, 0xFF, 0xFF, 'a'};
    BxStreamReadBinaryBuffer known(header, sizeof header);
    std::string text;
    EXPECT_THROW(known >> text, BxExceptionStream);
    BxStreamReadBinaryBuffer knownWide(header, sizeof header);
    std::wstring wide;
    EXPECT_THROW(knownWide >> wide, BxExceptionStream);
    // Without a known size the string grows only as far as the data goes.
    CTrickleReader unknown(std::vector<unsigned char>(header, header + sizeof header));
    EXPECT_THROW(unknown >> text, BxExceptionStream);
    EXPECT_LE(text.capacity(), std::size_t(2) << 20);
}

TEST(BxStreamBinary, VersionsNewerThanTheReaderAreRejected)
{
    BxStreamWriteBinaryBuffer out;
    out.WriteVersion(2);
    out.WriteVersion(3);
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    EXPECT_EQ(in.ReadAndCompareVersion(2), 2u);
    EXPECT_THROW(in.ReadAndCompareVersion(2), BxExceptionWrongFileVersion);
}

TEST(BxStreamBinary, ChunksRecreateObjectsByClassName)
{
    BxStreamWriteBinaryBuffer out;
    out.WriteChunk(BxFloat64(2.5));
    out.WriteChunk(BxString(L"text"));
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    auto first = in.ReadChunk();
    auto second = in.ReadChunk();
    EXPECT_EQ(dynamic_cast<BxFloat64&>(*first).Get(), 2.5);
    EXPECT_EQ(dynamic_cast<BxString&>(*second).Get(), L"text");

    BxStreamWriteBinaryBuffer unknown;
    unknown << std::wstring(L"CNoSuchClass") << 0u;
    BxStreamReadBinaryBuffer unknownIn(unknown.GetData(), unknown.GetCount());
    EXPECT_THROW(unknownIn.ReadChunk(), BxExceptionStream);

    BxStreamWriteBinaryBuffer tooLong;  // the object reads less than its chunk holds
    tooLong << std::wstring(L"BxInt32") << 9u << 1u << 5 << '!';
    BxStreamReadBinaryBuffer tooLongIn(tooLong.GetData(), tooLong.GetCount());
    EXPECT_THROW(tooLongIn.ReadChunk(), BxExceptionStream);
}

TEST(BxStreamBinary, ArraysMatchSingleValues)
{
    const std::vector<short> values = {1, -2, 300, -32768};
    BxStreamWriteBinaryBuffer array;
    array.WriteArray(values.data(), values.size());
    BxStreamWriteBinaryBuffer single;
    for (short v : values)
        single << v;
    EXPECT_EQ(bytes(array), bytes(single));
    BxStreamReadBinaryBuffer in(single.GetData(), single.GetCount());
    std::vector<short> back(4);
    in.ReadArray(back.data(), back.size());
    EXPECT_EQ(back, values);
    EXPECT_THROW(in.ReadArray(back.data(), 1), BxExceptionStream);
}
