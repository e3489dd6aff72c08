#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/iserializable.h>

#include <algorithm>
#include <vector>

namespace {

// Strings of unknown remaining size grow by at most this many bytes at a time,
// so that a corrupt length cannot allocate more than the data delivers.
constexpr std::size_t c_growStep = 1 << 20;

}  // namespace

std::size_t BxStreamReadBinary::readSlow(void* data, std::size_t count)
{
    auto* out = static_cast<std::byte*>(data);
    const std::size_t fromArea = getAreaSize();
    if (fromArea) {
        std::memcpy(out, m_get, fromArea);
        m_get += fromArea;
    }
    std::size_t done = fromArea;
    while (done < count) {
        const std::size_t got = read(out + done, count - done);
        if (got == 0)
            break;
        done += got;
        // A stream may have lent a fresh get area during read(); use it first.
        const std::size_t more = std::min(getAreaSize(), count - done);
        if (more) {
            std::memcpy(out + done, m_get, more);
            m_get += more;
            done += more;
        }
    }
    return done;
}

void BxStreamReadBinary::ReadExactly(void* data, std::size_t count, const char* functionName)
{
    if (ReadBuffer(data, count) != count)
        throw BxExceptionStream(__FILE__, __LINE__, functionName, "unexpected end of data");
}

unsigned int BxStreamReadBinary::ReadAndCompareVersion(unsigned int maxVersion)
{
    std::uint32_t version;
    ReadExactly(&version, sizeof version, "BxStreamReadBinary::ReadAndCompareVersion");
    if (version > maxVersion)
        throw BxExceptionWrongFileVersion(__FILE__, __LINE__, "BxStreamReadBinary::ReadAndCompareVersion",
                                          "version " + std::to_string(version) + " is newer than " +
                                              std::to_string(maxVersion));
    return version;
}

std::uint32_t BxStreamReadBinary::readCount(std::uint64_t unitSize, const char* functionName)
{
    std::uint32_t count;
    ReadExactly(&count, sizeof count, functionName);
    if (const auto left = remaining(); left && std::uint64_t(count) * unitSize > *left)
        throw BxExceptionStream(__FILE__, __LINE__, functionName, "declared length exceeds the remaining data");
    return count;
}

BxStreamReadBinary& BxStreamReadBinary::operator>>(std::string& v)
{
    const std::uint32_t count = readCount(1, "BxStreamReadBinary::operator >>");
    v.clear();
    while (v.size() < count) {
        const std::size_t done = v.size();
        const std::size_t step = std::min<std::size_t>(count - done, c_growStep);
        v.resize(done + step);
        ReadExactly(v.data() + done, step, "BxStreamReadBinary::operator >>");
    }
    return *this;
}

BxStreamReadBinary& BxStreamReadBinary::operator>>(std::wstring& v)
{
    const std::uint32_t count = readCount(sizeof(char16_t), "BxStreamReadBinary::operator >>");
    std::u16string units;
    while (units.size() < count) {
        const std::size_t done = units.size();
        const std::size_t step = std::min<std::size_t>(count - done, c_growStep / sizeof(char16_t));
        units.resize(done + step);
        ReadExactly(units.data() + done, step * sizeof(char16_t), "BxStreamReadBinary::operator >>");
    }
    v = BxStringConvert::Utf16ToWide(units);
    return *this;
}

std::unique_ptr<ISerializable> BxStreamReadBinary::ReadChunk()
{
    std::wstring className;
    *this >> className;
    const std::uint32_t size = readCount(1, "BxStreamReadBinary::ReadChunk");
    std::vector<std::byte> body;
    while (body.size() < size) {
        const std::size_t done = body.size();
        const std::size_t step = std::min<std::size_t>(size - done, c_growStep);
        body.resize(done + step);
        ReadExactly(body.data() + done, step, "BxStreamReadBinary::ReadChunk");
    }
    const BxRTTI* rtti = BxRTTI::Find(className);
    if (!rtti)
        throw BxExceptionStream(__FILE__, __LINE__, "BxStreamReadBinary::ReadChunk", L"unknown class " + className);
    std::unique_ptr<IObject> object = rtti->CreateObject();
    auto* serializable = dynamic_cast<ISerializable*>(object.get());
    if (!serializable)
        throw BxExceptionStream(__FILE__, __LINE__, "BxStreamReadBinary::ReadChunk",
                                L"class " + className + L" cannot be created as a serializable object");
    BxStreamReadBinaryBuffer in(body.data(), body.size());
    serializable->Serialize(in);
    if (in.GetPosition() != body.size())
        throw BxExceptionStream(__FILE__, __LINE__, "BxStreamReadBinary::ReadChunk",
                                "the object did not read its whole chunk");
    object.release();
    return std::unique_ptr<ISerializable>(serializable);
}
