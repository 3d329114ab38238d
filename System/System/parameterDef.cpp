#include "System/System/parameterDef.h"

#include <array>

namespace Qel {

char const *ParameterDef::getParamType() const
{
    static constexpr std::array names{"bool",    "float",   "int",   "uint",   "short",
                                      "ushort",  "long",    "ulong", "string", "vec3",
                                      "matrix3", "matrix4", "quat",  "color",  "material"};
    return paramType < names.size() ? names[paramType] : "unknown";
}

} // namespace Qel
