#include <vobase/objects/vovariant.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamwritebinary.h>

#include <string>
#include <type_traits>
#include <variant>

BX_IMPLEMENT_RTTI_EX(VoVariant, L"VoVariant", return std::unique_ptr<IObject>(new VoVariant), true, nullptr)

namespace {

constexpr const char* c_function = "VoVariant::Serialize";

// Reaches the protected storage of any BxVariant through a member pointer
// taken in a derived class, so that writing needs no conversion.
struct StorageAccess : BxVariant
{
    static const Storage& of(const BxVariant& value)
    {
        constexpr auto accessor = static_cast<const Storage& (BxVariant::*)() const noexcept>(&StorageAccess::storage);
        return (value.*accessor)();
    }
};

template <class T>
void readAs(BxStreamReadBinary& stream, BxVariant& value)
{
    T read{};
    stream >> read;
    value.SetNull();
    value = std::move(read);
}

}  // namespace

void VoVariant::WriteValue(BxStreamWriteBinary& stream, const BxVariant& value)
{
    const std::uint32_t tag = value.GetType();
    std::visit(
        [&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, void*> || std::is_same_v<T, Reserved>) {
                BX_THROW(BxException, c_function, "tag " + std::to_string(tag) + " has no binary form");
            } else {
                stream << static_cast<unsigned int>(tag);
                if constexpr (!std::is_same_v<T, std::monostate>)
                    stream << v;
            }
        },
        StorageAccess::of(value));
}

void VoVariant::ReadValue(BxStreamReadBinary& stream, BxVariant& value)
{
    unsigned int tag = 0;
    stream >> tag;
    switch (tag) {
    case eVT_Null: value.SetNull(); break;
    case eVT_Bool: readAs<bool>(stream, value); break;
    case eVT_Int: readAs<int>(stream, value); break;
    case eVT_Int64: readAs<long long>(stream, value); break;
    case eVT_UInt: readAs<unsigned int>(stream, value); break;
    case eVT_Float: readAs<float>(stream, value); break;
    case eVT_Double: readAs<double>(stream, value); break;
    case eVT_Char: readAs<char>(stream, value); break;
    case eVT_WString: readAs<std::wstring>(stream, value); break;
    case eVT_Int8: readAs<signed char>(stream, value); break;
    case eVT_UInt8: readAs<unsigned char>(stream, value); break;
    case eVT_Int16: readAs<short>(stream, value); break;
    case eVT_UInt16: readAs<unsigned short>(stream, value); break;
    case eVT_UInt64: readAs<unsigned long long>(stream, value); break;
    case eVT_String: readAs<std::string>(stream, value); break;
    default:
        BX_THROW(BxExceptionStream, c_function, "tag " + std::to_string(tag) + " has no binary form");
    }
}

void VoVariant::Serialize(BxStreamWriteBinary& stream) const
{
    WriteValue(stream, *this);
}

void VoVariant::Serialize(BxStreamReadBinary& stream)
{
    ReadValue(stream, *this);
}
