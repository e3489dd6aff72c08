// A tagged value of one of the framework's basic kinds.
//
//   BxVariant v = 42;                 // tag eVT_Int (2)
//   v = L"text";                      // tag eVT_WString (8)
//   v = BxVariant(3.5);
//   double d = v.GetAs<double>();     // 3.5
//   v.ConvertTo(BxVariant::eVT_String);   // "3.5"
//   bool same = BxVariant(1) == BxVariant(1.0);   // true: numbers compare by value
//
// Tags (stable, they are stored in binary forms):
//   0 null, 1 bool, 2 int, 3 long long, 4 unsigned int, 5 float, 6 double,
//   7 char, 8 std::wstring, 9 pointer (void*, never serialised), 10, 11 and 17
//   reserved, 12 signed char, 13 unsigned char, 14 short, 15 unsigned short,
//   16 unsigned long long, 18 std::string. Tags 19 and above are invalid.
//
// Conversions: numeric kinds (bool and char included) convert to each other
// as C++ casts do, except where such a cast is undefined: a floating value
// that is NaN or whose integral part lies outside an integer kind, or a finite
// double beyond float's range, throws BxExceptionPreconditionViolation
// ("BxVariant::GetAs"), just as an out-of-range text does; numbers convert to
// strings in their shortest decimal form;
// strings convert to numbers when the whole string is a number that fits (bool
// also accepts "true" and "false"), otherwise BxExceptionPreconditionViolation
// is thrown. Null converts to zero and to the empty string.
//
// Comparison: null equals null; numeric kinds compare by value across kinds;
// strings compare lexicographically within their kind; anything else is
// ordered by tag.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <cstdint>
#include <string>
#include <variant>

/// A tagged value of one of the framework's basic kinds.
class BXBASE_API BxVariant
{
public:
    /// The kind of the value held; the numbers are the stable tags of the binary forms.
    enum EVariantType : std::uint32_t
    {
        eVT_Null = 0,
        eVT_Bool = 1,
        eVT_Int = 2,
        eVT_Int64 = 3,
        eVT_UInt = 4,
        eVT_Float = 5,
        eVT_Double = 6,
        eVT_Char = 7,
        eVT_WString = 8,
        eVT_Pointer = 9,
        eVT_Reserved10 = 10,
        eVT_Reserved11 = 11,
        eVT_Int8 = 12,
        eVT_UInt8 = 13,
        eVT_Int16 = 14,
        eVT_UInt16 = 15,
        eVT_UInt64 = 16,
        eVT_Reserved17 = 17,
        eVT_String = 18,
        eVT_Count = 19
    };

    /// A null variant (tag 0).
    BxVariant() noexcept = default;
    /// @name Construction from a value
    /// The variant holds the value with the kind of its type: `long` as
    /// eVT_Int64 and `unsigned long` as eVT_UInt64 (both 64-bit here), text
    /// pointers as strings (a null pointer as the empty string).
    //@{
    BxVariant(bool v) : m_value(std::in_place_index<eVT_Bool>, v) {}
    BxVariant(int v) : m_value(std::in_place_index<eVT_Int>, v) {}
    BxVariant(long long v) : m_value(std::in_place_index<eVT_Int64>, v) {}
    BxVariant(long v) : m_value(std::in_place_index<eVT_Int64>, v) {}
    BxVariant(unsigned int v) : m_value(std::in_place_index<eVT_UInt>, v) {}
    BxVariant(float v) : m_value(std::in_place_index<eVT_Float>, v) {}
    BxVariant(double v) : m_value(std::in_place_index<eVT_Double>, v) {}
    BxVariant(char v) : m_value(std::in_place_index<eVT_Char>, v) {}
    BxVariant(const std::wstring& v) : m_value(std::in_place_index<eVT_WString>, v) {}
    BxVariant(std::wstring&& v) : m_value(std::in_place_index<eVT_WString>, std::move(v)) {}
    BxVariant(const wchar_t* v) : m_value(std::in_place_index<eVT_WString>, v ? v : L"") {}
    BxVariant(void* v) : m_value(std::in_place_index<eVT_Pointer>, v) {}
    BxVariant(signed char v) : m_value(std::in_place_index<eVT_Int8>, v) {}
    BxVariant(unsigned char v) : m_value(std::in_place_index<eVT_UInt8>, v) {}
    BxVariant(short v) : m_value(std::in_place_index<eVT_Int16>, v) {}
    BxVariant(unsigned short v) : m_value(std::in_place_index<eVT_UInt16>, v) {}
    BxVariant(unsigned long long v) : m_value(std::in_place_index<eVT_UInt64>, v) {}
    BxVariant(unsigned long v) : m_value(std::in_place_index<eVT_UInt64>, v) {}
    BxVariant(const std::string& v) : m_value(std::in_place_index<eVT_String>, v) {}
    BxVariant(std::string&& v) : m_value(std::in_place_index<eVT_String>, std::move(v)) {}
    BxVariant(const char* v) : m_value(std::in_place_index<eVT_String>, v ? v : "") {}
    //@}

    /// Virtual, for the framework's classes derived from variants.
    virtual ~BxVariant() = default;
    /// @name Copy and move
    /// Copies and moves take the value and its kind.
    //@{
    BxVariant(const BxVariant&) = default;
    BxVariant(BxVariant&&) noexcept = default;
    BxVariant& operator=(const BxVariant&) = default;
    BxVariant& operator=(BxVariant&&) noexcept = default;
    //@}

