// Adaptive frequency model for the range coder.
//
// The model assigns every symbol 0..n-1 an interval of a cumulative table
// whose total is exactly 2^b. It is quasi-static: the counts of the symbols
// seen are accumulated in a second table and folded into the cumulative table
// only at periodic rebuilds. The interval between two rebuilds starts small
// and doubles up to a target, so the model adapts quickly at first and then
// costs almost nothing per symbol.
//
//   BxSmartPointer<VoProbabilityModelQuasiStatic> model(new VoProbabilityModelQuasiStatic(256, 16, 1024));
//   VoCompressRangeCoder encoder(target, model, 4096);
//   encoder.WriteSymbol('a', *model);
//
// Encoder and decoder stay in step only when both start from a reset model
// with the same three parameters and see the same symbol sequence. One model
// object may serve both sides (reset it in between); it is not thread-safe.
#pragma once

#include <vocompression/vocompressionapi.h>

#include <bxbase/ireferencecounted.h>

#include <cstdint>
#include <vector>

/// Adaptive frequency model for the range coder.
class VOCOMPRESSION_API VoProbabilityModelQuasiStatic : public BxReferenceCountedObject
{
public:
    /// A model of `numberOfSymbols` symbols whose frequencies total 2^`totalBits`,
    /// rebuilt at intervals that double up to `targetRescale` updates. Throws
    /// BxExceptionPreconditionViolation unless n >= 2, b <= 16, 2^b >= 4n and
    /// 1 <= target < 2^(b+1). The new model is reset.
    VoProbabilityModelQuasiStatic(std::uint32_t numberOfSymbols, std::uint32_t totalBits,
                                  std::uint32_t targetRescale);

    /// A model in the same state as `other` (with a reference count of its own).
    VoProbabilityModelQuasiStatic(const VoProbabilityModelQuasiStatic& other);
    VoProbabilityModelQuasiStatic& operator=(const VoProbabilityModelQuasiStatic&) = delete;

    /// Encoder side: returns the interval [cumulative, cumulative + frequency)
    /// of `symbol`, then updates the model with it. Throws
    /// BxExceptionPreconditionViolation for a symbol outside the alphabet.
    void GetFrequencies(std::uint32_t symbol, std::uint32_t& cumulative, std::uint32_t& frequency)
    {
        if (symbol >= m_numberOfSymbols)
            throwSymbolOutOfRange();
        cumulative = m_cumulative[symbol];
        frequency = m_cumulative[symbol + 1] - cumulative;
        updateFrequency(symbol);
    }

    /// Decoder side: finds the symbol whose interval holds `cumulativeIn`
    /// (0..2^b-1; larger values find the last symbol), replaces the argument
    /// with the symbol's cumulative frequency, sets `frequency`, updates the
    /// model and returns the symbol.
    std::uint32_t GetSymbol(std::uint32_t& cumulativeIn, std::uint32_t& frequency)
    {
        const std::uint32_t symbol = findSymbol(cumulativeIn);
        cumulativeIn = m_cumulative[symbol];
        frequency = m_cumulative[symbol + 1] - cumulativeIn;
        updateFrequency(symbol);
        return symbol;
    }

    /// The total bits b: the frequencies always sum to 2^b.
    std::uint32_t GetTotalBits() const noexcept { return m_totalBits; }
    /// The number of symbols n.
    std::uint32_t GetNumberOfSymbols() const noexcept { return m_numberOfSymbols; }
    /// The cumulative table (n + 1 entries, 0 .. 2^b) as it stands.
    const std::vector<std::uint32_t>& GetCumulativeFrequencies() const noexcept { return m_cumulative; }

    /// Returns to the initial state: near-equal counts and the first interval.
    void Reset();

private:
    /// Adds the current increment to the symbol's count; rebuilds when the interval ends.
    void updateFrequency(std::uint32_t symbol)
    {
        m_newFrequencies[symbol] += m_increment;
        if (--m_left == 0) {
            if (m_nextLeft == 0) {
                updateFrequencies();
            } else {
                ++m_increment;
                m_left = m_nextLeft;
                m_nextLeft = 0;
            }
        }
    }

    /// Rebuild after a finished interval: doubles the interval, then rebuilds.
    void updateFrequencies();
    /// Folds the accumulated counts into the cumulative table, halves them and
    /// spreads the missing total over the next interval.
    void rebuild();

    /// The largest s with cumulative[s] <= value. A guide table, rebuilt on
    /// demand after each rebuild of the cumulative table, maps the top bits of
    /// the value to the few symbols that can hold it; a branch-free binary
    /// search picks among those. Values at or beyond 2^b find the last symbol.
    std::uint32_t findSymbol(std::uint32_t value)
    {
        if (!m_guideValid)
            buildGuide();
        const std::uint32_t bucket = value >> m_guideShift;
        if (bucket >= m_guideBuckets)
            return m_numberOfSymbols - 1;
        const std::uint32_t* table = m_cumulative.data();
        std::uint32_t low = m_guide[bucket];
        std::uint32_t length = m_guide[bucket + 1] - low + 1;
        while (length > 1) {
            const std::uint32_t half = length >> 1;
            low = table[low + half] <= value ? low + half : low;
            length -= half;
        }
        return low;
    }

    /// Fills the guide: entry j is the symbol that holds the value j << shift.
    void buildGuide();

    [[noreturn]] static void throwSymbolOutOfRange();

    std::uint32_t m_numberOfSymbols;
    std::uint32_t m_totalBits;
    std::uint32_t m_rescaleInterval = 0;
    std::uint32_t m_targetRescale;
    std::vector<std::uint32_t> m_cumulative;      // n + 1 entries: 0, ..., 2^b
    std::vector<std::uint32_t> m_newFrequencies;  // counts since the last rebuild
    std::uint32_t m_increment = 0;
    std::uint32_t m_left = 0;
    std::uint32_t m_nextLeft = 0;

    // Decoder acceleration, derived from the cumulative table (not part of the model's state).
    std::vector<std::uint16_t> m_guide;  // buckets + 1 entries
    std::uint32_t m_guideShift = 0;
    std::uint32_t m_guideBuckets = 0;
    bool m_guideValid = false;
};
