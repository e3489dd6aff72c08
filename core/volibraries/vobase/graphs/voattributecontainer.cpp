#include <vobase/graphs/voattributecontainer.h>

#include <bxbase/bxexceptioncontainer.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace {

// Blocks come from operator new[], aligned for any fundamental type.
constexpr std::size_t kBlockAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

constexpr std::size_t roundUp(std::size_t value, std::size_t alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

}  // namespace

VoAttributeContainer::VoAttributeContainer(std::uint32_t initialBlocks, std::uint32_t elementsPerBlock)
    : m_initialBlocks(std::max<std::uint32_t>(initialBlocks, 1)), m_elementsPerBlock(std::max<std::uint32_t>(elementsPerBlock, 1))
{
}

VoAttributeContainer::~VoAttributeContainer() = default;

void VoAttributeContainer::AddDefinition(VoAttributeDefinition& definition)
{
    if (m_elementCount != 0)
        BX_THROW(BxExceptionContainer, "VoAttributeContainer::AddDefinition",
                 "definitions are added while the container has no elements");
    if (definition.m_container)
        BX_THROW(BxExceptionContainer, "VoAttributeContainer::AddDefinition",
                 "the definition belongs to a container already");
    if (definition.GetAlignment() > kBlockAlignment)
        BX_THROW(BxExceptionContainer, "VoAttributeContainer::AddDefinition", "the slot alignment is too large");

    // The layout changes: forget the memory of released elements.
    m_blocks.clear();
    m_freeList = nullptr;
    m_usedInLastBlock = 0;

    const std::size_t offset = roundUp(m_slots.empty() ? 0 : m_stride, definition.GetAlignment());
    m_slots.push_back({offset, definition.GetConstructor(), definition.GetDestructor()});
    m_stride = roundUp(offset + definition.GetSlotSize(), kBlockAlignment);
    definition.m_container = this;
    definition.m_offset = offset;
}

std::byte* VoAttributeContainer::takeMemory()
{
    if (m_freeList) {
        void* element = m_freeList;
        std::memcpy(&m_freeList, element, sizeof m_freeList);
        return static_cast<std::byte*>(element);
    }
    if (m_blocks.empty() || m_usedInLastBlock == m_lastBlockCapacity) {
        m_lastBlockCapacity = std::size_t(m_elementsPerBlock) * (m_blocks.empty() ? m_initialBlocks : 1);
        m_blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(stride() * m_lastBlockCapacity));
        m_usedInLastBlock = 0;
    }
    return m_blocks.back().get() + m_usedInLastBlock++ * stride();
}

void VoAttributeContainer::giveBack(void* element) noexcept
{
    std::memcpy(element, &m_freeList, sizeof m_freeList);
    m_freeList = element;
}

void* VoAttributeContainer::CreateElement()
{
    std::byte* element = takeMemory();
    std::size_t built = 0;
    try {
        for (; built < m_slots.size(); ++built)
            if (m_slots[built].construct)
                m_slots[built].construct(element + m_slots[built].offset);
        onInitContainer(element);
    } catch (...) {
        for (std::size_t i = built; i-- > 0;)
            if (m_slots[i].destruct)
                m_slots[i].destruct(element + m_slots[i].offset);
        giveBack(element);
        throw;
    }
    ++m_elementCount;
    return element;
}

void VoAttributeContainer::destroySlots(void* element) noexcept
{
    for (std::size_t i = m_slots.size(); i-- > 0;)
        if (m_slots[i].destruct)
            m_slots[i].destruct(static_cast<std::byte*>(element) + m_slots[i].offset);
}

void VoAttributeContainer::ReleaseElement(void* element)
{
    if (!element)
        return;
    onDeleteContainer(element);
    destroySlots(element);
    giveBack(element);
    if (--m_elementCount == 0) {
        // Nothing lives any more: give the memory back.
        m_blocks.clear();
        m_freeList = nullptr;
        m_usedInLastBlock = 0;
    }
}

void* VoAttributeContainer::slot(const VoAttributeDefinition& definition, void* element) const
{
    if (definition.m_container != this)
        BX_THROW(BxExceptionContainer, "VoAttributeContainer::slot",
                 "the definition is not registered with this container");
    return static_cast<std::byte*>(element) + definition.m_offset;
}
