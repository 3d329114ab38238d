#pragma once

#include "System/System/varTable.h"

namespace Qel {

/// Keeps a table for a scope, whatever the listeners called in it release. Not part of the public interface.
class TableHold {
public:
    explicit TableHold(cVarTable const &table) : m_table(table) { table.AddRef(); }
    ~TableHold() { m_table.Release(); }

    TableHold(TableHold const &) = delete;
    TableHold &operator=(TableHold const &) = delete;

private:
    cVarTable const &m_table;
};

} // namespace Qel
