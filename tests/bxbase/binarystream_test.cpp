#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxvalue.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>
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

// A reader whose data comes in pieces of a fixed size: each read() copies what
// it can of the next piece into the caller's memory and lends the rest of the
// piece as the get area, so that values straddle the end of every area.
class CPieceReader : public BxStreamReadBinary
{
public:
    CPieceReader(std::vector<unsigned char> data, std::size_t piece) : m_data(std::move(data)), m_piece(piece) {}
    std::size_t calls = 0;  ///< read() calls, one per piece started

protected:
    std::size_t read(void* data, std::size_t count) override
    {
        ++calls;
        const std::size_t piece = std::min(m_piece, m_data.size() - m_position);
        const std::size_t direct = std::min(piece, count);
        const auto* begin = reinterpret_cast<const std::byte*>(m_data.data() + m_position);
        if (direct)
            std::memcpy(data, begin, direct);
        setGetArea(begin + direct, begin + piece);
        m_position += piece;
        return direct;
    }

private:
    std::vector<unsigned char> m_data;
    std::size_t m_piece;
    std::size_t m_position = 0;
};

// A writer that lends a put area of a fixed size and takes it back (with the
// bytes that did not fit) whenever write() is called.
class CPieceWriter : public BxStreamWriteBinary
{
public:
    explicit CPieceWriter(std::size_t piece) : m_area(piece) { lend(); }
    std::size_t calls = 0;  ///< write() calls

    /// Everything written, the bytes still in the put area included.
    std::vector<unsigned char> Bytes() const
    {
        std::vector<unsigned char> all = m_sink;
        const auto* area = reinterpret_cast<const unsigned char*>(m_area.data());
        all.insert(all.end(), area, area + (putPointer() - m_area.data()));
        return all;
    }

protected:
    BxStreamWriteBinary& write(const void* data, std::size_t count) override
    {
        ++calls;
        m_sink = Bytes();
        const auto* p = static_cast<const unsigned char*>(data);
        m_sink.insert(m_sink.end(), p, p + count);
        lend();
        return *this;
    }

private:
    void lend() { setPutArea(m_area.data(), m_area.data() + m_area.size()); }

    std::vector<std::byte> m_area;
    std::vector<unsigned char> m_sink;
};

// Distinct values of every arithmetic type, extremes included.
template <class T>
std::vector<T> samples()
{
    using L = std::numeric_limits<T>;
    if constexpr (std::is_same_v<T, bool>)
        return {true, false, true, true};
    else if constexpr (std::is_floating_point_v<T>)
        return {T(1.5), -L::max(), L::min(), L::infinity(), T(-0.0), L::denorm_min()};
    else
        return {L::max(), L::min(), T(L::max() / 3), T(1), T(0), T(L::max() - 5)};
}

// The same values written by the memory buffer, whose encoding is checked
// byte for byte above.
template <class T>
std::vector<unsigned char> reference(std::size_t offset, const std::vector<T>& values)
{
    BxStreamWriteBinaryBuffer out(16);
    for (std::size_t k = 0; k < offset; ++k)
        out << static_cast<unsigned char>(0xA0 + k);
    for (T v : values)
        out << v;
    return bytes(out);
}

template <class T>
class BxStreamBinaryTyped : public ::testing::Test
{
};
using ArithmeticTypes = ::testing::Types<bool, char, signed char, unsigned char, short, unsigned short, int,
                                         unsigned int, long, unsigned long, long long, unsigned long long, float,
                                         double>;
TYPED_TEST_SUITE(BxStreamBinaryTyped, ArithmeticTypes);

}  // namespace

