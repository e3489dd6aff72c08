// The standard implementation of IAlgorithmAccess: it owns one
// InterfaceDescription, built on first use by the virtual
// createInterfaceDescription, and answers every query from it.
//
//   class CSumAccess : public VoAAlgorithm {
//   public:
//       using VoAAlgorithm::VoAAlgorithm;
//   protected:
//       std::unique_ptr<InterfaceDescription> createInterfaceDescription(const VoAlgorithm& algorithm) const override {
//           auto description = std::make_unique<InterfaceDescription>(algorithm);
//           description->DefineInputType(L"Values");
//           description->DefineInput(L"Vector", BxInt32::RTTI);
//           description->DefineOutput(L"Sum", BxInt32::RTTI);
//           description->DefineFlagType(L"Mode");
//           description->DefineFlag(L"Saturate", 0x1);
//           return description;
//       }
//   };
//   // in the algorithm: CSumAccess m_access{*this};  GetExtension("IAlgorithmAccess") returns &m_access
//
// The flags of a description are bit values of the algorithm's own flags
// (VoAlgorithm::GetFlags): IsFlagSet and SetFlag read and change those.
#pragma once

#include <vobase/algorithms/ialgorithmaccess.h>
#include <vobase/vobaseapi.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class VoAlgorithm;

/// The standard implementation of IAlgorithmAccess: it owns one InterfaceDescription, built on first use by the
/// virtual createInterfaceDescription, and answers every query from it.
class VOBASE_API VoAAlgorithm : public IAlgorithmAccess
{
public:
    /// A flag: its name and its bit value in the algorithm's flags.
    struct SFlag
    {
        std::wstring name;          ///< shown to the user, as returned by GetFlagName
        std::uint32_t value = 0;    ///< the flag's bit value in VoAlgorithm::GetFlags()
    };
    /// A named group of flags.
    struct SFlagType
    {
        std::wstring name;          ///< the group's name, as returned by GetFlagTypeName
        std::vector<SFlag> flags;   ///< the group's flags, in definition order
    };
    /// A named, typed entry: an input, an output or a parameter.
    struct SEntry
    {
        std::wstring name;              ///< the entry's name
        const BxRTTI* rtti = nullptr;   ///< registry record of the entry's type; not owned, never null once defined
    };
    /// A named group of inputs.
    struct SInputType
    {
        std::wstring name;              ///< the group's name, as returned by GetInputTypeName
        std::vector<SEntry> inputs;     ///< the group's inputs, in definition order
    };

    /// What an algorithm takes and gives, in definition order.
    class VOBASE_API InterfaceDescription
    {
    public:
        /// An empty description of `algorithm`, which must outlive it; the Define* calls fill it.
        explicit InterfaceDescription(const VoAlgorithm& algorithm) : m_algorithm(&algorithm) {}

        /// Opens a new input type; the following DefineInput calls add to it.
        void DefineInputType(const wchar_t* name);
        /// Adds an input to the input type opened last (BxException when none is open).
        void DefineInput(const wchar_t* name, const BxRTTI& rtti);
        /// Adds an output named `name` of the type `rtti` (the record is kept by address and must outlive this).
        void DefineOutput(const wchar_t* name, const BxRTTI& rtti);
        /// Adds a parameter named `name` of the type `rtti` (the record is kept by address and must outlive this).
        void DefineParameter(const wchar_t* name, const BxRTTI& rtti);
        /// Opens a new flag type; the following DefineFlag calls add to it.
        void DefineFlagType(const wchar_t* name);
        /// Adds a flag to the flag type opened last (BxException when none is open).
        void DefineFlag(const wchar_t* name, std::uint32_t value);

        /// The algorithm this description belongs to.
        const VoAlgorithm& GetAlgorithm() const noexcept { return *m_algorithm; }
        /// The input types with their inputs, in definition order.
        const std::vector<SInputType>& GetInputTypes() const noexcept { return m_inputTypes; }
        /// The outputs, in definition order.
        const std::vector<SEntry>& GetOutputs() const noexcept { return m_outputs; }
        /// The parameters, in definition order.
        const std::vector<SEntry>& GetParameters() const noexcept { return m_parameters; }
        /// The flag types with their flags, in definition order.
        const std::vector<SFlagType>& GetFlagTypes() const noexcept { return m_flagTypes; }

    private:
        const VoAlgorithm* m_algorithm;
        std::vector<SInputType> m_inputTypes;
        std::vector<SEntry> m_outputs;
        std::vector<SEntry> m_parameters;
        std::vector<SFlagType> m_flagTypes;
    };

    /// Describes `algorithm`, which must outlive this object.
    explicit VoAAlgorithm(VoAlgorithm& algorithm) : m_algorithm(algorithm) {}
    VoAAlgorithm(const VoAAlgorithm&) = delete;
    VoAAlgorithm& operator=(const VoAAlgorithm&) = delete;
    ~VoAAlgorithm() override;

    std::uint32_t GetFlagTypeCount() const override;
    const wchar_t* GetFlagTypeName(std::uint32_t type) const override;
    std::uint32_t GetFlagCount(std::uint32_t type) const override;
    const wchar_t* GetFlagName(std::uint32_t type, std::uint32_t flag) const override;
    bool IsFlagSet(std::uint32_t type, std::uint32_t flag) const override;
    void SetFlag(std::uint32_t type, std::uint32_t flag, bool set) override;

    std::uint32_t GetParameterCount() const override;
    const wchar_t* GetParameterName(std::uint32_t index) const override;
    const BxRTTI& GetParameterRTTI(std::uint32_t index) const override;

    std::uint32_t GetInputTypeCount() const override;
    const wchar_t* GetInputTypeName(std::uint32_t type) const override;
    std::uint32_t GetInputCount(std::uint32_t type) const override;
    const wchar_t* GetInputName(std::uint32_t type, std::uint32_t index) const override;
    const BxRTTI& GetInputRTTI(std::uint32_t type, std::uint32_t index) const override;

    std::uint32_t GetOutputCount() const override;
    const wchar_t* GetOutputName(std::uint32_t index) const override;
    const BxRTTI& GetOutputRTTI(std::uint32_t index) const override;

protected:
    /// Builds the description on first use.
    void assertInterfaceIsInitialized() const;
    /// The description of `algorithm`; the base class describes nothing.
    virtual std::unique_ptr<InterfaceDescription> createInterfaceDescription(const VoAlgorithm& algorithm) const;

private:
    const SFlag& flag(std::uint32_t type, std::uint32_t flag, const char* functionName) const;

    VoAlgorithm& m_algorithm;
    mutable std::unique_ptr<InterfaceDescription> m_description;  // built lazily, then never changed
};
