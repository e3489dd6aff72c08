#include <bxbase/bxuuid.h>

#include <gtest/gtest.h>

#include <set>

namespace {

_GUID sample()
{
    return _GUID{0x1b4e28ba, 0x2fa1, 0x11d2, {0x88, 0x3f, 0x00, 0x16, 0xd3, 0xcc, 0xa4, 0x27}};
}

}  // namespace

TEST(BxUuid, TextIsMadeFromTheFieldsInLowerCase)
{
    std::wstring text;
    ASSERT_EQ(UuidToStringW(nullptr, text), RPC_S_INVALID_STRING_UUID);
    const _GUID id = sample();
    ASSERT_EQ(UuidToStringW(&id, text), RPC_S_OK);
    EXPECT_EQ(text, L"1b4e28ba-2fa1-11d2-883f-0016d3cca427");
}

TEST(BxUuid, ParsingAcceptsEitherCaseAndOnlyTheExactForm)
{
    _GUID id{};
    ASSERT_EQ(UuidFromStringW(L"1B4E28BA-2FA1-11D2-883F-0016D3CCA427", &id), RPC_S_OK);
    EXPECT_TRUE(id == sample());
    ASSERT_EQ(UuidFromStringA("1b4e28ba-2fa1-11d2-883f-0016d3cca427", &id), RPC_S_OK);
    EXPECT_TRUE(id == sample());
    for (const wchar_t* bad : {L"", L"{1b4e28ba-2fa1-11d2-883f-0016d3cca427}", L"1b4e28ba-2fa1-11d2-883f-0016d3cca42",
                               L"1b4e28ba-2fa1-11d2-883f-0016d3cca4270", L"1b4e28ba 2fa1-11d2-883f-0016d3cca427",
                               L"1b4e28bg-2fa1-11d2-883f-0016d3cca427", L"1b4e28ba-2fa1-11d2-883f0-016d3cca427"})
        EXPECT_EQ(UuidFromStringW(bad, &id), RPC_S_INVALID_STRING_UUID) << bad;
    EXPECT_EQ(UuidFromStringW(nullptr, &id), RPC_S_INVALID_STRING_UUID);
}

TEST(BxUuid, CreatedIdentifiersAreVersion4AndDistinct)
{
    std::set<std::wstring> seen;
    for (int k = 0; k < 1000; ++k) {
        _GUID id;
        ASSERT_EQ(UuidCreate(&id), RPC_S_OK);
        EXPECT_EQ(id.Data3 >> 12, 4);
        EXPECT_EQ(id.Data4[0] & 0xC0, 0x80);
        std::wstring text;
        UuidToStringW(&id, text);
        _GUID back;
        ASSERT_EQ(UuidFromStringW(text.c_str(), &back), RPC_S_OK);
        EXPECT_TRUE(back == id);
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

TEST(BxUuid, HashDependsOnEveryByte)
{
    RPC_STATUS status = -1;
    const _GUID a = sample();
    const unsigned short h = UuidHash(&a, &status);
    EXPECT_EQ(status, RPC_S_OK);
    EXPECT_EQ(UuidHash(&a, nullptr), h);
    int differing = 0;
    for (int k = 0; k < 8; ++k) {
        _GUID b = a;
        b.Data4[k] ^= 1;
        differing += UuidHash(&b, nullptr) != h;
    }
    _GUID c = a;
    c.Data3 ^= 1;
    differing += UuidHash(&c, nullptr) != h;
    EXPECT_GE(differing, 8);  // a 16-bit hash may collide once by chance
}
