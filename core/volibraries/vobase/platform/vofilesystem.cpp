#include <vobase/platform/vofilesystem.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <cwchar>

namespace {

bool isNameStart(wchar_t c)
{
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_';
}

bool isNameChar(wchar_t c)
{
    return isNameStart(c) || (c >= L'0' && c <= L'9');
}

std::optional<std::wstring> lookup(const std::wstring& name)
{
    const char* value = std::getenv(BxStringConvert::WideToUtf8Lossy(name).c_str());
    if (!value)
        return std::nullopt;
    return BxStringConvert::Utf8ToWideLossy(value);
}

// An XDG variable counts only when it is set to an absolute path.
std::optional<std::wstring> absoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    if (!value || value[0] != '/')
        return std::nullopt;
    return BxStringConvert::Utf8ToWideLossy(value);
}

std::wstring home()
{
    if (auto value = absoluteFromEnvironment("HOME"))
        return *value;
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir && entry->pw_dir[0] == '/')
        return BxStringConvert::Utf8ToWideLossy(entry->pw_dir);
    BX_THROW(BxExceptionStream, "VoFileSystem::GetDirectory", "the home directory is unknown");
}

std::wstring withoutTrailingSlash(std::wstring path)
{
    while (path.size() > 1 && path.back() == L'/')
        path.pop_back();
    return path;
}

std::wstring xdgBase(const char* variable, const wchar_t* fallbackBelowHome)
{
    if (auto value = absoluteFromEnvironment(variable))
        return withoutTrailingSlash(*value);
    return home() + L"/" + fallbackBelowHome;
}

// A user directory: the environment first, then the line KEY="$HOME/..." of
// user-dirs.dirs in the configuration directory.
std::wstring xdgUserDirectory(const char* key, const wchar_t* fallbackBelowHome)
{
    if (auto value = absoluteFromEnvironment(key))
        return withoutTrailingSlash(*value);
    std::ifstream file(BxStringConvert::WideToUtf8Lossy(xdgBase("XDG_CONFIG_HOME", L".config") + L"/user-dirs.dirs"));
    const std::string prefix = std::string(key) + "=";
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, prefix.size(), prefix) != 0)
            continue;
        std::string value = line.substr(prefix.size());
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        std::wstring path = BxStringConvert::Utf8ToWideLossy(value);
        if (path.compare(0, 5, L"$HOME") == 0)
            path = home() + path.substr(5);
        if (!path.empty() && path[0] == L'/')
            return withoutTrailingSlash(path);
    }
    return home() + L"/" + fallbackBelowHome;
}

}  // namespace

std::wstring VoFileSystem::InterpretEnvironment(const std::wstring& path)
{
    std::wstring out;
    out.reserve(path.size());
    std::size_t i = 0;
    while (i < path.size()) {
        const wchar_t c = path[i];
        std::size_t nameBegin = 0, nameEnd = 0, next = 0;
        if (c == L'%') {
            const std::size_t close = path.find(L'%', i + 1);
            if (close != std::wstring::npos && close > i + 1) {
                nameBegin = i + 1;
                nameEnd = close;
                next = close + 1;
            }
        } else if (c == L'$' && i + 1 < path.size() && path[i + 1] == L'{') {
            const std::size_t close = path.find(L'}', i + 2);
            if (close != std::wstring::npos && close > i + 2) {
                nameBegin = i + 2;
                nameEnd = close;
                next = close + 1;
            }
        } else if (c == L'$' && i + 1 < path.size() && isNameStart(path[i + 1])) {
            nameBegin = i + 1;
            nameEnd = nameBegin;
            while (nameEnd < path.size() && isNameChar(path[nameEnd]))
                ++nameEnd;
            next = nameEnd;
        }
        if (next != 0) {
            if (auto value = lookup(path.substr(nameBegin, nameEnd - nameBegin))) {
                out += *value;
                i = next;
                continue;
            }
            // Unknown variable: keep the reference as written. For %NAME% the
            // closing '%' may open the next reference, so move past the first one only.
            if (c != L'%') {
                out.append(path, i, next - i);
                i = next;
                continue;
            }
        }
        out += c;
        ++i;
    }
    return out;
}

std::wstring VoFileSystem::GetDirectory(ESpecialDirectory directory)
{
    switch (directory) {
    case eSD_Home: return withoutTrailingSlash(home());
    case eSD_AppData: return xdgBase("XDG_CONFIG_HOME", L".config");
    case eSD_LocalAppData: return xdgBase("XDG_DATA_HOME", L".local/share");
    case eSD_Cache: return xdgBase("XDG_CACHE_HOME", L".cache");
    case eSD_State: return xdgBase("XDG_STATE_HOME", L".local/state");
    case eSD_Documents: return xdgUserDirectory("XDG_DOCUMENTS_DIR", L"Documents");
    case eSD_Desktop: return xdgUserDirectory("XDG_DESKTOP_DIR", L"Desktop");
    case eSD_Temp:
        if (auto value = absoluteFromEnvironment("TMPDIR"))
            return withoutTrailingSlash(*value);
        return L"/tmp";
    case eSD_CommonAppData: {
        const char* dirs = std::getenv("XDG_CONFIG_DIRS");
        const std::string first = dirs ? std::string(dirs).substr(0, std::string(dirs).find(':')) : std::string();
        if (!first.empty() && first[0] == '/')
            return withoutTrailingSlash(BxStringConvert::Utf8ToWideLossy(first));
        return L"/etc/xdg";
    }
    }
    BX_THROW(BxExceptionPreconditionViolation, "VoFileSystem::GetDirectory", "unknown special directory");
}

void VoFileSystem::SplitPath(const std::wstring& path, std::wstring& directory, std::wstring& fileName)
{
    const std::size_t slash = path.rfind(L'/');
    if (slash == std::wstring::npos) {
        directory.clear();
        fileName = path;
        return;
    }
    directory = slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
    fileName = path.substr(slash + 1);
}

std::wstring VoFileSystem::JoinPath(const std::wstring& directory, const std::wstring& name)
{
    if (directory.empty())
        return name;
    if (directory.back() == L'/')
        return directory + name;
    return directory + L"/" + name;
}

bool VoFileSystem::IsPathTooLong(const wchar_t* path) noexcept
{
    return std::wcslen(path) + 1 >= 261;
}

std::FILE* VoFileSystem::OpenFile(const wchar_t* path, const char* mode, const char* functionName)
{
    constexpr std::size_t c_bufferSize = 65536;
    if (!path || IsPathTooLong(path))
        BX_THROW(BxExceptionStream, functionName, "the path is empty or too long");
    const std::string name = BxStringConvert::WideToUtf8(path);
    errno = 0;
    std::FILE* file = std::fopen(name.c_str(), mode);
    if (!file) {
        const int error = errno;
        if (error == 0)
            BX_THROW(BxExceptionStream, functionName, "cannot open " + name);
        char buffer[256];
        const char* message = strerror_r(error, buffer, sizeof buffer);  // GNU form: may return a static text
        throw BxExceptionStd(__FILE__, __LINE__, functionName,
                             std::system_error(std::error_code(error, std::generic_category()), message));
    }
    std::setvbuf(file, nullptr, _IOFBF, c_bufferSize);
    return file;
}
