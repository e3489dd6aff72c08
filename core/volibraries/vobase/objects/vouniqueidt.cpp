#include <vobase/objects/vouniqueidt.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamwritebinary.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/threading/bxcriticalsection.h>

#include <cstdio>
#include <cstring>
#include <mutex>

namespace {

// Guards the filling of every identifier's text cache, of all instantiations.
BxCriticalSection& textLock()
{
    static BxCriticalSection lock;
    return lock;
}

std::atomic<bool> s_testMode{false};
std::atomic<int> s_testCounter{0};

std::wstring upperText(const _GUID& guid)
{
    std::wstring text;
    if (UuidToStringW(&guid, text) != RPC_S_OK)
        BX_THROW(BxException, "ConvertToString", "the identifier cannot be formatted");
    return BxStringConvert::ToUpperAscii(text);
}

template <class T>
T convertText(const std::wstring& text)
{
    if constexpr (std::is_same_v<T, std::wstring>)
        return text;
    else
        return BxStringConvert::WideToUtf8(text);  // hex digits and dashes only
}

RPC_STATUS parseText(const char* text, _GUID* guid) { return UuidFromStringA(text, guid); }
RPC_STATUS parseText(const wchar_t* text, _GUID* guid) { return UuidFromStringW(text, guid); }

std::uint64_t data4AsNumber(const _GUID& guid) noexcept
{
    std::uint64_t value = 0;
    for (int k = 7; k >= 0; --k)
        value = (value << 8) | guid.Data4[k];
    return value;
}

constexpr _GUID c_invalidGuid{};

}  // namespace

