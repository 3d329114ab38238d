#include "System/System/varTable.h"

#include "Support/PoolHeap/poolHeap.h"
#include "System/System/stringTools.h"
#include "System/System/tableHold.h"
#include "System/System/tableManager.h"

#include <algorithm>
#include <utility>

namespace Qel {

namespace {

constexpr std::uint32_t maxUnsorted = 8; // from so many unsorted items on, they are sorted in

} // namespace

int cVarTable::m_TableCount = 0;

cVarTable::sKey::sKey(varType key)
    : hash(key.isString() ? CalcKey(key.toStPtr()) : key.raw()), name(key.toStPtr(""))
{
}

std::uint32_t cVarTable::CalcKey(char const *text)
{
    return StringTools::calcHash(text);
}

cVarTable::cVarTable(cTableManager &manager, char const *name)
    : m_name(manager.RegisterString(name)), m_manager(&manager)
{
    manager.Register(*this);
    ++m_TableCount;
}

cVarTable::~cVarTable()
{
    Clear();
    m_manager->Unregister(*this);
    m_manager->UnregisterString(m_name);
    --m_TableCount;
}

void cVarTable::Release() const
{
    if (--m_refCount < 1) {
        cTableManager::destroy(*this);
    }
}

void cVarTable::SendCommand(varType key, NotifyCallback callback)
{
    command(key, true, callback);
}

void cVarTable::PostCommand(varType key, NotifyCallback callback)
{
    command(key, false, callback);
}

void cVarTable::command(varType key, bool atOnce, NotifyCallback callback)
{
    KeyVal item{sKey(key), 1};
    m_manager->ItemChange(*this, item, 1, atOnce ? cTableManager::MSG_SEND : cTableManager::MSG_POST,
                          callback);
}

void cVarTable::Set(varType key, varType value, NotifyCallback callback)
{
    sKey const wanted(key);
    int const at = m_index.find(wanted.hash);
    if (at >= 0) {
        Set(m_items[static_cast<std::size_t>(at)], value, callback);
        return;
    }
    // A listener may release the last reference.
    TableHold const hold(*this);
    append(wanted);
    Set(m_items.back(), value, callback);
    // The order is there for whoever looks at the items; nobody else has to wait for it.
    if (m_sortedCount + maxUnsorted <= m_items.size()) {
        m_sortedCount = static_cast<std::uint32_t>(m_items.size());
    }
}

void cVarTable::append(sKey key)
{
    key.name = m_manager->RegisterString(key.name);
    std::size_t const count = m_items.size();
    try {
        m_items.push_back({key, varType()});
        m_index.append(key.hash);
    } catch (...) {
        m_items.resize(count);
        m_manager->UnregisterString(key.name);
        throw;
    }
}

void cVarTable::Set(KeyVal &item, varType const &value, NotifyCallback callback)
{
    if (!value.isSame(item.value)) {
        m_manager->ItemChange(*this, item, value, cTableManager::MSG_POST, callback);
    }
}

varType cVarTable::Get(varType key, varType defaultValue) const
{
    int const at = m_index.find(sKey(key).hash);
    return at >= 0 ? m_items[static_cast<std::size_t>(at)].value : defaultValue;
}

IVarTable &cVarTable::CreateSubTable(varType key)
{
    varType const there = Get(key);
    if (there.isTable()) {
        return there;
    }
    // The text may lie in a table, where a listener can have it freed.
    std::uint32_t const hash = sKey(key).hash;
    TableHold const hold(*this);
    cVarTable &fresh = m_manager->Create(key.toStPtr(""));
    TableHold const holdFresh(fresh);
    fresh.Release();
    Set(key, fresh, nullptr);
    // A listener may have put something else in its place.
    return Get(hash);
}

ITableManager &cVarTable::GetManager()
{
    return *m_manager;
}

void cVarTable::Clear()
{
    cTableManager &manager = *m_manager;
    std::size_t kept = 0;
    for (KeyVal const &item : m_items) {
        kept += (manager.keeps(item.key.name) ? 1u : 0u) + (manager.keeps(item.value) ? 1u : 0u);
    }
    manager.reserveFreelist(kept);
    for (KeyVal const &item : m_items) {
        manager.discard(item.key.name);
        manager.discard(item.value);
    }
    m_items.clear();
    m_index.clear();
    m_sortedCount = 0;
    m_orderedCount = 0;
    // May release the last reference to this table, if it has held itself.
    manager.FlushFreelist();
}

std::vector<cVarTable::KeyVal> const &cVarTable::GetItems() const
{
    if (m_orderedCount != m_sortedCount) {
        std::vector<KeyVal> ordered = m_items;
        std::sort(ordered.begin(), ordered.begin() + m_sortedCount,
                  [](KeyVal const &a, KeyVal const &b) { return a.key.hash < b.key.hash; });
        VarTableIndex index;
        for (KeyVal const &item : ordered) {
            index.append(item.key.hash);
        }
        m_items = std::move(ordered);
        m_index = std::move(index);
        m_orderedCount = m_sortedCount;
    }
    return m_items;
}

} // namespace Qel
