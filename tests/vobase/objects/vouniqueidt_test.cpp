#include <vobase/objects/vouniqueidt.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <cstring>
#include <unordered_set>
#include <vector>

using IdW = VoUniqueIdT<std::wstring>;
using IdA = VoUniqueIdT<std::string>;

namespace {

_GUID makeGuid(std::uint32_t d1, std::uint16_t d2, std::uint16_t d3, std::initializer_list<std::uint8_t> d4)
{
    _GUID g{d1, d2, d3, {}};
    std::copy(d4.begin(), d4.end(), g.Data4);
    return g;
}

const _GUID c_sample = makeGuid(0x1B4E28BA, 0x2FA1, 0x11D2, {0x88, 0x3F, 0x00, 0x16, 0xD3, 0xCC, 0xA4, 0x27});

}  // namespace

TEST(VoUniqueId, TextFormIsUpperCaseInBothWidths)
{
    const IdW wide(c_sample);
    EXPECT_EQ(static_cast<const std::wstring&>(wide), L"1B4E28BA-2FA1-11D2-883F-0016D3CCA427");
    const IdA narrow(c_sample);
    EXPECT_EQ(static_cast<const std::string&>(narrow), "1B4E28BA-2FA1-11D2-883F-0016D3CCA427");
    EXPECT_EQ(IdA::GetUniqueID(c_sample), "1B4E28BA-2FA1-11D2-883F-0016D3CCA427");

    // Text is parsed in either case and the cache follows every change of the GUID.
    IdW parsed(L"1b4e28ba-2fa1-11d2-883f-0016d3cca427");
    EXPECT_TRUE(parsed == c_sample);
    parsed = makeGuid(1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11});
    EXPECT_EQ(static_cast<const std::wstring&>(parsed), L"00000001-0002-0003-0405-060708090A0B");
    parsed.Renew();
    EXPECT_NE(static_cast<const std::wstring&>(parsed), L"00000001-0002-0003-0405-060708090A0B");
    EXPECT_EQ(IdW::GetUniqueID(parsed), static_cast<const std::wstring&>(parsed));
}

TEST(VoUniqueId, ValidityAndTheInvalidIdentifier)
{
    IdW fresh;
    EXPECT_TRUE(fresh.IsValid());
    EXPECT_FALSE(fresh.IsInvalid());
    EXPECT_NE(fresh, IdW());  // two fresh identifiers differ

    fresh.Invalidate();
    EXPECT_FALSE(fresh.IsValid());
    EXPECT_TRUE(fresh.IsInvalid());
    EXPECT_EQ(fresh, IdW::GetInvalidID());
    EXPECT_EQ(&IdW::GetInvalidID(), &IdW::GetInvalidID());
    EXPECT_TRUE(IdA(nullptr).IsInvalid());
    EXPECT_TRUE(IdA("not an identifier").IsInvalid());

    EXPECT_TRUE(IdW::IsValid(L"1B4E28BA-2FA1-11D2-883F-0016D3CCA427"));
    EXPECT_TRUE(IdA::IsValid(std::string("1b4e28ba-2fa1-11d2-883f-0016d3cca427")));
    EXPECT_FALSE(IdA::IsValid("{1b4e28ba-2fa1-11d2-883f-0016d3cca427}"));
    EXPECT_FALSE(IdA::IsValid(static_cast<const char*>(nullptr)));
    EXPECT_TRUE(IdA::IsValid(IdA::GetUniqueID()));
}

