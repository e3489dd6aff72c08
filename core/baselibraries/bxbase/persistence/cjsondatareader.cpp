#include <bxbase/bxstringconvert.h>
#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/cjsondatareader.h>
#include <bxbase/persistence/iserializable.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace Persistence {

// The root reader owns the parsed document; a nested reader (ReadObject) only
// points at its subtree inside the document of the reader that made it.
struct CJsonDataReader::Impl
{
    nlohmann::json document;
    const nlohmann::json* object = &document;
    unsigned int maxDepth = c_DefaultMaxDepth;
};

namespace {

[[noreturn]] void fail(const std::string& key, const char* what)
{
    throw CException(__FILE__, __LINE__, "Persistence::CJsonDataReader::Read",
                     "entry \"" + key + "\": " + what);
}

// Reads an integer entry of type T, checking the JSON type and the range.
template <class T>
bool readInteger(const nlohmann::json& object, const std::string& key, T& value)
{
    auto it = object.find(key);
    if (it == object.end())
        return false;
    if (it->is_number_unsigned()) {
        const auto v = it->get<std::uint64_t>();
        if (v > static_cast<std::uint64_t>(std::numeric_limits<T>::max()))
            fail(key, "number out of range");
        value = static_cast<T>(v);
    } else if (it->is_number_integer()) {
        const auto v = it->get<std::int64_t>();
        if constexpr (std::is_unsigned_v<T>) {
            if (v < 0)
                fail(key, "number out of range");
        } else if (v < static_cast<std::int64_t>(std::numeric_limits<T>::min()) ||
                   v > static_cast<std::int64_t>(std::numeric_limits<T>::max())) {
            fail(key, "number out of range");
        }
        value = static_cast<T>(v);
    } else {
        fail(key, "not an integer");
    }
    return true;
}

template <class T>
bool readFloating(const nlohmann::json& object, const std::string& key, T& value)
{
    auto it = object.find(key);
    if (it == object.end())
        return false;
    if (it->is_null()) {
        value = std::numeric_limits<T>::quiet_NaN();
    } else if (it->is_number()) {
        const double v = it->get<double>();
        if (std::isfinite(v) && std::fabs(v) > static_cast<double>(std::numeric_limits<T>::max()))
            fail(key, "number out of range");
        value = static_cast<T>(v);
    } else
        fail(key, "not a number");
    return true;
}

}  // namespace

CJsonDataReader::CJsonDataReader(const std::string& json, unsigned int maxDepth)
    : m_impl(std::make_unique<Impl>())
{
    m_impl->maxDepth = maxDepth;
    // The parser reports the depth of every container it opens (0 for the
    // top level): refuse the first one beyond the limit, before it is built.
    const nlohmann::json::parser_callback_t checkDepth = [maxDepth](int depth, nlohmann::json::parse_event_t event,
                                                                    nlohmann::json&) {
        if ((event == nlohmann::json::parse_event_t::object_start ||
             event == nlohmann::json::parse_event_t::array_start) &&
            static_cast<unsigned int>(depth) >= maxDepth)
            throw CException(__FILE__, __LINE__, "Persistence::CJsonDataReader::CJsonDataReader",
                             "nesting deeper than " + std::to_string(maxDepth) + " levels");
        return true;
    };
    m_impl->document = nlohmann::json::parse(json, checkDepth, false);
    if (m_impl->document.is_discarded())
        throw CException(__FILE__, __LINE__, "Persistence::CJsonDataReader::CJsonDataReader", "malformed JSON");
    if (!m_impl->document.is_object())
        throw CException(__FILE__, __LINE__, "Persistence::CJsonDataReader::CJsonDataReader",
                         "the top level is not an object");
}

CJsonDataReader::CJsonDataReader(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}
CJsonDataReader::~CJsonDataReader() = default;

unsigned int CJsonDataReader::GetMaxDepth() const noexcept { return m_impl->maxDepth; }

bool CJsonDataReader::Has(const std::string& key) const { return m_impl->object->contains(key); }

bool CJsonDataReader::Read(const std::string& key, bool& value) const
{
    auto it = m_impl->object->find(key);
    if (it == m_impl->object->end())
        return false;
    if (!it->is_boolean())
        fail(key, "not a boolean");
    value = it->get<bool>();
    return true;
}

bool CJsonDataReader::Read(const std::string& key, char& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, signed char& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, unsigned char& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, short& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, unsigned short& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, int& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, unsigned int& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, long long& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, unsigned long long& value) const { return readInteger(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, float& value) const { return readFloating(*m_impl->object, key, value); }
bool CJsonDataReader::Read(const std::string& key, double& value) const { return readFloating(*m_impl->object, key, value); }

bool CJsonDataReader::Read(const std::string& key, std::string& value) const
{
    auto it = m_impl->object->find(key);
    if (it == m_impl->object->end())
        return false;
    if (!it->is_string())
        fail(key, "not a string");
    value = it->get<std::string>();
    return true;
}

bool CJsonDataReader::Read(const std::string& key, std::wstring& value) const
{
    std::string utf8;
    if (!Read(key, utf8))
        return false;
    try {
        value = BxStringConvert::Utf8ToWide(utf8);
    } catch (const BxException&) {
        fail(key, "malformed UTF-8");
    }
    return true;
}

bool CJsonDataReader::ReadObject(const std::string& key, ISerializable& object) const
{
    auto it = m_impl->object->find(key);
    if (it == m_impl->object->end())
        return false;
    if (!it->is_object())
        fail(key, "not an object");
    // A view of the subtree, not a copy: the nested reader lives only for
    // this call, inside this reader's lifetime.
    auto impl = std::make_unique<Impl>();
    impl->object = &*it;
    impl->maxDepth = m_impl->maxDepth;
    CJsonDataReader nested(std::move(impl));
    object.ReadFrom(nested);
    return true;
}

}  // namespace Persistence
