// One typed per-element slot of an attribute container: a name, an element
// size, an attribute ID and the slot type's construction and destruction
// objects. Registering the definition with a container gives every element
// of that container one slot, built when the element is created and torn
// down when it is released.
//
//   VoAttributeDefinition taskId(L"TaskGraph_TaskID", 4, 68985, VoConstructor<std::int32_t>(-1),
//                                VoDestructor<std::int32_t>());
//   graph.AddDefinition(taskId);                    // before the first node is inserted
//   std::int32_t& id = graph.Get<std::int32_t>(taskId, node.GetAttributeElement());   // -1
//
// The slot takes at least the element size given and at least the size of
// the slot type; it is aligned for the slot type. A definition belongs to
// one container once registered; the container keeps its own copy of the
// construction and destruction objects, so elements may outlive the
// definition object.
#pragma once

#include <vobase/graphs/voconstructor.h>
#include <vobase/graphs/vodestructor.h>
#include <vobase/vobaseapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

class VoAttributeContainer;

/// One typed per-element slot of an attribute container: a name, an element size, an attribute ID and the slot
/// type's construction and destruction objects.
class VOBASE_API VoAttributeDefinition
{
public:
    /// Builds or tears down the slot at the given address.
    using SlotFunction = std::function<void(void* slot)>;

    /// An untyped slot of `elementSize` bytes; a null function does nothing.
    VoAttributeDefinition(std::wstring name, std::uint32_t elementSize, std::uint32_t attributeId,
                          SlotFunction construct, SlotFunction destruct,
                          std::size_t alignment = alignof(std::max_align_t));

    /// A slot of type T built by `construct` and torn down by `destruct`.
    template <class T>
    VoAttributeDefinition(std::wstring name, std::uint32_t elementSize, std::uint32_t attributeId,
                          VoConstructor<T> construct, VoDestructor<T> destruct = {})
        : VoAttributeDefinition(std::move(name), elementSize, attributeId, std::move(construct), destruct,
                                alignof(T))
    {
        m_slotSize = std::max<std::size_t>(m_slotSize, sizeof(T));
    }

    /// The name given at construction (for dumps and diagnostics; slots are found by definition, not by name).
    const std::wstring& GetName() const noexcept { return m_name; }
    /// The element size given at construction.
    std::uint32_t GetElementSize() const noexcept { return m_elementSize; }
    /// The attribute ID given at construction, a number chosen by the owner to tell its attributes apart.
    std::uint32_t GetAttributeID() const noexcept { return m_attributeId; }
    /// The bytes the slot takes in an element (element size or the type's size, whichever is larger).
    std::size_t GetSlotSize() const noexcept { return m_slotSize; }
    /// The slot's alignment in bytes, a power of two (the slot type's alignment for typed definitions).
    std::size_t GetAlignment() const noexcept { return m_alignment; }

    /// The container the definition is registered with, or null.
    const VoAttributeContainer* GetContainer() const noexcept { return m_container; }
    /// The slot's byte offset within an element of its container.
    std::size_t GetOffset() const noexcept { return m_offset; }

    /// The function that builds the slot in a new element; may be empty (the slot's bytes are left as they are).
    const SlotFunction& GetConstructor() const noexcept { return m_construct; }
    /// The function that tears the slot down when its element is released; may be empty (nothing to do).
    const SlotFunction& GetDestructor() const noexcept { return m_destruct; }

private:
    friend class VoAttributeContainer;

    std::wstring m_name;
    std::uint32_t m_elementSize;
    std::uint32_t m_attributeId;
    std::size_t m_slotSize;
    std::size_t m_alignment;
    SlotFunction m_construct;
    SlotFunction m_destruct;
    const VoAttributeContainer* m_container = nullptr;  // set by VoAttributeContainer::AddDefinition
    std::size_t m_offset = 0;
};
