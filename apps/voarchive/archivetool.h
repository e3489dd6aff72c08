// The work behind voarchive's commands, one member per command.
//
//   ArchiveTool tool;
//   tool.Pack("notes.txt", "notes.vac", ArchiveTool::SPackOptions{});
//   ArchiveTool::SInfo info = tool.Info("notes.vac");
//
// Every failure throws ArchiveError with a one-line text that names the file
// and what is wrong. Outputs are written to a temporary name beside the
// target and renamed when complete, so a failure never leaves a half-written
// file behind.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

class ArchiveError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class ArchiveTool
{
public:
    struct SPackOptions
    {
        int level = 0;       ///< 0 zlib's default level, 1 fastest, 2 best
        bool store = false;  ///< header of type 0 and the bytes as they are
    };

    struct SInfo
    {
        std::string signature;        ///< "current", "old"
        std::uint32_t type = 0;       ///< 0 stored, 2 ZIP
        std::uint32_t declaredSize = 0;
        std::uint64_t payloadSize = 0;  ///< bytes of the unpacked payload
        std::uint64_t fileSize = 0;
    };

    void Pack(const std::string& input, const std::string& output, const SPackOptions& options) const;
    void Unpack(const std::string& input, const std::string& output) const;
    /// Writes the payload to standard output.
    void Cat(const std::string& input) const;
    SInfo Info(const std::string& input) const;

private:
    /// Reads the archive's payload, hands each block to `sink` and checks the
    /// payload against the header's declared size.
    template <class Sink>
    std::uint64_t readPayload(const std::string& input, const char* label, Sink&& sink) const;
};