// Every value position relative to the end of a get area (an offset of 0 to 7
// bytes before the values, pieces of 1 to 9 bytes), including values split
// across two or more refills.
TYPED_TEST(BxStreamBinaryTyped, ReadsValuesSplitAcrossEveryRefillBoundary)
{
    using T = TypeParam;
    const std::vector<T> values = samples<T>();
    for (std::size_t piece = 1; piece <= 9; ++piece) {
        for (std::size_t offset = 0; offset < 8; ++offset) {
            SCOPED_TRACE(testing::Message() << "piece " << piece << ", offset " << offset);
            const std::vector<unsigned char> data = reference(offset, values);
            CPieceReader in(data, piece);
            for (std::size_t k = 0; k < offset; ++k) {
                unsigned char skipped;
                in >> skipped;
                ASSERT_EQ(skipped, 0xA0 + k);
            }
            for (T expected : values) {
                T v;
                in >> v;
                ASSERT_EQ(std::memcmp(&v, &expected, sizeof(T)), 0);
            }
            // read() runs only when a piece is used up, never for a value the area holds.
            EXPECT_EQ(in.calls, (data.size() + piece - 1) / piece);
            T past;
            EXPECT_THROW(in >> past, BxExceptionStream);
        }
    }
    // The memory reader's own operators, whose end of area is the end of the data.
    const std::vector<unsigned char> data = reference(0, values);
    BxStreamReadBinaryBuffer memory(data.data(), data.size());
    for (T expected : values) {
        T v;
        memory >> v;
        ASSERT_EQ(std::memcmp(&v, &expected, sizeof(T)), 0);
    }
    EXPECT_EQ(memory.GetRemaining(), 0u);
}

TYPED_TEST(BxStreamBinaryTyped, WritesValuesSplitAcrossEveryFlush)
{
    using T = TypeParam;
    const std::vector<T> values = samples<T>();
    for (std::size_t piece = 1; piece <= 9; ++piece) {
        for (std::size_t offset = 0; offset < 8; ++offset) {
            SCOPED_TRACE(testing::Message() << "piece " << piece << ", offset " << offset);
            CPieceWriter out(piece);
            std::size_t calls = 0, used = 0;  // write() is due exactly when a value does not fit
            const auto account = [&](std::size_t size) {
                if (used + size > piece) {
                    ++calls;
                    used = 0;
                } else {
                    used += size;
                }
            };
            for (std::size_t k = 0; k < offset; ++k) {
                out << static_cast<unsigned char>(0xA0 + k);
                account(1);
            }
            for (T v : values) {
                out << v;
                account(sizeof(T));
            }
            EXPECT_EQ(out.Bytes(), reference(offset, values));
            EXPECT_EQ(out.calls, calls);
        }
    }
}

// A value cut short by the end of the data throws under the operator's name,
// whether the missing bytes were due from the get area or from a refill.
TYPED_TEST(BxStreamBinaryTyped, AValueCutShortThrowsUnderTheOperatorsName)
{
    using T = TypeParam;
    const std::vector<unsigned char> whole = reference(0, std::vector<T>{samples<T>().front()});
    for (std::size_t size = 0; size < sizeof(T); ++size) {
        BxStreamReadBinaryBuffer memory(whole.data(), size);
        CPieceReader pieces(std::vector<unsigned char>(whole.begin(), whole.begin() + size), 1);
        BxStreamReadBinaryBuffer memoryAgain(whole.data(), size);
        const auto expectEndOfData = [&](auto& in) {
            T v;
            try {
                in >> v;
                ADD_FAILURE() << "no exception for " << size << " of " << sizeof(T) << " bytes";
            } catch (const BxExceptionStream& e) {
                EXPECT_EQ(e.GetFunctionName(), "BxStreamReadBinary::operator >>");
            }
        };
        expectEndOfData(memory);  // the memory reader's own operators
        EXPECT_EQ(memory.GetRemaining(), 0u);
        expectEndOfData(static_cast<BxStreamReadBinary&>(memoryAgain));  // the base class's
        expectEndOfData(pieces);
    }
}

TEST(BxStreamBinary, AnyNonZeroByteReadsAsTrue)
{
    const unsigned char data[] = {0, 1, 2, 0x80, 0xFF};
    BxStreamReadBinaryBuffer in(data, sizeof data);
    bool v[5];
    in >> v[0] >> v[1] >> v[2] >> v[3] >> v[4];
    EXPECT_FALSE(v[0]);
    EXPECT_TRUE(v[1] && v[2] && v[3] && v[4]);
}

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