TEST(VoUniqueId, OrderingIgnoresData3ButEqualityDoesNot)
{
    const IdW a(makeGuid(5, 5, 1, {1, 0, 0, 0, 0, 0, 0, 0}));
    const IdW b(makeGuid(5, 5, 2, {1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(a > b);
    EXPECT_TRUE(a <= b);
    EXPECT_TRUE(a >= b);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);

    // Data4 compares as a little-endian number: its last byte weighs most.
    const IdW low(makeGuid(5, 5, 9, {0xFF, 0, 0, 0, 0, 0, 0, 0}));
    const IdW high(makeGuid(5, 5, 0, {0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(low < high);
    EXPECT_TRUE(high > static_cast<const _GUID&>(low));
    // Data1 before Data2 before Data4.
    EXPECT_TRUE(IdW(makeGuid(1, 9, 0, {9})) < IdW(makeGuid(2, 0, 0, {0})));
    EXPECT_TRUE(IdW(makeGuid(1, 1, 0, {9})) < makeGuid(1, 2, 0, {0}));
}

TEST(VoUniqueId, BinaryFormIsSixteenBytesAndEmptiesTheCache)
{
    IdW id(c_sample);
    BxStreamWriteBinaryBuffer out;
    id.Serialize(out);
    const auto* p = reinterpret_cast<const std::uint8_t*>(out.GetData());
    const std::vector<std::uint8_t> bytes(p, p + out.GetCount());
    const std::vector<std::uint8_t> expected = {0xBA, 0x28, 0x4E, 0x1B, 0xA1, 0x2F, 0xD2, 0x11,
                                                0x88, 0x3F, 0x00, 0x16, 0xD3, 0xCC, 0xA4, 0x27};
    EXPECT_EQ(bytes, expected);

    IdW back(makeGuid(1, 2, 3, {4}));
    EXPECT_FALSE(static_cast<const std::wstring&>(back).empty());  // fills the cache
    BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
    back.Serialize(in);
    EXPECT_EQ(back, id);
    EXPECT_EQ(static_cast<const std::wstring&>(back), L"1B4E28BA-2FA1-11D2-883F-0016D3CCA427");

    for (std::size_t size = 0; size < bytes.size(); size += 5) {
        BxStreamReadBinaryBuffer cut(bytes.data(), size);
        IdW target(c_sample);
        EXPECT_THROW(target.Serialize(cut), BxExceptionStream);
    }
}

TEST(VoUniqueId, TestModeIsDeterministic)
{
    IdA::EnableTestMode(true);
    const IdA first;
    const IdW second;
    IdA::EnableTestMode(false);

    const _GUID& g = first;
    EXPECT_EQ(g.Data1, 0x7E57DA7Au);
    EXPECT_EQ(g.Data2, 0x1234);
    EXPECT_EQ(g.Data3, 0x1234);
    // Data4 is the "%8d" text of a process-wide counter shared by all instantiations.
    const std::string digits(reinterpret_cast<const char*>(g.Data4), 8);
    const int counter = std::stoi(digits);
    char expected[16];
    std::snprintf(expected, sizeof expected, "%8d", counter + 1);
    EXPECT_EQ(std::memcmp(static_cast<const _GUID&>(second).Data4, expected, 8), 0);
    EXPECT_EQ(static_cast<const _GUID&>(second).Data1, 0x7E57DA7Au);

    const IdA random;  // test mode is off again
    const _GUID& normal = random;
    EXPECT_FALSE(normal.Data1 == 0x7E57DA7Au && normal.Data2 == 0x1234 && normal.Data3 == 0x1234);
}

TEST(VoUniqueId, CopiesMovesAndHashes)
{
    IdA original(c_sample);
    const std::string text = original;
    IdA copy(original);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(static_cast<const std::string&>(copy), text);
    IdA moved(std::move(copy));
    EXPECT_EQ(moved, original);
    EXPECT_EQ(static_cast<const std::string&>(moved), text);
    IdA assigned;
    assigned = original;
    EXPECT_EQ(static_cast<const std::string&>(assigned), text);
    assigned = text.c_str();
    EXPECT_EQ(assigned, original);

    std::unordered_set<IdA> set{original, moved, IdA(), IdA()};
    EXPECT_EQ(set.size(), 3u);
    EXPECT_EQ(std::hash<IdA>()(original), std::hash<IdA>()(moved));
}
