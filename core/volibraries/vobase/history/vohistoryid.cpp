#include <vobase/history/vohistoryid.h>

std::atomic<std::uint32_t> VoHistoryID::sm_uiIDGenerator{0};

VoHistoryID::VoHistoryID() noexcept : m_id(sm_uiIDGenerator.fetch_add(1, std::memory_order_relaxed) + 1) {}
