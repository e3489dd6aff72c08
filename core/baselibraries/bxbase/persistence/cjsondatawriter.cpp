#include <bxbase/bxstringconvert.h>
#include <bxbase/persistence/cjsondatawriter.h>
#include <bxbase/persistence/iserializable.h>

#include <nlohmann/json.hpp>

#include <cmath>

namespace Persistence {

struct CJsonDataWriter::Impl
{
    nlohmann::json object = nlohmann::json::object();
};

CJsonDataWriter::CJsonDataWriter() : m_impl(std::make_unique<Impl>()) {}
CJsonDataWriter::~CJsonDataWriter() = default;

std::string CJsonDataWriter::ToString(int indent) const
{
    return m_impl->object.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

void CJsonDataWriter::Write(const std::string& key, bool value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, char value) { m_impl->object[key] = static_cast<int>(value); }
void CJsonDataWriter::Write(const std::string& key, signed char value) { m_impl->object[key] = static_cast<int>(value); }
void CJsonDataWriter::Write(const std::string& key, unsigned char value) { m_impl->object[key] = static_cast<unsigned>(value); }
void CJsonDataWriter::Write(const std::string& key, short value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, unsigned short value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, int value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, unsigned int value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, long long value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, unsigned long long value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, float value) { Write(key, static_cast<double>(value)); }
void CJsonDataWriter::Write(const std::string& key, double value)
{
    if (std::isfinite(value))
        m_impl->object[key] = value;
    else
        m_impl->object[key] = nullptr;
}
void CJsonDataWriter::Write(const std::string& key, const std::string& value) { m_impl->object[key] = value; }
void CJsonDataWriter::Write(const std::string& key, const std::wstring& value)
{
    m_impl->object[key] = BxStringConvert::WideToUtf8Lossy(value);
}

void CJsonDataWriter::WriteObject(const std::string& key, const ISerializable& object)
{
    CJsonDataWriter nested;
    object.WriteTo(nested);
    m_impl->object[key] = std::move(nested.m_impl->object);
}

}  // namespace Persistence
