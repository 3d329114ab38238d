#pragma once

#include "System/System/export.h"
#include "System/System/varTableInterface.h"

namespace Qel {

/// The manager of DummyTable: takes listeners and never tells them.
class QEL_API DummyManager final : public ITableManager {
public:
    static DummyManager &Instance(); ///< the only one; there at any time

    DummyManager(DummyManager const &) = delete;
    DummyManager &operator=(DummyManager const &) = delete;

    void AddListener(NotifyCallback, void *, IVarTable *) override {}
    void RemoveListener(NotifyCallback, void *) override {}

private:
    constexpr DummyManager() = default;
    static DummyManager msInstance;
};

/// The table that stands for no table: holds nothing, keeps nothing, and is its own sub-table. So a chain of
/// lookups in tables that are not there ends in nil.
class QEL_API DummyTable final : public IVarTable {
public:
    static DummyTable &Instance(); ///< the only one; there at any time

    DummyTable(DummyTable const &) = delete;
    DummyTable &operator=(DummyTable const &) = delete;

    void Release() const override {}
    void AddRef() const override {}
    void SendCommand(varType, NotifyCallback = nullptr) override {}
    void PostCommand(varType, NotifyCallback = nullptr) override {}
    void Set(varType, varType, NotifyCallback = nullptr) override {}
    /// Nil, whatever the default.
    varType Get(varType, varType = varType()) const override { return {}; }
    IVarTable &CreateSubTable(varType) override { return *this; }
    ITableManager &GetManager() override { return DummyManager::Instance(); }

private:
    constexpr DummyTable() = default;
    static DummyTable msInstance;
};

} // namespace Qel
