// File-system helpers: environment references in paths, the user's special
// directories and path splitting.
//
//   std::wstring path = VoFileSystem::InterpretEnvironment(L"${HOME}/data/%PROJECT%.bin");
//   std::wstring conf = VoFileSystem::GetDirectory(VoFileSystem::eSD_AppData);   // ~/.config
//   std::wstring dir, name;
//   VoFileSystem::SplitPath(L"/tmp/a/b.bin", dir, name);                        // "/tmp/a", "b.bin"
//
// The special directories follow the XDG base-directory and user-directory
// conventions; a variable that is unset, empty or not absolute falls back to
// its documented default below the home directory.
#pragma once

#include <vobase/vobaseapi.h>

#include <cstdio>
#include <string>

/// File-system helpers: environment references in paths, the user's special directories and path splitting.
class VOBASE_API VoFileSystem
{
public:
    /// The user's special directories.
    enum ESpecialDirectory {
        eSD_Home = 0,            ///< $HOME
        eSD_AppData = 1,         ///< $XDG_CONFIG_HOME, default ~/.config
        eSD_LocalAppData = 2,    ///< $XDG_DATA_HOME, default ~/.local/share
        eSD_Cache = 3,           ///< $XDG_CACHE_HOME, default ~/.cache
        eSD_State = 4,           ///< $XDG_STATE_HOME, default ~/.local/state
        eSD_Documents = 5,       ///< XDG_DOCUMENTS_DIR (environment or user-dirs.dirs), default ~/Documents
        eSD_Desktop = 6,         ///< XDG_DESKTOP_DIR (environment or user-dirs.dirs), default ~/Desktop
        eSD_Temp = 7,            ///< $TMPDIR, default /tmp
        eSD_CommonAppData = 8,   ///< first entry of $XDG_CONFIG_DIRS, default /etc/xdg
    };

    /// Expands environment references: %NAME%, $NAME and ${NAME}. A reference
    /// to a variable that is not set is kept as written; "%" or "$" that does
    /// not start a reference stays as it is. Values are read as UTF-8.
    static std::wstring InterpretEnvironment(const std::wstring& path);

    /// The absolute path of a special directory, without a trailing '/'.
    /// Throws BxExceptionPreconditionViolation for a value outside the enumeration
    /// and BxExceptionStream when the home directory cannot be determined.
    static std::wstring GetDirectory(ESpecialDirectory directory);

    /// Splits `path` at its last '/' into the directory part (without
    /// the separator; "/" for a file in the root) and the file name. A path
    /// without a separator has an empty directory part.
    static void SplitPath(const std::wstring& path, std::wstring& directory, std::wstring& fileName);

    /// Joins `name` onto `directory` with one '/'.
    static std::wstring JoinPath(const std::wstring& directory, const std::wstring& name);

    /// True when `path` is too long for the file streams: its length plus the
    /// terminator reaches 261 characters (the original platform's limit).
    static bool IsPathTooLong(const wchar_t* path) noexcept;

    /// Opens `path` (UTF-8 on disk) with fopen in `mode` and gives it full
    /// buffering of 65,536 bytes. A path that is too long throws
    /// BxExceptionStream; an open failure with an error number throws
    /// BxExceptionStd carrying a std::system_error with the system message; an
    /// open failure without one throws BxExceptionStream. Every exception
    /// names `functionName`.
    static std::FILE* OpenFile(const wchar_t* path, const char* mode, const char* functionName);
};
