#include <vobase/objects/vosemanticversion.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxformat.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/persistence/idatareader.h>
#include <bxbase/persistence/idatawriter.h>

#include <cstdio>
#include <sstream>
#include <tuple>
#include <vector>

namespace {

// Reads one part with "%u"; false when it does not start with a number.
bool readPart(const std::string& part, std::uint32_t& value)
{
    unsigned int read = 0;
    if (std::sscanf(part.c_str(), "%u", &read) != 1)
        return false;
    value = read;
    return true;
}

// Parses into the given fields, which the caller has reset; the fields read
// before a failure keep their values.
bool parse(const char* text, std::uint32_t& major, std::uint32_t& minor, std::uint32_t& patch, std::string& label)
{
    if (!text || !*text)
        return true;
    std::string rest(text);
    if (const auto dash = rest.find('-'); dash != std::string::npos) {
        label = rest.substr(dash + 1);
        rest.erase(dash);
    }
    std::vector<std::string> parts;
    std::istringstream stream(rest);
    for (std::string part; std::getline(stream, part, '.');)
        parts.push_back(part);
    if (parts.size() >= 3 && !readPart(parts[2], patch))
        return false;
    if (parts.size() >= 2 && !readPart(parts[1], minor))
        return false;
    if (!parts.empty() && !readPart(parts[0], major))
        return false;
    return true;
}

std::string narrow(const wchar_t* text)
{
    return text ? BxStringConvert::WideToUtf8Lossy(text) : std::string();
}

}  // namespace

VoSemanticVersion::VoSemanticVersion(std::uint32_t major) : m_major(major) {}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor) : m_major(major), m_minor(minor) {}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch)
    : m_major(major), m_minor(minor), m_patch(patch)
{
}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                                     const std::string& label)
    : m_major(major), m_minor(minor), m_patch(patch), m_label(label)
{
}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                                     const std::wstring& label)
    : VoSemanticVersion(major, minor, patch, BxStringConvert::WideToUtf8Lossy(label))
{
}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const char* label)
    : VoSemanticVersion(major, minor, patch, std::string(label ? label : ""))
{
}

VoSemanticVersion::VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                                     const wchar_t* label)
    : VoSemanticVersion(major, minor, patch, narrow(label))
{
}

VoSemanticVersion::VoSemanticVersion(const std::string& text) { assign(text.c_str()); }
VoSemanticVersion::VoSemanticVersion(const std::wstring& text) { assign(narrow(text.c_str()).c_str()); }
VoSemanticVersion::VoSemanticVersion(const char* text) { assign(text); }
VoSemanticVersion::VoSemanticVersion(const wchar_t* text) { assign(narrow(text).c_str()); }

VoSemanticVersion& VoSemanticVersion::operator=(const std::string& text)
{
    assign(text.c_str());
    return *this;
}

VoSemanticVersion& VoSemanticVersion::operator=(const std::wstring& text)
{
    assign(narrow(text.c_str()).c_str());
    return *this;
}

VoSemanticVersion& VoSemanticVersion::operator=(const char* text)
{
    assign(text);
    return *this;
}

VoSemanticVersion& VoSemanticVersion::operator=(const wchar_t* text)
{
    assign(narrow(text).c_str());
    return *this;
}

void VoSemanticVersion::assign(const char* text)
{
    m_major = m_minor = m_patch = 0;
    m_label.clear();
    if (!parse(text, m_major, m_minor, m_patch, m_label))
        BX_THROW(BxException, "VoSemanticVersion::operator =",
                 "\"" + std::string(text) + "\" is not a semantic version");
}

std::string VoSemanticVersion::ToString() const
{
    std::string text = BxFormat::Narrow("%u.%u.%u", m_major, m_minor, m_patch);
    if (!m_label.empty())
        text += "-" + m_label;
    return text;
}

bool VoSemanticVersion::IsValid(const char* text)
{
    std::uint32_t major = 0, minor = 0, patch = 0;
    std::string label;
    return parse(text, major, minor, patch, label);
}

bool VoSemanticVersion::IsValid(const std::string& text)
{
    return IsValid(text.c_str());
}

bool VoSemanticVersion::IsValid(const std::wstring& text)
{
    return IsValid(narrow(text.c_str()).c_str());
}

bool VoSemanticVersion::IsValid(const wchar_t* text)
{
    // Only the empty text is parsed; any other text is taken as valid.
    if (!text || !*text)
        return IsValid("");
    return true;
}

bool VoSemanticVersion::operator==(const VoSemanticVersion& other) const noexcept
{
    return m_major == other.m_major && m_minor == other.m_minor && m_patch == other.m_patch;
}

bool VoSemanticVersion::operator<(const VoSemanticVersion& other) const noexcept
{
    return std::tie(m_major, m_minor, m_patch) < std::tie(other.m_major, other.m_minor, other.m_patch);
}

void VoSemanticVersion::ReadFrom(const Persistence::IDataReader& reader)
{
    unsigned int major = 0, minor = 0, patch = 0;
    std::string label;
    reader.ReadRequired("Major", major);
    reader.ReadRequired("Minor", minor);
    reader.ReadRequired("Patch", patch);
    reader.ReadRequired("Label", label);
    m_major = major;
    m_minor = minor;
    m_patch = patch;
    m_label = std::move(label);
}

void VoSemanticVersion::WriteTo(Persistence::IDataWriter& writer) const
{
    writer.Write("Major", static_cast<unsigned int>(m_major));
    writer.Write("Minor", static_cast<unsigned int>(m_minor));
    writer.Write("Patch", static_cast<unsigned int>(m_patch));
    writer.Write("Label", m_label);
}
