// The default logger: writes to standard error.
//
//   Logging::CLogger log(L"Core.DataManager");
//   log.Warn(__FILE__, __LINE__, "VoDataManager::Reset", L"%d handles still locked", count);
//   // stderr: "[warn] Core.DataManager: 3 handles still locked (VoDataManager::Reset)"
//
// Lines at Warn and above are written unless the environment variable
// VOBASE_LOG names another threshold: error, warn, info or trace (read once,
// at the first use). SetLevel overrides it for one logger.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/logging/ilogger.h>

#include <atomic>
#include <string>

namespace Logging {

/// The default logger: writes to standard error.
class BXBASE_API CLogger : public ILogger
{
public:
    /// A logger for `category` (for example L"Core.TaskManager"), which starts each line; its threshold starts at
    /// GetDefaultLevel().
    explicit CLogger(std::wstring category);

    /// The category given at construction.
    const std::wstring& GetCategory() const noexcept { return m_category; }

    /// Keeps lines of `level` and above from now on.
    void SetLevel(ELogLevel level) noexcept { m_level.store(level, std::memory_order_relaxed); }
    /// The current threshold: lines of this level and more severe ones are written. Any thread may call it.
    ELogLevel GetLevel() const noexcept { return m_level.load(std::memory_order_relaxed); }

    bool IsEnabled(ELogLevel level) const override { return level <= GetLevel(); }
    void Log(ELogLevel level, const char* sourceFile, int line, const char* functionName,
             const std::wstring& message) override;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// The threshold named by VOBASE_LOG, or Warn.
    static ELogLevel GetDefaultLevel();

private:
    std::wstring m_category;
    std::atomic<ELogLevel> m_level;
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};

}  // namespace Logging
