#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/bxvariant.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace {

template <class T>
constexpr bool isNumber = std::is_arithmetic_v<T>;

[[noreturn]] void conversionFailed(const char* what)
{
    throw BxExceptionPreconditionViolation(__FILE__, __LINE__, "BxVariant::GetAs", what);
}

template <class T>
std::string numberToText(T value)
{
    if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_same_v<T, char>) {
        return std::string(1, value);
    } else {
        char buffer[64];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        return std::string(buffer, result.ptr);
    }
}

template <class T>
T textToNumber(const std::string& text)
{
    if constexpr (std::is_same_v<T, bool>) {
        if (text == "true") return true;
        if (text == "false") return false;
        long long v;
        auto r = std::from_chars(text.data(), text.data() + text.size(), v);
        if (r.ec != std::errc() || r.ptr != text.data() + text.size())
            conversionFailed("text is not a boolean");
        return v != 0;
    } else if constexpr (std::is_same_v<T, char>) {
        if (text.size() != 1)
            conversionFailed("text is not one character");
        return text[0];
    } else {
        T v{};
        const char* begin = text.data();
        const char* end = begin + text.size();
        if (begin != end && *begin == '+')
            ++begin;
        auto r = std::from_chars(begin, end, v);
        if (r.ec != std::errc() || r.ptr != end || begin == end)
            conversionFailed("text is not a number of the requested kind");
        return v;
    }
}

// A floating value cast to another number kind, refused where the cast is
// undefined: to an integer kind when the value is NaN or its integral part is
// out of the kind's range, to float when a finite value exceeds float's range.
// Integer targets are checked against the powers of two that bound them,
// which every floating type holds exactly.
template <class To, class From>
To castFloating(From value)
{
    if constexpr (std::is_same_v<To, bool>) {
        return static_cast<bool>(value);
    } else if constexpr (std::is_integral_v<To>) {
        using Limits = std::numeric_limits<To>;
        const long double v = value;
        const long double high = std::ldexp(1.0L, Limits::digits);
        const long double low = Limits::is_signed ? -high : 0.0L;
        // integral part in [low, high): v > low - 1 and v < high
        if (!(v > low - 1.0L && v < high))
            conversionFailed("floating value out of the range of the integer kind");
        return static_cast<To>(value);
    } else {
        if constexpr (sizeof(To) < sizeof(From)) {
            if (std::isfinite(value) && std::fabs(value) > static_cast<From>(std::numeric_limits<To>::max()))
                conversionFailed("floating value out of the range of float");
        }
        return static_cast<To>(value);
    }
}

template <class To, class From>
To convert(const From& value)
{
    if constexpr (std::is_same_v<From, std::monostate>) {
        return To{};
    } else if constexpr (std::is_same_v<To, void*>) {
        if constexpr (std::is_same_v<From, void*>)
            return value;
        else
            conversionFailed("only a pointer converts to a pointer");
    } else if constexpr (std::is_same_v<From, void*>) {
        conversionFailed("a pointer converts to nothing else");
    } else if constexpr (std::is_same_v<To, std::string>) {
        if constexpr (std::is_same_v<From, std::string>) return value;
        else if constexpr (std::is_same_v<From, std::wstring>) return BxStringConvert::WideToUtf8Lossy(value);
        else if constexpr (isNumber<From>) return numberToText(value);
        else conversionFailed("no value to convert");
    } else if constexpr (std::is_same_v<To, std::wstring>) {
        if constexpr (std::is_same_v<From, std::wstring>) return value;
        else if constexpr (std::is_same_v<From, std::string>) return BxStringConvert::Utf8ToWideLossy(value);
        else if constexpr (isNumber<From>) return BxStringConvert::Utf8ToWideLossy(numberToText(value));
        else conversionFailed("no value to convert");
    } else if constexpr (std::is_floating_point_v<From>) {
        return castFloating<To>(value);
    } else if constexpr (isNumber<From>) {
        return static_cast<To>(value);
    } else if constexpr (std::is_same_v<From, std::string>) {
        return textToNumber<To>(value);
    } else if constexpr (std::is_same_v<From, std::wstring>) {
        return textToNumber<To>(BxStringConvert::WideToUtf8Lossy(value));
    } else {
        conversionFailed("a reserved kind has no value");
    }
}

// Numeric value of a numeric alternative, as the widest type that holds it.
struct Numeric
{
    enum { eSigned, eUnsigned, eFloating } kind;
    long long s;
    unsigned long long u;
    long double f;
};

template <class T>
Numeric toNumeric(const T& v)
{
    if constexpr (std::is_floating_point_v<T>)
        return {Numeric::eFloating, 0, 0, static_cast<long double>(v)};
    else if constexpr (std::is_signed_v<T>)
        return {Numeric::eSigned, static_cast<long long>(v), 0, 0};
    else
        return {Numeric::eUnsigned, 0, static_cast<unsigned long long>(v), 0};
}

long double asFloating(const Numeric& n)
{
    switch (n.kind) {
    case Numeric::eSigned: return static_cast<long double>(n.s);
    case Numeric::eUnsigned: return static_cast<long double>(n.u);
    default: return n.f;
    }
}

