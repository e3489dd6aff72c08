// The self-description of an algorithm, offered as an extension: its flag
// types and flags, its parameters, its input types with their inputs, and its
// outputs, each named and typed by a registry record. Tools use it to wire
// algorithms without knowing their classes.
//
//   auto* access = dynamic_cast<IAlgorithmAccess*>(algorithm.GetExtension("IAlgorithmAccess", true));
//   for (std::uint32_t i = 0; i < access->GetOutputCount(); ++i)
//       std::wcout << access->GetOutputName(i) << L": " << access->GetOutputRTTI(i).GetName() << L"\n";
//
// Every index is checked against its count; an index out of range throws
// BxException. Names stay valid as long as the algorithm lives.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/iextensioninterface.h>

#include <cstdint>

class BxRTTI;

/// The self-description of an algorithm, offered as an extension: its flag types and flags, its parameters, its
/// input types with their inputs, and its outputs, each named and typed by a registry record.
class VOBASE_API IAlgorithmAccess : public IExtensionInterface
{
public:
    /// Number of flag types (named groups of flags) the algorithm publishes.
    virtual std::uint32_t GetFlagTypeCount() const = 0;
    /// Name of flag type `type` (0 to GetFlagTypeCount() - 1); BxException when out of range.
    virtual const wchar_t* GetFlagTypeName(std::uint32_t type) const = 0;
    /// Number of flags in flag type `type`; BxException when `type` is out of range.
    virtual std::uint32_t GetFlagCount(std::uint32_t type) const = 0;
    /// Name of flag `flag` of flag type `type`; BxException when either index is out of range.
    virtual const wchar_t* GetFlagName(std::uint32_t type, std::uint32_t flag) const = 0;
    /// True when the flag's value is set in the algorithm's flags.
    virtual bool IsFlagSet(std::uint32_t type, std::uint32_t flag) const = 0;
    /// Sets or clears the flag's value in the algorithm's flags.
    virtual void SetFlag(std::uint32_t type, std::uint32_t flag, bool set) = 0;

    /// Number of parameters the algorithm takes.
    virtual std::uint32_t GetParameterCount() const = 0;
    /// Name of parameter `index`; BxException when out of range.
    virtual const wchar_t* GetParameterName(std::uint32_t index) const = 0;
    /// Registry record of the type of parameter `index`; BxException when out of range.
    virtual const BxRTTI& GetParameterRTTI(std::uint32_t index) const = 0;

    /// Number of input types (named groups of inputs; an algorithm may accept alternative sets of input).
    virtual std::uint32_t GetInputTypeCount() const = 0;
    /// Name of input type `type`; BxException when out of range.
    virtual const wchar_t* GetInputTypeName(std::uint32_t type) const = 0;
    /// Number of inputs of input type `type`; BxException when `type` is out of range.
    virtual std::uint32_t GetInputCount(std::uint32_t type) const = 0;
    /// Name of input `index` of input type `type`; BxException when either index is out of range.
    virtual const wchar_t* GetInputName(std::uint32_t type, std::uint32_t index) const = 0;
    /// Registry record of the type of input `index` of input type `type`; BxException when either index is out of
    /// range.
    virtual const BxRTTI& GetInputRTTI(std::uint32_t type, std::uint32_t index) const = 0;

    /// Number of outputs the algorithm gives.
    virtual std::uint32_t GetOutputCount() const = 0;
    /// Name of output `index`; BxException when out of range.
    virtual const wchar_t* GetOutputName(std::uint32_t index) const = 0;
    /// Registry record of the type of output `index`; BxException when out of range.
    virtual const BxRTTI& GetOutputRTTI(std::uint32_t index) const = 0;
};
