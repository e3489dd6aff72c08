// Base class of every computation: an algorithm is initialised once, computed,
// and then its outputs are read; a failure is either stored (and reported by
// a false result) or thrown to the caller, as the compute flags say.
//
//   class CSum : public VoAlgorithm {
//   public:
//       void SetInput(const std::vector<int>& values) { m_values = &values; setInputChanged(); }
//       int GetOutput() const { checkOutputData(); return m_sum; }
//   protected:
//       bool checkPreConditions() const override { return m_values != nullptr; }
//       bool compute() override { m_sum = std::accumulate(m_values->begin(), m_values->end(), 0); return true; }
//   ...
//   };
//
//   CSum sum;
//   sum.SetInput(values);
//   if (!sum.Compute())                        // initialises first when needed
//       log(sum.GetException());               // the stored failure
//   sum.Compute(VoAlgorithm::eCF_ThrowExceptions);  // or: failures are thrown
//
// Life: uninitialised -> (Init) initialised -> (Compute) calculated.
// setInputChanged() returns a calculated algorithm to initialised,
// setUninitialized() to uninitialised; a failed Compute leaves it not
// calculated. Computing an algorithm that is already calculated is a broken
// condition: change its input first.
//
// A broken condition (a pre- or post-condition check returning false) is
// reported to BxConditionHandler with severity 2 and then fails the call with
// BxExceptionPreconditionViolation, stored or thrown like any other failure.
//
// An algorithm object is used by one thread at a time; only the break event
// may be set from another thread.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxflags.h>
#include <bxbase/bxrtti.h>
#include <bxbase/iexception.h>
#include <bxbase/iextendable.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/iobject.h>

#include <cstdint>
#include <memory>

class BxEvent;

/// Base class of every computation: an algorithm is initialised once, computed, and then its outputs are read; a
/// failure is either stored (and reported by a false result) or thrown to the caller, as the compute flags say.
class VOBASE_API VoAlgorithm : public IExtendable, public IObject, private INonCopyable
{
public:
    /// Flags of the compute cycle; the values are part of the interface.
    enum EComputeFlags : std::uint32_t
    {
        eCF_None = 0,
        eCF_ThrowExceptions = 16,  ///< throw failures to the caller instead of storing them
        eCF_FromCompute = 256,     ///< Init called by Compute
    };

    /// Flags of the algorithm itself; each algorithm defines its own bit values
    /// and publishes them through its description (VoAAlgorithm).
    enum EFlags : std::uint32_t
    {
        eF_None = 0,
    };

    /// Thrown when the output of an algorithm that is not calculated is read.
    class VOBASE_API VoExceptionNoOutputData : public BxException, public IObject
    {
    public:
        /// Takes the source file, line, qualified function name and message, as every BxException does.
        using BxException::BxException;
        std::unique_ptr<IException> Clone() const override
        {
            return std::make_unique<VoExceptionNoOutputData>(*this);
        }
        [[noreturn]] void Rethrow() const override { throw *this; }

        BX_DECLARE_RTTI()
    };

    VoAlgorithm() = default;
    ~VoAlgorithm() override = default;

    /// Initialises the algorithm once: checkPreConditionsInit, init,
    /// checkPostConditionsInit. True when it is (or already was) initialised.
    bool Init(EComputeFlags flags = eCF_None);

    /// Initialises when needed, then checkPreConditions, compute and
    /// checkPostConditions. True when the algorithm is calculated.
    bool Compute(EComputeFlags flags = eCF_None);

    /// True after a successful Init, until setUninitialized.
    bool IsInitialized() const noexcept { return m_initialized; }
    /// True after a successful Compute, until the input changes; only then may outputs be read.
    bool IsCalculated() const noexcept { return m_calculated; }
    /// True when the algorithm is initialised and its preconditions hold.
    bool IsComputable() const { return m_initialized && checkPreConditions(); }

