#include <vocompression/voprobabilitymodelquasistatic.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>
#include <string>

namespace {

constexpr const char* c_constructorName = "VoProbabilityModelQuasiStatic::VoProbabilityModelQuasiStatic";

}  // namespace

VoProbabilityModelQuasiStatic::VoProbabilityModelQuasiStatic(std::uint32_t numberOfSymbols, std::uint32_t totalBits,
                                                             std::uint32_t targetRescale)
    : m_numberOfSymbols(numberOfSymbols), m_totalBits(totalBits), m_targetRescale(targetRescale)
{
    if (numberOfSymbols < 2)
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName, "a model needs at least 2 symbols");
    if (totalBits > 16)
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName, "the total bits must be at most 16");
    const std::uint64_t total = std::uint64_t(1) << totalBits;
    if (total < 4 * std::uint64_t(numberOfSymbols))
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName,
                 "2^" + std::to_string(totalBits) + " is less than 4 times " + std::to_string(numberOfSymbols) +
                     " symbols");
    // An interval of 0 updates would divide by zero when the counts are spread.
    if (targetRescale == 0 || targetRescale >= 2 * total)
        BX_THROW(BxExceptionPreconditionViolation, c_constructorName,
                 "the target rescale interval must lie in 1 .. 2^(bits+1)-1");
    m_cumulative.resize(std::size_t(numberOfSymbols) + 1);
    m_newFrequencies.resize(numberOfSymbols);
    // 2^10 buckets (fewer for small totals): 2 KiB that stay in the first-level cache.
    const std::uint32_t guideBits = std::min<std::uint32_t>(totalBits, 10);
    m_guideShift = totalBits - guideBits;
    m_guideBuckets = 1u << guideBits;
    m_guide.resize(std::size_t(m_guideBuckets) + 1);
    Reset();
}

VoProbabilityModelQuasiStatic::VoProbabilityModelQuasiStatic(const VoProbabilityModelQuasiStatic& other)
    : BxReferenceCountedObject(),
      m_numberOfSymbols(other.m_numberOfSymbols),
      m_totalBits(other.m_totalBits),
      m_rescaleInterval(other.m_rescaleInterval),
      m_targetRescale(other.m_targetRescale),
      m_cumulative(other.m_cumulative),
      m_newFrequencies(other.m_newFrequencies),
      m_increment(other.m_increment),
      m_left(other.m_left),
      m_nextLeft(other.m_nextLeft),
      m_guide(other.m_guide),
      m_guideShift(other.m_guideShift),
      m_guideBuckets(other.m_guideBuckets),
      m_guideValid(other.m_guideValid)
{
}

void VoProbabilityModelQuasiStatic::Reset()
{
    const std::uint32_t total = std::uint32_t(1) << m_totalBits;
    const std::uint32_t quotient = total / m_numberOfSymbols;
    const std::uint32_t remainder = total % m_numberOfSymbols;
    std::fill_n(m_newFrequencies.begin(), remainder, quotient + 1);
    std::fill(m_newFrequencies.begin() + remainder, m_newFrequencies.end(), quotient);
    m_cumulative.front() = 0;
    m_cumulative.back() = total;
    m_rescaleInterval = std::max<std::uint32_t>(m_numberOfSymbols >> 4, 2);
    m_rescaleInterval = std::min(m_targetRescale, 2 * m_rescaleInterval);
    rebuild();
}

void VoProbabilityModelQuasiStatic::updateFrequencies()
{
    m_rescaleInterval = std::min(m_targetRescale, 2 * m_rescaleInterval);
    rebuild();
}

void VoProbabilityModelQuasiStatic::rebuild()
{
    const std::uint32_t total = std::uint32_t(1) << m_totalBits;
    std::uint32_t running = total;
    std::uint32_t halvedSum = 0;
    for (std::uint32_t symbol = m_numberOfSymbols; symbol-- > 0;) {
        std::uint32_t& frequency = m_newFrequencies[symbol];
        running -= frequency;
        m_cumulative[symbol] = running;
        frequency = std::max<std::uint32_t>(frequency >> 1, 1);
        halvedSum += frequency;
    }
    // The halved counts sum to at most 2^(b-1) + n < 2^b, so something is
    // always missing; the increments of the next interval add exactly that.
    const std::uint32_t missing = total - halvedSum;
    m_increment = missing / m_rescaleInterval;
    m_nextLeft = missing % m_rescaleInterval;
    m_left = m_rescaleInterval - m_nextLeft;
    m_guideValid = false;
}

void VoProbabilityModelQuasiStatic::buildGuide()
{
    // Symbol s holds the starts of the buckets from ceil(cumulative[s] / size)
    // up to, but not including, ceil(cumulative[s + 1] / size).
    const std::uint32_t round = (1u << m_guideShift) - 1;
    std::uint32_t bucket = 0;
    for (std::uint32_t symbol = 0; symbol < m_numberOfSymbols; ++symbol) {
        const std::uint32_t end = (m_cumulative[symbol + 1] + round) >> m_guideShift;
        for (; bucket < end; ++bucket)
            m_guide[bucket] = static_cast<std::uint16_t>(symbol);
    }
    // The end of the total (bucket 2^k) belongs to the last symbol.
    m_guide[m_guideBuckets] = static_cast<std::uint16_t>(m_numberOfSymbols - 1);
    m_guideValid = true;
}

void VoProbabilityModelQuasiStatic::throwSymbolOutOfRange()
{
    BX_THROW(BxExceptionPreconditionViolation, "VoProbabilityModelQuasiStatic::GetFrequencies",
             "symbol outside the alphabet");
}
