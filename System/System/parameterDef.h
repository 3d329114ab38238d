#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>
#include <vector>

namespace Qel {

/// What a parameter's text stands for. Information for tools: nothing here reads text by it.
enum ParameterType : std::uint32_t {
    PARAM_BOOL = 0,
    PARAM_FLOAT = 1,
    PARAM_INT = 2,
    PARAM_UINT = 3,
    PARAM_SHORT = 4,
    PARAM_USHORT = 5,
    PARAM_LONG = 6,
    PARAM_ULONG = 7,
    PARAM_STRING = 8,
    PARAM_VEC3 = 9,
    PARAM_MATRIX3 = 10,
    PARAM_MATRIX4 = 11,
    PARAM_QUAT = 12,
    PARAM_COLOR = 13,
    PARAM_MATERIAL = 14,
};

/// Name, description and type of one parameter.
class QEL_API ParameterDef {
public:
    ParameterDef(String const &parameterName, String const &text, ParameterType type)
        : name(parameterName), description(text), paramType(type)
    {
    }

    char const *getParamType() const; ///< "bool" to "material"; "unknown" for a value that names no type

    /// Same name and same type; the description does not count.
    friend bool operator==(ParameterDef const &a, ParameterDef const &b)
    {
        return a.name == b.name && a.paramType == b.paramType;
    }

    String name;
    String description;
    ParameterType paramType;
};

/// Parameters in the order in which they were added.
using ParameterList = std::vector<ParameterDef>;

} // namespace Qel
