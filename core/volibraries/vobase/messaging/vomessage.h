// The base class of everything the message dispatcher carries.
//
//   BxSmartPointer<const VoMessage> message(new VoMessageCommand(7));
//   VoMessageDispatcher::PostMessageW(message);      // to every subscriber
//   message->GetID();                                // process-wide, never reused
//   message->ToString();                             // L"VoMessageCommand (Message 273 [7, 0])"
//
// Messages are reference counted (BxSmartPointer) and registered in the type
// registry; routing goes by the type record (IsKindOf), never by the built-in
// run-time type identity. Every construction, copies and assignments included,
// takes a fresh ID from one atomic process-wide counter: the first message
// ever made has ID 1, and a copy is a different message with its own ID.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/bxtypes.h>
#include <bxbase/iobject.h>
#include <bxbase/ireferencecounted.h>

#include <cstdint>

/// The base class of everything the message dispatcher carries.
class VOBASE_API VoMessage : public IReferenceCounted, public IObject
{
    BX_DECLARE_RTTI();

public:
    /// A new message with a fresh ID.
    VoMessage();
    /// A copy is a new message: it gets a fresh ID.
    VoMessage(const VoMessage& other);
    /// Like the copy: the new message gets a fresh ID (a message's identity never moves).
    VoMessage(VoMessage&& other) noexcept;
    /// Keeps nothing of the other's identity: this message takes a fresh ID.
    VoMessage& operator=(const VoMessage& other);
    /// Like the copy assignment: this message takes a fresh ID.
    VoMessage& operator=(VoMessage&& other) noexcept;
    ~VoMessage() override;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// The process-wide ID given at construction (or at the last assignment).
    std::uint32_t GetID() const noexcept { return m_id; }

    /// Writes the class name; derived classes append their fields.
    virtual void Dump(BxStreamWriteASCIIT<CStringW>& stream) const;
    /// Dumps to the trace stream (category "Trace").
    void Dump() const;
    /// The dump as text.
    CStringW ToString() const;

    /// Equality as the workflow matches messages; the base compares identity
    /// (the same message object). Derived classes compare their fields.
    virtual bool operator==(const VoMessage& other) const;

private:
    static std::uint32_t nextID() noexcept;

    mutable BxReferenceCounter<unsigned int> m_referenceCounter;  ///< starts at 0
    std::uint32_t m_id;
};
