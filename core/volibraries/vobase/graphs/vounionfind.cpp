#include <vobase/graphs/vounionfind.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>
#include <numeric>
#include <string>

namespace {

// The walks on the parent array, kept here so that a union runs them inline.
inline std::uint32_t rootOf(const std::uint32_t* parents, std::uint32_t element) noexcept
{
    while (parents[element] != element)
        element = parents[element];
    return element;
}

inline void pointPathAt(std::uint32_t* parents, std::uint32_t element, std::uint32_t root) noexcept
{
    for (;;) {
        const std::uint32_t next = parents[element];
        parents[element] = root;
        if (next == element)
            return;
        element = next;
    }
}

}  // namespace

void VoUnionFind::InitElements(std::uint32_t count)
{
    m_parents.resize(count);
    std::iota(m_parents.begin(), m_parents.end(), 0u);
    m_setCount = 0;
}

void VoUnionFind::checkElement(std::uint32_t element, const char* functionName) const
{
    if (element >= m_parents.size())
        BX_THROW(BxExceptionPreconditionViolation, functionName,
                 "element " + std::to_string(element) + " out of range (count " + std::to_string(m_parents.size()) +
                     ")");
}

std::uint32_t VoUnionFind::GetRoot(std::uint32_t element) const
{
    checkElement(element, "VoUnionFind::GetRoot");
    return rootOf(m_parents.data(), element);
}

void VoUnionFind::AddPair(std::uint32_t a, std::uint32_t b)
{
    if (std::max(a, b) >= m_parents.size()) [[unlikely]] {
        checkElement(a, "VoUnionFind::GetRoot");
        checkElement(b, "VoUnionFind::GetRoot");
    }
    std::uint32_t* parents = m_parents.data();
    const std::uint32_t root = std::min(rootOf(parents, a), rootOf(parents, b));
    pointPathAt(parents, a, root);
    pointPathAt(parents, b, root);
}

void VoUnionFind::collapsePath(std::uint32_t element, std::uint32_t root) noexcept
{
    pointPathAt(m_parents.data(), element, root);
}

std::uint32_t VoUnionFind::CreateSetNumbers()
{
    const std::size_t count = m_parents.size();
    // Every entry points at a smaller or equal element, so in ascending order
    // the parent of i already points at the root.
    for (std::size_t i = 0; i < count; ++i)
        m_parents[i] = m_parents[m_parents[i]];
    // Roots take the next number; the others copy their (already numbered) root's.
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < count; ++i)
        m_parents[i] = m_parents[i] == i ? next++ : m_parents[m_parents[i]];
    m_setCount = next;
    return next;
}

std::uint32_t VoUnionFind::GetSetNumber(std::uint32_t element) const
{
    checkElement(element, "VoUnionFind::GetSetNumber");
    return m_parents[element];
}
