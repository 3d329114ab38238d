#pragma once

#include "System/System/export.h"
#include "System/System/varTableIndex.h"
#include "System/System/varTableInterface.h"
#include "System/System/varType.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

class cTableManager;

/// The table that scripts and game data keep their values in.
///
/// Keys are compared by their 32-bit values alone, a text's by its hash; the texts are kept for listeners and
/// tools. Items come in order of these values, but for up to seven new ones at the end.
///
/// A table that holds itself, directly or through others, is kept by itself: Clear() one of the circle before
/// the last Release(). Tables may be nested to any depth.
class QEL_API cVarTable final : public IVarTable {
public:
    struct QEL_API sKey {
        sKey() : hash(0), name("") {}
        explicit sKey(varType key); ///< with the key's own text, borrowed

        std::uint32_t hash; ///< of the text; for a key of any other type its raw 32-bit data
        char const *name;   ///< the text; empty for a key of any other type
    };

    struct KeyVal {
        sKey key;
        varType value;
    };

    cVarTable(cVarTable const &) = delete;
    cVarTable &operator=(cVarTable const &) = delete;

    /// The CRC-32 of the text, started at 0xFFFFFFFF and not inverted at the end, as StringTools::calcHash()
    /// gives it. Null counts as empty.
    static std::uint32_t CalcKey(char const *text);

    void Release() const override;
    void AddRef() const override { ++m_refCount; }
    void SendCommand(varType key, NotifyCallback callback = nullptr) override;
    void PostCommand(varType key, NotifyCallback callback = nullptr) override;
    void Set(varType key, varType value, NotifyCallback callback = nullptr) override;
    varType Get(varType key, varType defaultValue = varType()) const override;
    IVarTable &CreateSubTable(varType key) override;
    ITableManager &GetManager() override;

    /// Removes every item. No listener is told. While listeners are being told of a change, what they may
    /// still see stays valid until they all know.
    /// @throws std::bad_alloc if there is no memory; nothing has changed then
    void Clear();

    char const *GetName() const { return m_name; } ///< as at creation; never null

    /// The items, for tools: the first GetSortedCount() in order of hashes, the rest as they were set. Valid
    /// until the next Set() or Clear(). The first call after new ones have been sorted in does the sorting.
    std::vector<KeyVal> const &GetItems() const;
    std::uint32_t GetSortedCount() const { return m_sortedCount; } ///< so many of the first items are sorted

    static int m_TableCount; ///< live tables of the process

private:
    friend class cTableManager;

    cVarTable(cTableManager &manager, char const *name);
    ~cVarTable();

    void append(sKey key);
    void Set(KeyVal &item, varType const &value, NotifyCallback callback);
    void command(varType key, bool atOnce, NotifyCallback callback);

    char const *m_name;
    mutable std::vector<KeyVal> m_items;
    std::uint32_t m_sortedCount = 0;
    mutable std::int32_t m_refCount = 1;
    cTableManager *m_manager;

    mutable std::size_t m_place = 0; // in the manager's list of tables
    mutable VarTableIndex m_index;
    mutable std::uint32_t m_orderedCount = 0; // m_sortedCount when the items were last put in order
};

/// What a listener is told. The pointers in it are valid during the call.
struct sMsgNotify {
    void *user;             ///< as given to AddListener()
    cVarTable const *table; ///< which table has changed
    cVarTable::sKey key;    ///< which key; `hash` alone says which if it is no text
    varType const *value;   ///< what it was set to by the change that is told; 1 for a command
    NotifyCallback sender;  ///< whom the change is not told; only in messages that were queued, else null
};

} // namespace Qel
