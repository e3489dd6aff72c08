// Persistence writer that builds a JSON object.
//
//   Persistence::CJsonDataWriter writer;
//   version.WriteTo(writer);
//   std::string json = writer.ToString();   // {"Label":"","Major":1,...}
//
// Numbers become JSON numbers, wide text UTF-8 strings, nested objects JSON
// objects. Non-finite floating-point values are written as null (JSON has no
// other form for them) and read back as NaN.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/persistence/idatawriter.h>

#include <memory>
#include <string>

namespace Persistence {

/// Persistence writer that builds a JSON object.
class BXBASE_API CJsonDataWriter : public IDataWriter
{
public:
    CJsonDataWriter();
    ~CJsonDataWriter() override;
    CJsonDataWriter(const CJsonDataWriter&) = delete;
    CJsonDataWriter& operator=(const CJsonDataWriter&) = delete;

    /// The JSON text; `indent` < 0 gives the compact form.
    std::string ToString(int indent = -1) const;

    void Write(const std::string& key, bool value) override;
    void Write(const std::string& key, char value) override;
    void Write(const std::string& key, signed char value) override;
    void Write(const std::string& key, unsigned char value) override;
    void Write(const std::string& key, short value) override;
    void Write(const std::string& key, unsigned short value) override;
    void Write(const std::string& key, int value) override;
    void Write(const std::string& key, unsigned int value) override;
    void Write(const std::string& key, long long value) override;
    void Write(const std::string& key, unsigned long long value) override;
    void Write(const std::string& key, float value) override;
    void Write(const std::string& key, double value) override;
    void Write(const std::string& key, const std::string& value) override;
    void Write(const std::string& key, const std::wstring& value) override;
    using IDataWriter::Write;
    void WriteObject(const std::string& key, const ISerializable& object) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace Persistence
