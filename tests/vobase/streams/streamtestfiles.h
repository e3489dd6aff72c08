// Shared helpers of the stream tests: a private temporary directory and
// whole-file reading and writing.
#pragma once

#include <bxbase/bxstringconvert.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace streamtest {

using Bytes = std::vector<unsigned char>;

/// A fresh directory below /tmp, removed with everything in it at the end.
class CTempDir
{
public:
    CTempDir()
    {
        std::string pattern = "/tmp/vobase-streams-XXXXXX";
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("mkdtemp failed");
        m_path = pattern;
    }
    ~CTempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    /// The path of `name` inside the directory, narrow and wide.
    std::string Narrow(const std::string& name) const { return (m_path / name).string(); }
    std::wstring Wide(const std::string& name) const { return BxStringConvert::Utf8ToWide(Narrow(name)); }
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline Bytes ReadAll(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteAll(const std::string& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// Text-like bytes: words from a small vocabulary, so that they compress well.
inline Bytes TextLike(std::size_t size, unsigned seed = 1)
{
    static const char* words[] = {"sensor ", "value ", "frame ", "alpha ", "beta ", "42 ", "\n", "node ", "x="};
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < size)
        text += words[random() % std::size(words)];
    return Bytes(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
}

/// Incompressible bytes.
inline Bytes RandomBytes(std::size_t size, unsigned seed = 2)
{
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (auto& b : bytes)
        b = static_cast<unsigned char>(random());
    return bytes;
}

/// The 28-byte archive header built by hand: 20 signature bytes, type, size.
inline Bytes Header(const char* signature, std::uint32_t type, std::uint32_t size)
{
    Bytes header(signature, signature + 20);
    for (int i = 0; i < 4; ++i)
        header.push_back(static_cast<unsigned char>(type >> (8 * i)));
    for (int i = 0; i < 4; ++i)
        header.push_back(static_cast<unsigned char>(size >> (8 * i)));
    return header;
}

}  // namespace streamtest
