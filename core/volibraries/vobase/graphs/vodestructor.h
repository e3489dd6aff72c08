// The destruction object of an attribute slot: ends the life of the T that a
// VoConstructor<T> built in the slot.
//
//   VoDestructor<BxSmartPointer<IWorkItem>> release;
//   release(slotBytes);   // drops the reference the slot held
#pragma once

/// The destruction object of an attribute slot: ends the life of the T that a VoConstructor<T> built in the slot.
template <class T>
class VoDestructor
{
public:
    /// Destroys the T living in `slot`; the slot's bytes stay allocated (the container frees the element).
    void operator()(void* slot) const { static_cast<T*>(slot)->~T(); }
};
