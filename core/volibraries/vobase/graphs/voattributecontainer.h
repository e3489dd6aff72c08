// A container whose elements carry typed per-element slots, one per
// registered attribute definition. The deriving class (the graph, for
// example) creates one element per item it keeps and releases it with the
// item; the container builds and tears down the slots.
//
//   class CItems : public VoAttributeContainer { ... };
//   VoAttributeDefinition weight(L"Weight", 4, 7, VoConstructor<float>(1.0f));
//   items.AddDefinition(weight);                 // while no element exists
//   void* element = items.CreateElement();       // slot built: 1.0f
//   items.Get<float>(weight, element) = 2.5f;
//   items.ReleaseElement(element);               // slot torn down
//
// Elements live in blocks: the first holds `initialBlocks` times
// `elementsPerBlock` elements, every later one `elementsPerBlock`. A released element's memory is reused by the next one, so element
// addresses stay put while they live. The layout (the slot offsets) is fixed
// while any element exists: definitions are added before the first element
// or after the last one is released.
//
// Not thread-safe: the owner guards the container with its own lock.
#pragma once

#include <vobase/graphs/voattributedefinition.h>
#include <vobase/vobaseapi.h>

#include <bxbase/inoncopyable.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// A container whose elements carry typed per-element slots, one per registered attribute definition.
class VOBASE_API VoAttributeContainer : private INonCopyable
{
public:
    /// An empty container with no definitions. Memory is taken on the first CreateElement: a first block of
    /// `initialBlocks` x `elementsPerBlock` elements, then blocks of `elementsPerBlock` (0 counts as 1).
    explicit VoAttributeContainer(std::uint32_t initialBlocks = 1, std::uint32_t elementsPerBlock = 10000);
    virtual ~VoAttributeContainer();

    /// Gives every future element a slot of `definition` and binds the
    /// definition to this container. Throws BxExceptionContainer while
    /// elements exist or when the definition belongs to a container already.
    void AddDefinition(VoAttributeDefinition& definition);

    /// The number of registered definitions.
    std::size_t GetDefinitionCount() const noexcept { return m_slots.size(); }
    /// The number of live elements.
    std::size_t GetElementCount() const noexcept { return m_elementCount; }
    /// The bytes an element takes.
    std::size_t GetElementStride() const noexcept { return m_stride; }

    /// A new element with every slot built.
    void* CreateElement();
    /// Tears down the element's slots and frees it; null is ignored.
    void ReleaseElement(void* element);

    /// The slot of `definition` in `element`. Throws BxExceptionContainer
    /// when the definition is not registered with this container.
    template <class T>
    T& Get(const VoAttributeDefinition& definition, void* element) const
    {
        return *static_cast<T*>(slot(definition, element));
    }
    /// The slot of `definition` in `element`, read-only. Throws BxExceptionContainer when the definition is not
    /// registered with this container.
    template <class T>
    const T& Get(const VoAttributeDefinition& definition, const void* element) const
    {
        return *static_cast<const T*>(slot(definition, const_cast<void*>(element)));
    }

protected:
    /// Called after an element's slots are built.
    virtual void onInitContainer(void* element) { static_cast<void>(element); }
    /// Called before an element's slots are torn down (not during destruction
    /// of the container, when the deriving class is already gone).
    virtual void onDeleteContainer(void* element) { static_cast<void>(element); }

    /// The raw bytes of the slot of `definition` in `element`.
    void* slot(const VoAttributeDefinition& definition, void* element) const;

private:
    struct SSlot
    {
        std::size_t offset;
        VoAttributeDefinition::SlotFunction construct;
        VoAttributeDefinition::SlotFunction destruct;
    };

    std::byte* takeMemory();
    void giveBack(void* element) noexcept;
    void destroySlots(void* element) noexcept;
    /// Bytes between elements: at least room for the free-list link.
    std::size_t stride() const noexcept { return m_stride < sizeof(void*) ? sizeof(void*) : m_stride; }

    std::uint32_t m_initialBlocks;
    std::uint32_t m_elementsPerBlock;
    std::vector<SSlot> m_slots;
    std::size_t m_stride = 0;        // bytes per element, a multiple of the block alignment
    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::size_t m_lastBlockCapacity = 0;  // elements the last block holds
    std::size_t m_usedInLastBlock = 0;    // elements handed out of the last block so far
    void* m_freeList = nullptr;      // released elements, linked through their first bytes
    std::size_t m_elementCount = 0;
};
