// Persistence reader over a JSON object.
//
//   Persistence::CJsonDataReader reader(R"({"Major":1,"Minor":2,"Patch":3,"Label":""})");
//   version.ReadFrom(reader);
//
// Malformed JSON, JSON whose top level is not an object, or JSON nested deeper
// than the maximum depth (c_DefaultMaxDepth = 256 containers, the top-level
// object counting as one; a constructor argument changes it) throws
// Persistence::CException at construction; the depth is checked while
// parsing, so a hostile document is refused before it is built. A number that does not fit the
// requested type, or an entry of another JSON type, throws on reading.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/persistence/idatareader.h>

#include <memory>
#include <string>

namespace Persistence {

/// Persistence reader over a JSON object.
class BXBASE_API CJsonDataReader : public IDataReader
{
public:
    /// The default maximum nesting depth of objects and arrays.
    static constexpr unsigned int c_DefaultMaxDepth = 256;

    /// Parses `json`, refusing nesting deeper than `maxDepth` containers.
    explicit CJsonDataReader(const std::string& json, unsigned int maxDepth = c_DefaultMaxDepth);
    ~CJsonDataReader() override;
    CJsonDataReader(const CJsonDataReader&) = delete;
    CJsonDataReader& operator=(const CJsonDataReader&) = delete;

    /// The maximum nesting depth this reader was made with.
    unsigned int GetMaxDepth() const noexcept;

    bool Has(const std::string& key) const override;
    bool Read(const std::string& key, bool& value) const override;
    bool Read(const std::string& key, char& value) const override;
    bool Read(const std::string& key, signed char& value) const override;
    bool Read(const std::string& key, unsigned char& value) const override;
    bool Read(const std::string& key, short& value) const override;
    bool Read(const std::string& key, unsigned short& value) const override;
    bool Read(const std::string& key, int& value) const override;
    bool Read(const std::string& key, unsigned int& value) const override;
    bool Read(const std::string& key, long long& value) const override;
    bool Read(const std::string& key, unsigned long long& value) const override;
    bool Read(const std::string& key, float& value) const override;
    bool Read(const std::string& key, double& value) const override;
    bool Read(const std::string& key, std::string& value) const override;
    bool Read(const std::string& key, std::wstring& value) const override;
    /// Hands `object` a reader that views the nested object in place (no copy).
    bool ReadObject(const std::string& key, ISerializable& object) const override;

private:
    struct Impl;
    explicit CJsonDataReader(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_impl;
};

}  // namespace Persistence