template <class T>
VoUniqueIdT<T>::VoUniqueIdT() : m_guid()
{
    Renew();
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(std::nullptr_t) noexcept : m_guid(c_invalidGuid)
{
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(const _GUID& guid) noexcept : m_guid(guid)
{
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(const T& text) : m_guid()
{
    parse(text.c_str());
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(const char_type* text) : m_guid()
{
    parse(text);
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(const VoUniqueIdT& other) : m_guid(other.m_guid)
{
    if (other.m_hasText.load(std::memory_order_acquire)) {
        m_text = other.m_text;
        m_hasText.store(true, std::memory_order_relaxed);
    }
}

template <class T>
VoUniqueIdT<T>::VoUniqueIdT(VoUniqueIdT&& other) noexcept : m_guid(other.m_guid)
{
    if (other.m_hasText.exchange(false, std::memory_order_acquire)) {
        m_text = std::move(other.m_text);
        other.m_text.clear();
        m_hasText.store(true, std::memory_order_relaxed);
    }
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(std::nullptr_t) noexcept
{
    Invalidate();
    return *this;
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(const _GUID& guid) noexcept
{
    setGuid(guid);
    return *this;
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(const T& text)
{
    parse(text.c_str());
    return *this;
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(const char_type* text)
{
    parse(text);
    return *this;
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(const VoUniqueIdT& other)
{
    if (this != &other) {
        VoUniqueIdT copy(other);
        *this = std::move(copy);
    }
    return *this;
}

template <class T>
VoUniqueIdT<T>& VoUniqueIdT<T>::operator=(VoUniqueIdT&& other) noexcept
{
    if (this != &other) {
        setGuid(other.m_guid);
        if (other.m_hasText.exchange(false, std::memory_order_acquire)) {
            m_text = std::move(other.m_text);
            other.m_text.clear();
            m_hasText.store(true, std::memory_order_release);
        }
    }
    return *this;
}

template <class T>
void VoUniqueIdT<T>::setGuid(const _GUID& guid) noexcept
{
    m_guid = guid;
    m_hasText.store(false, std::memory_order_relaxed);
    m_text.clear();
}

template <class T>
void VoUniqueIdT<T>::parse(const char_type* text) noexcept
{
    _GUID guid;
    if (!text || parseText(text, &guid) != RPC_S_OK)
        guid = c_invalidGuid;
    setGuid(guid);
}

template <class T>
void VoUniqueIdT<T>::Renew()
{
    _GUID guid;
    if (s_testMode.load(std::memory_order_relaxed)) {
        guid.Data1 = 0x7E57DA7A;
        guid.Data2 = 0x1234;
        guid.Data3 = 0x1234;
        char digits[16];
        std::snprintf(digits, sizeof digits, "%8d", s_testCounter.fetch_add(1));
        std::memcpy(guid.Data4, digits, 8);
    } else {
        UuidCreate(&guid);
    }
    setGuid(guid);
}

template <class T>
void VoUniqueIdT<T>::Invalidate() noexcept
{
    setGuid(c_invalidGuid);
}

template <class T>
bool VoUniqueIdT<T>::IsValid() const
{
    if (m_guid == GetInvalidID().m_guid)
        return false;
    return !static_cast<const T&>(*this).empty();
}

template <class T>
bool VoUniqueIdT<T>::IsInvalid() const
{
    return m_guid == GetInvalidID().m_guid || static_cast<const T&>(*this).empty();
}

template <class T>
bool VoUniqueIdT<T>::IsValid(const T& text)
{
    return IsValid(text.c_str());
}

template <class T>
bool VoUniqueIdT<T>::IsValid(const char_type* text)
{
    _GUID guid;
    return text && parseText(text, &guid) == RPC_S_OK;
}

template <class T>
VoUniqueIdT<T>::operator const T&() const
{
    if (!m_hasText.load(std::memory_order_acquire)) {
        std::lock_guard<BxCriticalSection> guard(textLock());
        if (!m_hasText.load(std::memory_order_relaxed)) {
            m_text = convertText<T>(upperText(m_guid));
            m_hasText.store(true, std::memory_order_release);
        }
    }
    return m_text;
}

template <class T>
bool VoUniqueIdT<T>::less(const _GUID& a, const _GUID& b) noexcept
{
    if (a.Data1 != b.Data1)
        return a.Data1 < b.Data1;
    if (a.Data2 != b.Data2)
        return a.Data2 < b.Data2;
    return data4AsNumber(a) < data4AsNumber(b);
}

template <class T>
T VoUniqueIdT<T>::GetUniqueID()
{
    return VoUniqueIdT().operator const T&();
}

template <class T>
T VoUniqueIdT<T>::GetUniqueID(const _GUID& guid)
{
    return convertText<T>(upperText(guid));
}

template <class T>
T VoUniqueIdT<T>::GetUniqueID(const VoUniqueIdT& id)
{
    return id.operator const T&();
}

template <class T>
const VoUniqueIdT<T>& VoUniqueIdT<T>::GetInvalidID()
{
    static const VoUniqueIdT invalid(nullptr);
    return invalid;
}

template <class T>
void VoUniqueIdT<T>::EnableTestMode(bool enable) noexcept
{
    s_testMode.store(enable, std::memory_order_relaxed);
}

template <class T>
void VoUniqueIdT<T>::Serialize(BxStreamWriteBinary& stream) const
{
    stream << static_cast<unsigned int>(m_guid.Data1) << static_cast<unsigned short>(m_guid.Data2)
           << static_cast<unsigned short>(m_guid.Data3);
    for (std::uint8_t byte : m_guid.Data4)
        stream << static_cast<unsigned char>(byte);
}

template <class T>
void VoUniqueIdT<T>::Serialize(BxStreamReadBinary& stream)
{
    _GUID guid;
    unsigned int data1;
    unsigned short data2, data3;
    stream >> data1 >> data2 >> data3;
    guid.Data1 = data1;
    guid.Data2 = data2;
    guid.Data3 = data3;
    for (std::uint8_t& byte : guid.Data4) {
        unsigned char read;
        stream >> read;
        byte = read;
    }
    setGuid(guid);
}

template class VoUniqueIdT<std::string>;
template class VoUniqueIdT<std::wstring>;
