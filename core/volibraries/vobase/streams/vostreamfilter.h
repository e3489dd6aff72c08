// Base of every transforming stream (ZIP, predictive coder, floating-point
// quantizer): a stream of type TOut that reads from or writes to an inner
// stream of type TIn.
//
//   VoStreamWriteCompressedZIP zip(file);                              // borrows `file`
//   VoStreamWriteCompressedZIP zip(std::make_unique<CMyStream>(...));  // owns it
//
// Instantiated for <BxStreamReadBinary, BxStreamReadBinary> and
// <BxStreamWriteBinary, BxStreamWriteBinary>. A borrowed inner stream must
// outlive the filter; an owned one is destroyed with it.
#pragma once

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <memory>

/// Base of every transforming stream (ZIP, predictive coder, floating-point quantizer): a stream of type TOut
/// that reads from or writes to an inner stream of type TIn.
template <class TOut, class TIn>
class VoStreamFilter : public TOut
{
public:
    /// Borrows `inner`.
    explicit VoStreamFilter(TIn& inner) : m_inner(&inner) {}

    /// Takes ownership of `inner`, which must not be null.
    explicit VoStreamFilter(std::unique_ptr<TIn> inner) : m_inner(inner.get()), m_owned(std::move(inner))
    {
        if (!m_inner)
            throw BxExceptionPreconditionViolation(__FILE__, __LINE__, "VoStreamFilter::VoStreamFilter",
                                                   "inner stream is null");
    }

    /// The inner stream.
    TIn& GetInnerStream() const noexcept { return *m_inner; }

protected:
    /// The inner stream the filter reads from or writes to; never null.
    TIn* m_inner;
    /// Owns the inner stream when the filter was given ownership; null when
    /// it is borrowed.
    std::unique_ptr<TIn> m_owned;
};