// -1, 0 or 1; NaN compares as unordered and yields 2.
int compareNumeric(const Numeric& a, const Numeric& b)
{
    if (a.kind == Numeric::eFloating || b.kind == Numeric::eFloating) {
        const long double x = asFloating(a), y = asFloating(b);
        if (std::isnan(x) || std::isnan(y))
            return 2;
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    if (a.kind == Numeric::eSigned && b.kind == Numeric::eSigned)
        return a.s < b.s ? -1 : (a.s > b.s ? 1 : 0);
    if (a.kind == Numeric::eUnsigned && b.kind == Numeric::eUnsigned)
        return a.u < b.u ? -1 : (a.u > b.u ? 1 : 0);
    if (a.kind == Numeric::eSigned)
        return std::cmp_less(a.s, b.u) ? -1 : (std::cmp_greater(a.s, b.u) ? 1 : 0);
    return std::cmp_less(a.u, b.s) ? -1 : (std::cmp_greater(a.u, b.s) ? 1 : 0);
}

template <class Storage>
Numeric numericOf(const Storage& value)
{
    return std::visit(
        [](const auto& v) -> Numeric {
            using T = std::decay_t<decltype(v)>;
            if constexpr (isNumber<T>)
                return toNumeric(v);
            else
                return {Numeric::eSigned, 0, 0, 0};
        },
        value);
}

}  // namespace

bool BxVariant::IsNumericType(EVariantType type) noexcept
{
    switch (type) {
    case eVT_Bool: case eVT_Int: case eVT_Int64: case eVT_UInt: case eVT_Float: case eVT_Double:
    case eVT_Char: case eVT_Int8: case eVT_UInt8: case eVT_Int16: case eVT_UInt16: case eVT_UInt64:
        return true;
    default:
        return false;
    }
}

template <class T>
T BxVariant::GetAs() const
{
    return std::visit([](const auto& v) { return convert<T>(v); }, m_value);
}

void BxVariant::ConvertTo(EVariantType type)
{
    switch (type) {
    case eVT_Null: SetNull(); break;
    case eVT_Bool: *this = GetAs<bool>(); break;
    case eVT_Int: *this = GetAs<int>(); break;
    case eVT_Int64: *this = GetAs<long long>(); break;
    case eVT_UInt: *this = GetAs<unsigned int>(); break;
    case eVT_Float: *this = GetAs<float>(); break;
    case eVT_Double: *this = GetAs<double>(); break;
    case eVT_Char: *this = GetAs<char>(); break;
    case eVT_WString: *this = GetAs<std::wstring>(); break;
    case eVT_Pointer: *this = GetAs<void*>(); break;
    case eVT_Int8: *this = GetAs<signed char>(); break;
    case eVT_UInt8: *this = GetAs<unsigned char>(); break;
    case eVT_Int16: *this = GetAs<short>(); break;
    case eVT_UInt16: *this = GetAs<unsigned short>(); break;
    case eVT_UInt64: *this = GetAs<unsigned long long>(); break;
    case eVT_String: *this = GetAs<std::string>(); break;
    default:
        throw BxExceptionPreconditionViolation(__FILE__, __LINE__, "BxVariant::ConvertTo",
                                               "no conversion to tag " + std::to_string(type));
    }
}

bool BxVariant::operator==(const BxVariant& other) const
{
    if (IsNumeric() && other.IsNumeric())
        return compareNumeric(numericOf(m_value), numericOf(other.m_value)) == 0;
    if (GetType() != other.GetType())
        return false;
    return m_value == other.m_value;
}

bool BxVariant::operator<(const BxVariant& other) const
{
    if (IsNumeric() && other.IsNumeric())
        return compareNumeric(numericOf(m_value), numericOf(other.m_value)) == -1;
    if (GetType() != other.GetType())
        return GetType() < other.GetType();
    switch (GetType()) {
    case eVT_WString: return std::get<eVT_WString>(m_value) < std::get<eVT_WString>(other.m_value);
    case eVT_String: return std::get<eVT_String>(m_value) < std::get<eVT_String>(other.m_value);
    case eVT_Pointer: return std::less<void*>()(std::get<eVT_Pointer>(m_value), std::get<eVT_Pointer>(other.m_value));
    default: return false;
    }
}

template BXBASE_API bool BxVariant::GetAs<bool>() const;
template BXBASE_API int BxVariant::GetAs<int>() const;
template BXBASE_API long long BxVariant::GetAs<long long>() const;
template BXBASE_API long BxVariant::GetAs<long>() const;
template BXBASE_API unsigned int BxVariant::GetAs<unsigned int>() const;
template BXBASE_API float BxVariant::GetAs<float>() const;
template BXBASE_API double BxVariant::GetAs<double>() const;
template BXBASE_API char BxVariant::GetAs<char>() const;
template BXBASE_API signed char BxVariant::GetAs<signed char>() const;
template BXBASE_API unsigned char BxVariant::GetAs<unsigned char>() const;
template BXBASE_API short BxVariant::GetAs<short>() const;
template BXBASE_API unsigned short BxVariant::GetAs<unsigned short>() const;
template BXBASE_API unsigned long long BxVariant::GetAs<unsigned long long>() const;
template BXBASE_API unsigned long BxVariant::GetAs<unsigned long>() const;
template BXBASE_API std::wstring BxVariant::GetAs<std::wstring>() const;
template BXBASE_API std::string BxVariant::GetAs<std::string>() const;
template BXBASE_API void* BxVariant::GetAs<void*>() const;
