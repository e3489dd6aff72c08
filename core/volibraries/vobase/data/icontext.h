// Base of the context objects that a data manager hands to its interceptors.
//
//   class CMyHooks : public DataManager::IInterceptorDataManager {
//       void OnInsert(const DataManager::CContextNode& context) override {
//           log(context.GetDataManager(), context.GetNode());
//       }
//       ...
//   };
//
// Every context names the manager that raised the notification.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/interceptor/icontext.h>

class VoDataManager;

namespace DataManager {

/// Base of the context objects that a data manager hands to its interceptors.
class VOBASE_API IContext : public Interceptor::IContext
{
public:
    /// A context naming `manager`, which must outlive the context (it is not
    /// owned).
    explicit IContext(VoDataManager& manager) noexcept : m_manager(&manager) {}

    /// The manager whose tree changed.
    VoDataManager& GetDataManager() const noexcept { return *m_manager; }

private:
    VoDataManager* m_manager; ///< not owned; lives as long as the notification
};

}  // namespace DataManager