    /// Typed assignment: the variant takes the value and its kind.
    template <class T>
    BxVariant& operator=(T&& value)
        requires(!std::is_same_v<std::remove_cvref_t<T>, BxVariant> &&
                 std::is_constructible_v<BxVariant, T &&>)
    {
        return *this = BxVariant(std::forward<T>(value));
    }

    /// The kind of the value held.
    EVariantType GetType() const noexcept { return static_cast<EVariantType>(m_value.index()); }
    /// True for a null variant.
    bool IsNull() const noexcept { return m_value.index() == eVT_Null; }
    /// True when the value is a number (bool and char included).
    bool IsNumeric() const noexcept { return IsNumericType(GetType()); }
    /// True when the value is a narrow or a wide string.
    bool IsString() const noexcept { return GetType() == eVT_WString || GetType() == eVT_String; }
    /// Makes the variant null.
    void SetNull() noexcept { m_value.emplace<eVT_Null>(); }

    /// The value converted to T (see the conversion rules above).
    template <class T>
    T GetAs() const;

    /// Converts the value in place to the kind `type`.
    void ConvertTo(EVariantType type);

    /// @name Explicit conversions
    /// Each is GetAs of its type (see the conversion rules above).
    //@{
    /// GetAs<bool>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator bool() const { return GetAs<bool>(); }
    /// GetAs<int>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator int() const { return GetAs<int>(); }
    /// GetAs<long long>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator long long() const { return GetAs<long long>(); }
    /// GetAs<unsigned int>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator unsigned int() const { return GetAs<unsigned int>(); }
    /// GetAs<float>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator float() const { return GetAs<float>(); }
    /// GetAs<double>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator double() const { return GetAs<double>(); }
    /// GetAs<char>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator char() const { return GetAs<char>(); }
    /// GetAs<signed char>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator signed char() const { return GetAs<signed char>(); }
    /// GetAs<unsigned char>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator unsigned char() const { return GetAs<unsigned char>(); }
    /// GetAs<short>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator short() const { return GetAs<short>(); }
    /// GetAs<unsigned short>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator unsigned short() const { return GetAs<unsigned short>(); }
    /// GetAs<unsigned long long>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator unsigned long long() const { return GetAs<unsigned long long>(); }
    /// GetAs<std::wstring>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator std::wstring() const { return GetAs<std::wstring>(); }
    /// GetAs<std::string>(); throws BxExceptionPreconditionViolation when the value does not convert.
    explicit operator std::string() const { return GetAs<std::string>(); }
    //@}

    /// @name Comparison
    /// Null equals null; numbers compare by value across kinds; strings
    /// compare lexicographically within their kind; anything else by tag.
    //@{
    bool operator==(const BxVariant& other) const;
    bool operator!=(const BxVariant& other) const { return !(*this == other); }
    bool operator<(const BxVariant& other) const;
    bool operator>(const BxVariant& other) const { return other < *this; }
    //@}

    /// True for the kinds that hold a number (bool and char included).
    static bool IsNumericType(EVariantType type) noexcept;
    /// True for the tags 0 to 18.
    static bool IsValidType(std::uint32_t type) noexcept { return type < eVT_Count; }

protected:
    /// The empty alternative of the reserved tags 10, 11 and 17, which hold nothing.
    struct Reserved
    {
        /// Reserved alternatives are all equal.
        bool operator==(const Reserved&) const = default;
    };
    /// The value, its alternative's index being the tag.
    using Storage = std::variant<std::monostate, bool, int, long long, unsigned int, float, double, char,
                                 std::wstring, void*, Reserved, Reserved, signed char, unsigned char, short,
                                 unsigned short, unsigned long long, Reserved, std::string>;

    /// @name Storage
    /// The value as a std::variant, for derived classes.
    //@{
    /// Read access to the value, for derived classes that visit it by kind.
    const Storage& storage() const noexcept { return m_value; }
    /// Write access to the value; a derived class that emplaces an alternative changes the tag with it.
    Storage& storage() noexcept { return m_value; }
    //@}

private:
    Storage m_value;
};

// GetAs is defined for exactly these types.
extern template BXBASE_API bool BxVariant::GetAs<bool>() const;
extern template BXBASE_API int BxVariant::GetAs<int>() const;
extern template BXBASE_API long long BxVariant::GetAs<long long>() const;
extern template BXBASE_API long BxVariant::GetAs<long>() const;
extern template BXBASE_API unsigned int BxVariant::GetAs<unsigned int>() const;
extern template BXBASE_API float BxVariant::GetAs<float>() const;
extern template BXBASE_API double BxVariant::GetAs<double>() const;
extern template BXBASE_API char BxVariant::GetAs<char>() const;
extern template BXBASE_API signed char BxVariant::GetAs<signed char>() const;
extern template BXBASE_API unsigned char BxVariant::GetAs<unsigned char>() const;
extern template BXBASE_API short BxVariant::GetAs<short>() const;
extern template BXBASE_API unsigned short BxVariant::GetAs<unsigned short>() const;
extern template BXBASE_API unsigned long long BxVariant::GetAs<unsigned long long>() const;
extern template BXBASE_API unsigned long BxVariant::GetAs<unsigned long>() const;
extern template BXBASE_API std::wstring BxVariant::GetAs<std::wstring>() const;
extern template BXBASE_API std::string BxVariant::GetAs<std::string>() const;
extern template BXBASE_API void* BxVariant::GetAs<void*>() const;
