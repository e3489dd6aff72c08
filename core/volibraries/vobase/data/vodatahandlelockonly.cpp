#include <vobase/data/vodatahandlelockonly.h>

#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

template <int N>
VoDataHandleLockOnly<N>::VoDataHandleLockOnly(VoDataManager& manager, NodePointer node)
    : VoDataHandleBase(manager), m_node(std::move(node))
{
    manager.requestLock(*this);
}

template <int N>
bool VoDataHandleLockOnly<N>::isValid() const
{
    return m_node && m_node->GetDataManager() != nullptr && m_node->GetDataManager() == &GetDataManager();
}

template class VoDataHandleLockOnly<0>;
template class VoDataHandleLockOnly<1>;
