#include "System/System/varType.h"

#include "System/System/dummyTable.h"
#include "System/System/stringConverter.h"

#include <cstring>
#include <limits>

namespace Qel {

namespace {

int truncated(float value)
{
    constexpr float beyond = 2147483648.0f; // 2^31
    if (value >= beyond) {
        return std::numeric_limits<int>::max();
    }
    if (value < -beyond) {
        return std::numeric_limits<int>::min();
    }
    return value == value ? static_cast<int>(value) : 0;
}

} // namespace

varType::varType(IVarTable *table) : varType(table != nullptr ? *table : DummyTable::Instance())
{
}

int varType::toI32(int fallback) const
{
    switch (m_type) {
    case VAR_I32:
        return static_cast<int>(raw());
    case VAR_FLOAT:
        return truncated(std::bit_cast<float>(raw()));
    case VAR_STRING:
        return StringConverter::parseInt(toStPtr());
    default:
        return fallback;
    }
}

float varType::toF32(float fallback) const
{
    switch (m_type) {
    case VAR_I32:
        return static_cast<float>(static_cast<int>(raw()));
    case VAR_FLOAT:
        return std::bit_cast<float>(raw());
    case VAR_STRING:
        return StringConverter::parseReal(toStPtr());
    default:
        return fallback;
    }
}

String varType::toString(String const &fallback) const
{
    return toString(fallback.c_str());
}

String varType::toString(char const *fallback) const
{
    switch (m_type) {
    case VAR_I32:
        return StringConverter::toString(toI32());
    case VAR_FLOAT:
        return StringConverter::toString(toF32());
    case VAR_STRING:
        return toStPtr();
    default:
        return fallback;
    }
}

IVarTable &varType::toTable() const
{
    return isTable() ? *std::bit_cast<IVarTable *>(m_data) : DummyTable::Instance();
}

bool varType::isSame(varType const &other) const
{
    if (m_type != other.m_type) {
        return false;
    }
    return m_data == other.m_data || (isString() && std::strcmp(toStPtr(), other.toStPtr()) == 0);
}

} // namespace Qel