    /// The failure of the last Init or Compute, or null.
    std::shared_ptr<const IException> GetException() const noexcept { return m_exception; }

    /// The base class offers no extension: null, or BxExceptionUnknownExtension
    /// when `throwIfUnknown` is true.
    IExtensionInterface* GetExtension(const char* name, bool throwIfUnknown) override;
    const IExtensionInterface* GetExtension(const char* name, bool throwIfUnknown) const override;

    /// Compares the result with a recorded one (unit-test support); the base
    /// class records nothing and answers true.
    virtual bool CompareResult() const { return true; }

    /// Attaches the event that asks a running computation to stop (null detaches).
    /// The caller keeps the event alive while it is attached.
    void SetBreakEvent(BxEvent* breakEvent) noexcept { m_breakEvent = breakEvent; }

    /// The algorithm's own flags (bit values that its description publishes as flag types).
    BxFlags<EFlags> GetFlags() const noexcept { return m_flags; }
    /// Sets every flag of `flags`; the others stay as they are.
    void AddFlags(BxFlags<EFlags> flags) noexcept { m_flags |= flags; }
    /// Clears every flag of `flags`; the others stay as they are.
    void RemoveFlags(BxFlags<EFlags> flags) noexcept
    {
        m_flags = BxFlags<EFlags>(static_cast<std::uint32_t>(m_flags.GetValue() & ~flags.GetValue()));
    }
    /// True when every flag of `flags` is set.
    bool IsFlagsSet(BxFlags<EFlags> flags) const noexcept
    {
        return (m_flags.GetValue() & flags.GetValue()) == flags.GetValue();
    }
    /// True when any flag of `flags` is set.
    bool IsOneFlagSet(BxFlags<EFlags> flags) const noexcept { return (m_flags.GetValue() & flags.GetValue()) != 0; }

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    BX_DECLARE_RTTI()

protected:
    /// Checked by Init before init(); false is a broken condition that fails Init. The base accepts.
    virtual bool checkPreConditionsInit() const { return true; }
    /// One-time set-up of a derived algorithm, run by Init; may throw, which fails Init. The base does nothing.
    virtual void init() {}
    /// Checked by Init after init(); false is a broken condition that fails Init. The base accepts.
    virtual bool checkPostConditionsInit() const { return true; }
    /// Checked by Compute before compute() (and by IsComputable): false, typically because an input is missing,
    /// is a broken condition that fails Compute. The base accepts.
    virtual bool checkPreConditions() const { return true; }
    /// The computation; false when it stopped without a result (a break).
    virtual bool compute() = 0;
    /// Checked by Compute after compute() returned true; false is a broken condition that fails Compute. The base
    /// accepts.
    virtual bool checkPostConditions() const { return true; }

    /// Back to uninitialised (and so not calculated).
    void setUninitialized() noexcept { m_initialized = m_calculated = false; }
    /// The input changed: the result is no longer valid.
    void setInputChanged() noexcept { m_calculated = false; }
    /// Throws VoExceptionNoOutputData unless the algorithm is calculated.
    void checkOutputData() const;

    /// True when a break event is attached (SetBreakEvent).
    bool hasBreakEvent() const noexcept { return m_breakEvent != nullptr; }
    /// True when a break event is attached and set; long computations poll it.
    bool isBreak() const;

    /// Takes flags read from an older format.
    virtual void onReadOldFlags(std::uint32_t flags) { m_flags = BxFlags<EFlags>(flags); }

private:
    template <class Body>
    bool guarded(EComputeFlags flags, const char* functionName, Body&& body);
    [[noreturn]] void conditionNotFulfilled(int line, const char* functionName, const char* what) const;

    bool m_initialized = false;
    bool m_calculated = false;
    std::shared_ptr<const IException> m_exception;
    BxEvent* m_breakEvent = nullptr;
    BxFlags<EFlags> m_flags;
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};
