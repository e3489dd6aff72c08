#include <vobase/objects/voparameterset.h>

VoParameterSet::VoParameterSet() = default;
VoParameterSet::VoParameterSet(const VoParameterSet& other) = default;
VoParameterSet& VoParameterSet::operator=(const VoParameterSet& other) = default;
VoParameterSet::~VoParameterSet() = default;

const VoParameterSet::Origin& VoParameterSet::origin() noexcept
{
    // Exceptions of the shared members name this class and this place.
    static constexpr Origin origin{"VoParameterSet", __FILE__, __LINE__};
    return origin;
}
