#include "streamtestfiles.h"

#include <vobase/platform/vofilesystem.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <cstdlib>

namespace {

// Sets environment variables for one test and restores them afterwards.
class CEnvironment
{
public:
    ~CEnvironment()
    {
        for (auto& [name, value] : m_saved)
            value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
    void Set(const std::string& name, const char* value)
    {
        if (!m_saved.count(name)) {
            const char* old = std::getenv(name.c_str());
            m_saved[name] = old ? std::optional<std::string>(old) : std::nullopt;
        }
        value ? setenv(name.c_str(), value, 1) : unsetenv(name.c_str());
    }

private:
    std::map<std::string, std::optional<std::string>> m_saved;
};

}  // namespace

TEST(VoFileSystem, InterpretEnvironmentExpandsAllThreeForms)
{
    CEnvironment env;
    env.Set("VOFS_A", "alpha");
    env.Set("VOFS_B", "b\xc3\xa9ta");
    env.Set("VOFS_UNSET", nullptr);
    EXPECT_EQ(VoFileSystem::InterpretEnvironment(L"%VOFS_A%/$VOFS_A/${VOFS_B}x"), L"alpha/alpha/b\u00e9tax");
    EXPECT_EQ(VoFileSystem::InterpretEnvironment(L"$VOFS_A.bin"), L"alpha.bin");
    EXPECT_EQ(VoFileSystem::InterpretEnvironment(L"%VOFS_UNSET%/$VOFS_UNSET/${VOFS_UNSET}"),
              L"%VOFS_UNSET%/$VOFS_UNSET/${VOFS_UNSET}");
    EXPECT_EQ(VoFileSystem::InterpretEnvironment(L"100% $ ${ %% $1 %VOFS_A"), L"100% $ ${ %% $1 %VOFS_A");
    EXPECT_EQ(VoFileSystem::InterpretEnvironment(L"%VOFS_UNSET%VOFS_A%"), L"%VOFS_UNSETalpha");
}

TEST(VoFileSystem, SpecialDirectoriesFollowXdg)
{
    CEnvironment env;
    streamtest::CTempDir home;
    env.Set("HOME", home.Narrow("h").c_str());
    env.Set("XDG_CONFIG_HOME", nullptr);
    env.Set("XDG_DATA_HOME", "relative/ignored");
    env.Set("XDG_CACHE_HOME", "/var/cache/me/");
    env.Set("XDG_DOCUMENTS_DIR", nullptr);
    env.Set("XDG_DESKTOP_DIR", "/desk");
    env.Set("TMPDIR", nullptr);
    env.Set("XDG_CONFIG_DIRS", "/etc/a:/etc/b");
    const std::wstring h = home.Wide("h");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Home), h);
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_AppData), h + L"/.config");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_LocalAppData), h + L"/.local/share");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Cache), L"/var/cache/me");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Documents), h + L"/Documents");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Desktop), L"/desk");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Temp), L"/tmp");
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_CommonAppData), L"/etc/a");

    std::filesystem::create_directories(home.Path() / "h/.config");
    streamtest::WriteAll(home.Narrow("h/.config/user-dirs.dirs"),
                         {'X', 'D', 'G', '_', 'D', 'O', 'C', 'U', 'M', 'E', 'N', 'T', 'S', '_', 'D', 'I', 'R', '=',
                          '"', '$', 'H', 'O', 'M', 'E', '/', 'P', 'a', 'p', 'e', 'r', 's', '"', '\n'});
    EXPECT_EQ(VoFileSystem::GetDirectory(VoFileSystem::eSD_Documents), h + L"/Papers");
    EXPECT_THROW(VoFileSystem::GetDirectory(VoFileSystem::ESpecialDirectory(99)), BxExceptionPreconditionViolation);
}

TEST(VoFileSystem, SplitAndJoin)
{
    std::wstring dir, name;
    VoFileSystem::SplitPath(L"/a/b/c.bin", dir, name);
    EXPECT_EQ(dir, L"/a/b");
    EXPECT_EQ(name, L"c.bin");
    VoFileSystem::SplitPath(L"/c.bin", dir, name);
    EXPECT_EQ(dir, L"/");
    VoFileSystem::SplitPath(L"c.bin", dir, name);
    EXPECT_EQ(dir, L"");
    EXPECT_EQ(name, L"c.bin");
    EXPECT_EQ(VoFileSystem::JoinPath(L"/a/", L"b"), L"/a/b");
    EXPECT_EQ(VoFileSystem::JoinPath(L"/a", L"b"), L"/a/b");
    EXPECT_EQ(VoFileSystem::JoinPath(L"", L"b"), L"b");
}
