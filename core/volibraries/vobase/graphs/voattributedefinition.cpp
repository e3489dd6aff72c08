#include <vobase/graphs/voattributedefinition.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

VoAttributeDefinition::VoAttributeDefinition(std::wstring name, std::uint32_t elementSize, std::uint32_t attributeId,
                                             SlotFunction construct, SlotFunction destruct, std::size_t alignment)
    : m_name(std::move(name))
    , m_elementSize(elementSize)
    , m_attributeId(attributeId)
    , m_slotSize(elementSize)
    , m_alignment(alignment)
    , m_construct(std::move(construct))
    , m_destruct(std::move(destruct))
{
    if (alignment == 0 || (alignment & (alignment - 1)) != 0)
        BX_THROW(BxExceptionPreconditionViolation, "VoAttributeDefinition::VoAttributeDefinition",
                 "the alignment must be a power of two");
}
