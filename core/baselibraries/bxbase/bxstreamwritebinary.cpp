#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamwritebinary.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/iserializable.h>

#include <limits>

namespace {

std::uint32_t checkedCount(std::size_t count)
{
    if (count > std::numeric_limits<std::uint32_t>::max())
        throw BxExceptionStream(__FILE__, __LINE__, "BxStreamWriteBinary::operator <<",
                                "string longer than 4294967295 units");
    return static_cast<std::uint32_t>(count);
}

}  // namespace

BxStreamWriteBinary& BxStreamWriteBinary::operator<<(std::string_view v)
{
    *this << checkedCount(v.size());
    WriteBuffer(v.data(), v.size());
    return *this;
}

BxStreamWriteBinary& BxStreamWriteBinary::operator<<(std::wstring_view v)
{
    const std::u16string units = BxStringConvert::WideToUtf16(v);
    *this << checkedCount(units.size());
    WriteBuffer(units.data(), units.size() * sizeof(char16_t));  // little-endian target
    return *this;
}

void BxStreamWriteBinary::WriteChunk(const ISerializable& object)
{
    BxStreamWriteBinaryBuffer body;
    object.Serialize(body);
    *this << std::wstring_view(object.GetClassNameW());
    *this << checkedCount(body.GetCount());
    WriteBuffer(body.GetData(), body.GetCount());
}
