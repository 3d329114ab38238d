#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

#include <bit>
#include <cstdint>

namespace Qel {

class IVarTable;

/// A value of a variable table, or a key: nothing, a number, a text, a pointer or a table.
///
/// A plain pair of type and data that owns nothing. What it points at belongs to whoever set it; a table
/// copies texts and counts tables when a value is set in it.
///
/// @code
/// table.Set("name", "Ada");
/// table.Set("lives", 3);
/// int const lives = table.Get("lives", 0);
/// table.Get("inventory").toTable().Set("rope", 1); // nothing happens if there is no such table
/// @endcode
class QEL_API varType {
public:
    enum EType : std::uint32_t {
        VAR_NIL = 0,
        VAR_I32 = 1,
        VAR_FLOAT = 2,
        VAR_STRING = 3,
        VAR_DATA_PTR = 4,
        VAR_TABLE = 5,
    };

    varType() = default; ///< nil
    varType(int value) : m_type(VAR_I32), m_data(static_cast<std::uint32_t>(value)) {}
    varType(unsigned int value) : m_type(VAR_I32), m_data(value) {} ///< the same 32 bits
    varType(float value) : m_type(VAR_FLOAT), m_data(std::bit_cast<std::uint32_t>(value)) {}
    varType(char const *text)
        : m_type(VAR_STRING), m_data(address(text != nullptr ? text : "")) {} ///< null is ""
    varType(String const &text) : varType(text.c_str()) {} ///< valid as long as @p text is not changed
    varType(void const *pointer) : m_type(VAR_DATA_PTR), m_data(address(pointer)) {}
    varType(IVarTable &table) : m_type(VAR_TABLE), m_data(address(&table)) {}
    varType(IVarTable *table); ///< null is the dummy table

    EType type() const { return m_type; }
    bool isNil() const { return m_type == VAR_NIL; }
    bool isI32() const { return m_type == VAR_I32; }
    bool isFloat() const { return m_type == VAR_FLOAT; }
    bool isString() const { return m_type == VAR_STRING; }
    bool iscstrPtr() const { return m_type == VAR_STRING; }
    bool isDataPtr() const { return m_type == VAR_DATA_PTR; }
    bool isTable() const { return m_type == VAR_TABLE; }

    /// The integer; a float cut towards zero, to the nearest integer if it has no such, NaN to 0; the number
    /// at the start of a text. For any other type @p fallback, in the operator 0.
    int toI32(int fallback = 0) const;
    operator int() const { return toI32(0); }

    /// The float, an integer as one, or the number at the start of a text. For any other type @p fallback,
    /// in the operator 0.
    float toF32(float fallback = 0.0f) const;
    operator float() const { return toF32(0.0f); }

    /// The text's own pointer, borrowed. For any other type @p fallback, in the operator the empty text.
    char const *toStPtr(char const *fallback = "") const
    {
        return isString() ? std::bit_cast<char const *>(m_data) : fallback;
    }
    operator char const *() const { return toStPtr(""); }

    /// A copy of the text, or a number as text. For any other type @p fallback, in the operator the empty
    /// text.
    String toString(String const &fallback) const;
    String toString(char const *fallback = "") const; ///< a null @p fallback is the empty text
    operator String() const { return toString(""); }

    void const *toDataPtr() const { return isDataPtr() ? std::bit_cast<void const *>(m_data) : nullptr; }

    /// The table, or the dummy table for any other type: chains of lookups need no test.
    IVarTable &toTable() const;
    operator IVarTable &() const { return toTable(); }

    /// The data as a key: the 32 bits of a number. Of a pointer, its upper half is folded into the lower.
    std::uint32_t raw() const
    {
        return static_cast<std::uint32_t>(m_data) ^ static_cast<std::uint32_t>(std::uint64_t{m_data} >> 32);
    }

    /// Does a change from @p other to this one count as none? Texts compare by their characters, all else by
    /// type and bits: 1 and 1.0f differ, and so do 0.0f and -0.0f.
    bool isSame(varType const &other) const;

private:
    static std::uintptr_t address(void const *pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

    EType m_type = VAR_NIL;
    std::uintptr_t m_data = 0; // as wide as what it points with
};

} // namespace Qel
