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
    using BxVariant::Storage;

    static const Storage& of(const BxVariant& value)
    {
        constexpr auto accessor = static_cast<const Storage& (BxVariant::*)() const noexcept>(&StorageAccess::storage);
        return (value.*accessor)();
    }
    static Storage& of(BxVariant& value)
    {
        constexpr auto accessor = static_cast<Storage& (BxVariant::*)() noexcept>(&StorageAccess::storage);
        return (value.*accessor)();
    }
};

// Reads the value of kind `Tag` and stores it under that tag; on failure the
// variant keeps its value.
template <std::size_t Tag>
void readAs(BxStreamReadBinary& stream, BxVariant& value)
{
    std::variant_alternative_t<Tag, StorageAccess::Storage> read{};
    stream >> read;
    StorageAccess::of(value).template emplace<Tag>(std::move(read));
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
    case eVT_Bool: readAs<eVT_Bool>(stream, value); break;
    case eVT_Int: readAs<eVT_Int>(stream, value); break;
    case eVT_Int64: readAs<eVT_Int64>(stream, value); break;
    case eVT_UInt: readAs<eVT_UInt>(stream, value); break;
    case eVT_Float: readAs<eVT_Float>(stream, value); break;
    case eVT_Double: readAs<eVT_Double>(stream, value); break;
    case eVT_Char: readAs<eVT_Char>(stream, value); break;
    case eVT_WString: readAs<eVT_WString>(stream, value); break;
    case eVT_Int8: readAs<eVT_Int8>(stream, value); break;
    case eVT_UInt8: readAs<eVT_UInt8>(stream, value); break;
    case eVT_Int16: readAs<eVT_Int16>(stream, value); break;
    case eVT_UInt16: readAs<eVT_UInt16>(stream, value); break;
    case eVT_UInt64: readAs<eVT_UInt64>(stream, value); break;
    case eVT_String: readAs<eVT_String>(stream, value); break;
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
