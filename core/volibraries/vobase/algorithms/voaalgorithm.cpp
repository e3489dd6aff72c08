#include <vobase/algorithms/voaalgorithm.h>
#include <vobase/algorithms/voalgorithm.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxrtti.h>

#include <string>

namespace {

// The entry `index` of `entries`, or BxException naming `functionName`.
template <class Vector>
const typename Vector::value_type& checkedAt(const Vector& entries, std::uint32_t index, const char* functionName)
{
    if (index >= entries.size())
        BX_THROW(BxException, functionName,
                 "index " + std::to_string(index) + " out of range (count " + std::to_string(entries.size()) + ")");
    return entries[index];
}

std::uint32_t count(std::size_t size)
{
    return static_cast<std::uint32_t>(size);
}

}  // namespace

void VoAAlgorithm::InterfaceDescription::DefineInputType(const wchar_t* name)
{
    m_inputTypes.push_back({name, {}});
}

void VoAAlgorithm::InterfaceDescription::DefineInput(const wchar_t* name, const BxRTTI& rtti)
{
    if (m_inputTypes.empty())
        BX_THROW(BxException, "VoAAlgorithm::InterfaceDescription::DefineInput", "no input type is defined");
    m_inputTypes.back().inputs.push_back({name, &rtti});
}

void VoAAlgorithm::InterfaceDescription::DefineOutput(const wchar_t* name, const BxRTTI& rtti)
{
    m_outputs.push_back({name, &rtti});
}

void VoAAlgorithm::InterfaceDescription::DefineParameter(const wchar_t* name, const BxRTTI& rtti)
{
    m_parameters.push_back({name, &rtti});
}

void VoAAlgorithm::InterfaceDescription::DefineFlagType(const wchar_t* name)
{
    m_flagTypes.push_back({name, {}});
}

void VoAAlgorithm::InterfaceDescription::DefineFlag(const wchar_t* name, std::uint32_t value)
{
    if (m_flagTypes.empty())
        BX_THROW(BxException, "VoAAlgorithm::InterfaceDescription::DefineFlag", "no flag type is defined");
    m_flagTypes.back().flags.push_back({name, value});
}

VoAAlgorithm::~VoAAlgorithm() = default;

void VoAAlgorithm::assertInterfaceIsInitialized() const
{
    if (!m_description)
        m_description = createInterfaceDescription(m_algorithm);
    if (!m_description)
        BX_THROW(BxException, "VoAAlgorithm::assertInterfaceIsInitialized", "no interface description");
}

std::unique_ptr<VoAAlgorithm::InterfaceDescription> VoAAlgorithm::createInterfaceDescription(
    const VoAlgorithm& algorithm) const
{
    return std::make_unique<InterfaceDescription>(algorithm);
}

std::uint32_t VoAAlgorithm::GetFlagTypeCount() const
{
    assertInterfaceIsInitialized();
    return count(m_description->GetFlagTypes().size());
}

const wchar_t* VoAAlgorithm::GetFlagTypeName(std::uint32_t type) const
{
    assertInterfaceIsInitialized();
    return checkedAt(m_description->GetFlagTypes(), type, "VoAAlgorithm::GetFlagTypeName").name.c_str();
}

std::uint32_t VoAAlgorithm::GetFlagCount(std::uint32_t type) const
{
    assertInterfaceIsInitialized();
    return count(checkedAt(m_description->GetFlagTypes(), type, "VoAAlgorithm::GetFlagCount").flags.size());
}

const VoAAlgorithm::SFlag& VoAAlgorithm::flag(std::uint32_t type, std::uint32_t index, const char* functionName) const
{
    assertInterfaceIsInitialized();
    return checkedAt(checkedAt(m_description->GetFlagTypes(), type, functionName).flags, index, functionName);
}

const wchar_t* VoAAlgorithm::GetFlagName(std::uint32_t type, std::uint32_t index) const
{
    return flag(type, index, "VoAAlgorithm::GetFlagName").name.c_str();
}

bool VoAAlgorithm::IsFlagSet(std::uint32_t type, std::uint32_t index) const
{
    const std::uint32_t value = flag(type, index, "VoAAlgorithm::IsFlagSet").value;
    return m_algorithm.IsFlagsSet(BxFlags<VoAlgorithm::EFlags>(value));
}

void VoAAlgorithm::SetFlag(std::uint32_t type, std::uint32_t index, bool set)
{
    const BxFlags<VoAlgorithm::EFlags> value(flag(type, index, "VoAAlgorithm::SetFlag").value);
    set ? m_algorithm.AddFlags(value) : m_algorithm.RemoveFlags(value);
}

std::uint32_t VoAAlgorithm::GetParameterCount() const
{
    assertInterfaceIsInitialized();
    return count(m_description->GetParameters().size());
}

const wchar_t* VoAAlgorithm::GetParameterName(std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    return checkedAt(m_description->GetParameters(), index, "VoAAlgorithm::GetParameterName").name.c_str();
}

const BxRTTI& VoAAlgorithm::GetParameterRTTI(std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    return *checkedAt(m_description->GetParameters(), index, "VoAAlgorithm::GetParameterRTTI").rtti;
}

std::uint32_t VoAAlgorithm::GetInputTypeCount() const
{
    assertInterfaceIsInitialized();
    return count(m_description->GetInputTypes().size());
}

const wchar_t* VoAAlgorithm::GetInputTypeName(std::uint32_t type) const
{
    assertInterfaceIsInitialized();
    return checkedAt(m_description->GetInputTypes(), type, "VoAAlgorithm::GetInputTypeName").name.c_str();
}

std::uint32_t VoAAlgorithm::GetInputCount(std::uint32_t type) const
{
    assertInterfaceIsInitialized();
    return count(checkedAt(m_description->GetInputTypes(), type, "VoAAlgorithm::GetInputCount").inputs.size());
}

const wchar_t* VoAAlgorithm::GetInputName(std::uint32_t type, std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    const char* functionName = "VoAAlgorithm::GetInputName";
    return checkedAt(checkedAt(m_description->GetInputTypes(), type, functionName).inputs, index, functionName)
        .name.c_str();
}

const BxRTTI& VoAAlgorithm::GetInputRTTI(std::uint32_t type, std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    const char* functionName = "VoAAlgorithm::GetInputRTTI";
    return *checkedAt(checkedAt(m_description->GetInputTypes(), type, functionName).inputs, index, functionName)
                .rtti;
}

std::uint32_t VoAAlgorithm::GetOutputCount() const
{
    assertInterfaceIsInitialized();
    return count(m_description->GetOutputs().size());
}

const wchar_t* VoAAlgorithm::GetOutputName(std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    return checkedAt(m_description->GetOutputs(), index, "VoAAlgorithm::GetOutputName").name.c_str();
}

const BxRTTI& VoAAlgorithm::GetOutputRTTI(std::uint32_t index) const
{
    assertInterfaceIsInitialized();
    return *checkedAt(m_description->GetOutputs(), index, "VoAAlgorithm::GetOutputRTTI").rtti;
}
