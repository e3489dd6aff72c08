#include <bxbase/bxuuid.h>

#include <array>
#include <random>

namespace {

std::mt19937_64& randomEngine()
{
    thread_local std::mt19937_64 engine([] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }());
    return engine;
}

int hexValue(wchar_t c)
{
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

// Reads `digits` hex digits at text[pos]; false when one is missing or not hex.
template <class C>
bool readHex(const C* text, int pos, int digits, std::uint64_t& value)
{
    value = 0;
    for (int k = 0; k < digits; ++k) {
        const int v = hexValue(static_cast<wchar_t>(text[pos + k]));
        if (v < 0)
            return false;
        value = (value << 4) | static_cast<unsigned>(v);
    }
    return true;
}

template <class C>
RPC_STATUS parse(const C* text, _GUID* uuid)
{
    if (!text || !uuid)
        return RPC_S_INVALID_STRING_UUID;
    // Length check first, so that readHex never reads past the terminator.
    int length = 0;
    while (length <= 36 && text[length] != 0)
        ++length;
    if (length != 36)
        return RPC_S_INVALID_STRING_UUID;
    for (int dash : {8, 13, 18, 23})
        if (text[dash] != '-')
            return RPC_S_INVALID_STRING_UUID;
    std::uint64_t d1, d2, d3, d4a, d4b;
    if (!readHex(text, 0, 8, d1) || !readHex(text, 9, 4, d2) || !readHex(text, 14, 4, d3) ||
        !readHex(text, 19, 4, d4a) || !readHex(text, 24, 12, d4b))
        return RPC_S_INVALID_STRING_UUID;
    uuid->Data1 = static_cast<std::uint32_t>(d1);
    uuid->Data2 = static_cast<std::uint16_t>(d2);
    uuid->Data3 = static_cast<std::uint16_t>(d3);
    uuid->Data4[0] = static_cast<std::uint8_t>(d4a >> 8);
    uuid->Data4[1] = static_cast<std::uint8_t>(d4a);
    for (int k = 0; k < 6; ++k)
        uuid->Data4[2 + k] = static_cast<std::uint8_t>(d4b >> (8 * (5 - k)));
    return RPC_S_OK;
}

}  // namespace

RPC_STATUS UuidCreate(_GUID* uuid)
{
    auto& engine = randomEngine();
    const std::uint64_t a = engine();
    const std::uint64_t b = engine();
    uuid->Data1 = static_cast<std::uint32_t>(a >> 32);
    uuid->Data2 = static_cast<std::uint16_t>(a >> 16);
    uuid->Data3 = static_cast<std::uint16_t>((a & 0x0FFF) | 0x4000);  // version 4
    for (int k = 0; k < 8; ++k)
        uuid->Data4[k] = static_cast<std::uint8_t>(b >> (8 * k));
    uuid->Data4[0] = static_cast<std::uint8_t>((uuid->Data4[0] & 0x3F) | 0x80);  // variant 1
    return RPC_S_OK;
}

RPC_STATUS UuidToStringW(const _GUID* uuid, std::wstring& text)
{
    if (!uuid)
        return RPC_S_INVALID_STRING_UUID;
    static constexpr wchar_t digits[] = L"0123456789abcdef";
    std::array<wchar_t, 36> out{};
    int pos = 0;
    auto put = [&](std::uint64_t value, int count) {
        for (int k = count - 1; k >= 0; --k)
            out[pos++] = digits[(value >> (4 * k)) & 0xF];
    };
    put(uuid->Data1, 8);
    out[pos++] = L'-';
    put(uuid->Data2, 4);
    out[pos++] = L'-';
    put(uuid->Data3, 4);
    out[pos++] = L'-';
    put(uuid->Data4[0], 2);
    put(uuid->Data4[1], 2);
    out[pos++] = L'-';
    for (int k = 2; k < 8; ++k)
        put(uuid->Data4[k], 2);
    text.assign(out.begin(), out.end());
    return RPC_S_OK;
}

RPC_STATUS UuidFromStringW(const wchar_t* text, _GUID* uuid) { return parse(text, uuid); }
RPC_STATUS UuidFromStringA(const char* text, _GUID* uuid) { return parse(text, uuid); }

unsigned short UuidHash(const _GUID* uuid, RPC_STATUS* status)
{
    if (status)
        *status = RPC_S_OK;
    if (!uuid)
        return 0;
    // FNV-1a over the fields in little-endian order, folded to 16 bits.
    std::uint32_t hash = 2166136261u;
    auto mix = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * 16777619u; };
    for (int k = 0; k < 4; ++k) mix(static_cast<std::uint8_t>(uuid->Data1 >> (8 * k)));
    for (int k = 0; k < 2; ++k) mix(static_cast<std::uint8_t>(uuid->Data2 >> (8 * k)));
    for (int k = 0; k < 2; ++k) mix(static_cast<std::uint8_t>(uuid->Data3 >> (8 * k)));
    for (std::uint8_t byte : uuid->Data4) mix(byte);
    return static_cast<unsigned short>(hash ^ (hash >> 16));
}
