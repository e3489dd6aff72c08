#include <vobase/objects/voparametermaps.h>
#include <vobase/objects/vovariant.h>

#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamwritebinary.h>

int VoParameterMaps::GetParameter(const Map& parameters, const CStringW& name, BxVariant& out)
{
    const auto found = parameters.find(name);
    if (found == parameters.end())
        return 0;
    out = found->second;
    return 1;
}

int VoParameterMaps::GetParameter(const Map& parameters, const CStringW& name, const BxVariant& fallback,
                                  BxVariant& out)
{
    if (GetParameter(parameters, name, out))
        return 1;
    out = fallback;
    return 0;
}

bool VoParameterMaps::IsInLimits(const Map& minimum, const Map& maximum, const CStringW& name,
                                 const BxVariant& value)
{
    if (const auto low = minimum.find(name); low != minimum.end() && value < low->second)
        return false;
    if (const auto high = maximum.find(name); high != maximum.end() && value > high->second)
        return false;
    return true;
}

void VoParameterMaps::Write(BxStreamWriteBinary& stream, const Map& parameters)
{
    stream.WriteVersion(0);
    stream.WriteVersion(0);
    stream << static_cast<unsigned int>(parameters.size());
    for (const auto& [name, value] : parameters) {
        stream << name;
        VoVariant::WriteValue(stream, value);
    }
}

void VoParameterMaps::Read(BxStreamReadBinary& stream, Map& parameters)
{
    stream.ReadAndCompareVersion(0);
    stream.ReadAndCompareVersion(0);
    unsigned int count = 0;
    stream >> count;
    // No reservation from the count: a corrupt count ends with the data.
    Map read;
    for (unsigned int i = 0; i < count; ++i) {
        CStringW name;
        BxVariant value;
        stream >> name;
        VoVariant::ReadValue(stream, value);
        read.insert_or_assign(std::move(name), std::move(value));
    }
    parameters.swap(read);
}
