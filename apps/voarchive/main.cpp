// voarchive: packs files into the framework's compressed-archive format and
// back.
//
//   voarchive pack IN OUT [--level 0|1|2] [--store]
//   voarchive unpack IN OUT
//   voarchive info FILE
//   voarchive cat FILE
//
// Exit codes: 0 success, 1 wrong usage, 2 the command failed (a file that
// cannot be read or written, or an archive that is not valid).
#include "archivetool.h"

#include <bxbase/bxversion.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int c_exitUsage = 1;
constexpr int c_exitFailure = 2;

const char* const c_usage =
    "usage: voarchive COMMAND ...\n"
    "\n"
    "  pack IN OUT [--level 0|1|2] [--store]\n"
    "                     pack IN into the archive OUT (ZIP compression; level 0 is zlib's\n"
    "                     default, 1 the fastest, 2 the best; --store keeps the bytes as they are)\n"
    "  unpack IN OUT      write the payload of the archive IN to OUT\n"
    "  info FILE          show the signature, the type, the declared and actual payload size\n"
    "  cat FILE           write the payload of the archive FILE to standard output\n"
    "  --help             show this text\n"
    "  --version          show the version\n"
    "\n"
    "Paths expand environment references ($NAME, ${NAME}, %NAME%) as all framework paths do.\n"
    "Exit codes: 0 success, 1 wrong usage, 2 failure.\n";

int usageError(const std::string& message)
{
    std::fprintf(stderr, "voarchive: %s\n%s", message.c_str(), c_usage);
    return c_exitUsage;
}

const char* typeName(std::uint32_t type) { return type == 2 ? "ZIP" : "stored"; }

int pack(const std::vector<std::string>& args)
{
    std::vector<std::string> paths;
    ArchiveTool::SPackOptions options;
    for (std::size_t k = 0; k < args.size(); ++k) {
        if (args[k] == "--store") {
            options.store = true;
        } else if (args[k] == "--level") {
            if (k + 1 >= args.size() || args[k + 1].size() != 1 || args[k + 1][0] < '0' || args[k + 1][0] > '2')
                return usageError("--level needs 0, 1 or 2");
            options.level = args[++k][0] - '0';
        } else {
            paths.push_back(args[k]);
        }
    }
    if (paths.size() != 2)
        return usageError("pack needs IN and OUT");
    ArchiveTool().Pack(paths[0], paths[1], options);
    return 0;
}

int info(const std::string& path)
{
    const ArchiveTool::SInfo info = ArchiveTool().Info(path);
    std::printf("file:           %s (%llu bytes)\n", path.c_str(), static_cast<unsigned long long>(info.fileSize));
    std::printf("signature:      %s\n", info.signature.c_str());
    std::printf("type:           %u (%s)\n", info.type, typeName(info.type));
    std::printf("declared size:  %u bytes%s\n", info.declaredSize, info.declaredSize == 0xFFFFFFFFu ? " (saturated)" : "");
    std::printf("payload size:   %llu bytes\n", static_cast<unsigned long long>(info.payloadSize));
    if (info.payloadSize)
        std::printf("ratio:          %.1f%% (file size / payload size)\n", 100.0 * info.fileSize / info.payloadSize);
    return 0;
}

int run(const std::vector<std::string>& args)
{
    if (args.empty())
        return usageError("no command given");
    const std::string& command = args[0];
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (command == "--help" || command == "-h") {
        std::fputs(c_usage, stdout);
        return 0;
    }
    if (command == "--version") {
        std::printf("voarchive %s\n", BxGetVersionString());
        return 0;
    }
    if (command == "pack")
        return pack(rest);
    if (command == "unpack") {
        if (rest.size() != 2)
            return usageError("unpack needs IN and OUT");
        ArchiveTool().Unpack(rest[0], rest[1]);
        return 0;
    }
    if (command == "info" || command == "cat") {
        if (rest.size() != 1)
            return usageError(command + " needs one FILE");
        if (command == "cat") {
            ArchiveTool().Cat(rest[0]);
            return 0;
        }
        return info(rest[0]);
    }
    return usageError("unknown command '" + command + "'");
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "voarchive: %s\n", e.what());
        return c_exitFailure;
    }
}
