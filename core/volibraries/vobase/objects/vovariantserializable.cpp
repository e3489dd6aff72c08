#include <vobase/objects/vovariantserializable.h>

#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/idatareader.h>
#include <bxbase/persistence/idatawriter.h>

namespace {

constexpr const char* c_readFrom = "VoVariantSerializable::ReadFrom";
constexpr const char* c_writeTo = "VoVariantSerializable::WriteTo";
constexpr const char* c_keyType = "UInt32VariantType";
constexpr const char* c_keyValue = "Value";

template <class T>
void writeAs(Persistence::IDataWriter& writer, const BxVariant& value)
{
    writer.Write(c_keyValue, value.GetAs<T>());
}

template <class T>
BxVariant readAs(const Persistence::IDataReader& reader)
{
    T value{};
    bool present = false;
    try {
        present = reader.Read(c_keyValue, value);
    } catch (const BxException& e) {
        BX_THROW(Persistence::CException, c_readFrom, "unreadable \"Value\": " + e.GetMessage());
    }
    if (!present)
        BX_THROW(Persistence::CException, c_readFrom, "missing entry \"Value\"");
    return BxVariant(std::move(value));
}

}  // namespace

void VoVariantSerializable::WriteTo(Persistence::IDataWriter& writer) const
{
    const EVariantType tag = GetType();
    switch (tag) {
    case eVT_Null: break;
    case eVT_Bool: writeAs<bool>(writer, *this); break;
    case eVT_Int: writeAs<int>(writer, *this); break;
    case eVT_Int64: writeAs<long long>(writer, *this); break;
    case eVT_UInt: writeAs<unsigned int>(writer, *this); break;
    case eVT_Float: writeAs<float>(writer, *this); break;
    case eVT_Double: writeAs<double>(writer, *this); break;
    case eVT_Char: writeAs<char>(writer, *this); break;
    case eVT_WString: writeAs<std::wstring>(writer, *this); break;
    case eVT_Int8: writeAs<signed char>(writer, *this); break;
    case eVT_UInt8: writeAs<unsigned char>(writer, *this); break;
    case eVT_Int16: writeAs<short>(writer, *this); break;
    case eVT_UInt16: writeAs<unsigned short>(writer, *this); break;
    case eVT_UInt64: writeAs<unsigned long long>(writer, *this); break;
    case eVT_String: writeAs<std::string>(writer, *this); break;
    default:
        BX_THROW(Persistence::CException, c_writeTo, "tag " + std::to_string(tag) + " has no persistence form");
    }
    writer.Write(c_keyType, static_cast<unsigned int>(tag));
}

void VoVariantSerializable::ReadFrom(const Persistence::IDataReader& reader)
{
    unsigned int tag = 0;
    bool present = false;
    try {
        present = reader.Read(c_keyType, tag);
    } catch (const BxException& e) {
        BX_THROW(Persistence::CException, c_readFrom, "unreadable \"UInt32VariantType\": " + e.GetMessage());
    }
    if (!present)
        BX_THROW(Persistence::CException, c_readFrom, "missing entry \"UInt32VariantType\"");

    BxVariant value;
    switch (tag) {
    case eVT_Null: break;
    case eVT_Bool: value = readAs<bool>(reader); break;
    case eVT_Int: value = readAs<int>(reader); break;
    case eVT_Int64: value = readAs<long long>(reader); break;
    case eVT_UInt: value = readAs<unsigned int>(reader); break;
    case eVT_Float: value = readAs<float>(reader); break;
    case eVT_Double: value = readAs<double>(reader); break;
    case eVT_Char: value = readAs<char>(reader); break;
    case eVT_WString: value = readAs<std::wstring>(reader); break;
    case eVT_Int8: value = readAs<signed char>(reader); break;
    case eVT_UInt8: value = readAs<unsigned char>(reader); break;
    case eVT_Int16: value = readAs<short>(reader); break;
    case eVT_UInt16: value = readAs<unsigned short>(reader); break;
    case eVT_UInt64: value = readAs<unsigned long long>(reader); break;
    case eVT_String: value = readAs<std::string>(reader); break;
    default:
        BX_THROW(Persistence::CException, c_readFrom, "tag " + std::to_string(tag) + " is not supported");
    }
    BxVariant::operator=(std::move(value));
}
