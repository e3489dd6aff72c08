// A semantic version: major.minor.patch with an optional label.
//
//   VoSemanticVersion v("1.2.3-beta.1");   // 1, 2, 3, label "beta.1"
//   v.ToString();                          // "1.2.3-beta.1"
//   VoSemanticVersion("1.2") == VoSemanticVersion(1, 2, 0);   // true
//   v = "x.1";                             // throws; minor is already 1
//
// Parsing: the label is everything after the first "-"; the rest is split at
// "." and read last part first (patch, then minor, then major) with "%u", each
// part having to start with a number; parts beyond the third are ignored and
// the empty text is 0.0.0. Wide text is converted to narrow text first.
//
// Comparison: == and != ignore the label; < and > are lexicographic over
// (major, minor, patch); <= and >= compare the major number alone, so that
// 1.9.0 <= 1.2.0 is true. This asymmetry is deliberate and kept.
//
// The wide IsValid(const wchar_t*) answers true for every text without
// parsing it (kept as it is); the other IsValid overloads parse.
//
// Persistence form: "Major", "Minor", "Patch", "Label".
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/persistence/iserializable.h>

#include <cstdint>
#include <string>

/// A semantic version: major.minor.patch with an optional label.
class VOBASE_API VoSemanticVersion : public Persistence::ISerializable
{
public:
    /// Version 0.0.0 without a label.
    VoSemanticVersion() = default;
    /// @name Construction from numbers
    /// The numbers not given are 0; a label given as null is empty.
    //@{
    /// Version major.0.0 without a label.
    explicit VoSemanticVersion(std::uint32_t major);
    /// Version major.minor.0 without a label.
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor);
    /// Version major.minor.patch without a label.
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch);
    /// Version major.minor.patch-label; the label is kept as given (not checked).
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const std::string& label);
    /// The same with a wide label, converted to UTF-8.
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const std::wstring& label);
    /// The same with a narrow C string; null gives the empty label.
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const char* label);
    /// The same with a wide C string, converted to UTF-8; null gives the empty label.
    VoSemanticVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, const wchar_t* label);
    //@}
    /// @name Construction from text
    //@{
    /// Parses the text; invalid text throws BxException at "VoSemanticVersion::operator =".
    VoSemanticVersion(const std::string& text);
    VoSemanticVersion(const std::wstring& text);
    VoSemanticVersion(const char* text);
    VoSemanticVersion(const wchar_t* text);
    //@}
    /// @name Copy and move
    /// Copies and moves take the numbers and the label.
    //@{
    VoSemanticVersion(const VoSemanticVersion&) = default;
    VoSemanticVersion(VoSemanticVersion&&) noexcept = default;
    VoSemanticVersion& operator=(const VoSemanticVersion&) = default;
    VoSemanticVersion& operator=(VoSemanticVersion&&) noexcept = default;
    //@}
    /// Nothing to release beyond the label.
    ~VoSemanticVersion() override = default;

    /// @name Assignment from text
    /// Resets to 0.0.0, then parses into the fields; invalid text throws
    /// BxException at "VoSemanticVersion::operator =" and the fields parsed
    /// before the failure stay.
    //@{
    VoSemanticVersion& operator=(const std::string& text);
    VoSemanticVersion& operator=(const std::wstring& text);
    VoSemanticVersion& operator=(const char* text);
    VoSemanticVersion& operator=(const wchar_t* text);
    //@}

    /// Sets the major number.
    void SetVersionMajor(std::uint32_t major) noexcept { m_major = major; }
    /// Sets the minor number.
    void SetVersionMinor(std::uint32_t minor) noexcept { m_minor = minor; }
    /// Sets the patch number.
    void SetVersionPatch(std::uint32_t patch) noexcept { m_patch = patch; }
    /// Sets the label; null clears it.
    void SetLabel(const char* label) { m_label = label ? label : ""; }
    /// The major number.
    std::uint32_t GetVersionMajor() const noexcept { return m_major; }
    /// The minor number.
    std::uint32_t GetVersionMinor() const noexcept { return m_minor; }
    /// The patch number.
    std::uint32_t GetVersionPatch() const noexcept { return m_patch; }
    /// The label (empty when there is none).
    const std::string& GetLabel() const noexcept { return m_label; }

    /// "major.minor.patch", plus "-label" when the label is not empty.
    std::string ToString() const;

    /// True when the text parses (null counts as the empty text, 0.0.0).
    /// @name Validity
    /// True when the text parses (null counts as the empty text, 0.0.0).
    //@{
    static bool IsValid(const char* text);
    static bool IsValid(const std::string& text);
    static bool IsValid(const std::wstring& text);
    //@}
    /// True for every text, without parsing (see the top of this file).
    static bool IsValid(const wchar_t* text);

    /// Equal numbers; the label is ignored.
    bool operator==(const VoSemanticVersion& other) const noexcept;
    /// Different numbers; the label is ignored.
    bool operator!=(const VoSemanticVersion& other) const noexcept { return !(*this == other); }
    /// Lexicographic over (major, minor, patch).
    bool operator<(const VoSemanticVersion& other) const noexcept;
    /// Lexicographic over (major, minor, patch).
    bool operator>(const VoSemanticVersion& other) const noexcept { return other < *this; }
    /// Compares the major number only.
    bool operator<=(const VoSemanticVersion& other) const noexcept { return m_major <= other.m_major; }
    /// Compares the major number only.
    bool operator>=(const VoSemanticVersion& other) const noexcept { return m_major >= other.m_major; }

    /// "VoSemanticVersion".
    std::string GetTypeName() const override { return "VoSemanticVersion"; }
    /// Reads "Major", "Minor", "Patch" and "Label"; a missing one throws Persistence::CException.
    void ReadFrom(const Persistence::IDataReader& reader) override;
    /// Writes "Major", "Minor", "Patch" and "Label".
    void WriteTo(Persistence::IDataWriter& writer) const override;

private:
    void assign(const char* text);

    std::uint32_t m_major = 0;
    std::uint32_t m_minor = 0;
    std::uint32_t m_patch = 0;
    std::string m_label;
};
