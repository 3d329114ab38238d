#include "System/System/varTable.h"

#include "Support/PoolHeap/poolHeap.h"
#include "System/System/stringTools.h"
#include "System/System/tableHold.h"
#include "System/System/tableManager.h"

#include <algorithm>
#include <array>

namespace Qel {

namespace {

constexpr std::uint32_t maxUnsorted = 8; // from so many unsorted items on, they are sorted in

bool hashLess(cVarTable::KeyVal const &a, cVarTable::KeyVal const &b)
{
    return a.key.hash < b.key.hash;
}

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
    KeyVal item{key, 1};
    m_manager->ItemChange(*this, item, 1, atOnce ? cTableManager::MSG_SEND : cTableManager::MSG_POST,
                          callback);
}

void cVarTable::Set(varType key, varType value, NotifyCallback callback)
{
    sKey const wanted = key;
    int const at = m_index.find(wanted.hash);
    if (at >= 0) {
        Set(m_items[static_cast<std::size_t>(at)], value, callback);
        return;
    }
    // A listener may release the last reference before the items are sorted.
    TableHold const hold(*this);
    m_items.push_back({wanted, varType()});
    try {
        m_items.back().key.name = m_manager->RegisterString(wanted.name);
        m_index.append(wanted.hash);
    } catch (...) {
        m_items.pop_back();
        throw;
    }
    Set(m_items.back(), value, callback);
    if (m_sortedCount + maxUnsorted <= m_items.size()) {
        sortItems();
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
    TableHold const hold(*this);
    cVarTable &fresh = m_manager->Create(key.toStPtr(""));
    TableHold const holdFresh(fresh);
    fresh.Release();
    Set(key, fresh, nullptr);
    // A listener may have put something else in its place.
    return Get(key);
}

ITableManager &cVarTable::GetManager()
{
    return *m_manager;
}

void cVarTable::Clear()
{
    cTableManager &manager = *m_manager;
    for (KeyVal const &item : m_items) {
        manager.discard(item.key.name);
        manager.discard(item.value);
    }
    m_items.clear();
    m_index.clear();
    m_sortedCount = 0;
    // May release the last reference to this table, if it has held itself.
    manager.FlushFreelist();
}

// The new ones go to their places from the last to the first, so that every item moves once.
void cVarTable::mergeIn(std::size_t sorted, std::size_t added)
{
    auto const firstFresh = m_items.begin() + static_cast<std::ptrdiff_t>(sorted);
    std::sort(firstFresh, m_items.end(), hashLess);
    std::array<KeyVal, maxUnsorted> fresh;
    std::copy(firstFresh, m_items.end(), fresh.begin());

    KeyVal *const items = m_items.data();
    std::uint32_t *const hashes = m_index.data();
    std::uint32_t *end = hashes + sorted;
    for (std::size_t left = added; left-- > 0;) {
        std::uint32_t const hash = fresh[left].key.hash;
        std::uint32_t *const place = std::upper_bound(hashes, end, hash);
        std::move_backward(items + (place - hashes), items + (end - hashes),
                           items + (end - hashes) + left + 1);
        std::move_backward(place, end, end + left + 1);
        items[static_cast<std::size_t>(place - hashes) + left] = fresh[left];
        place[left] = hash;
        end = place;
    }
}

void cVarTable::sortItems()
{
    std::size_t const sorted = m_sortedCount;
    std::size_t const added = m_items.size() - sorted;
    if (sorted == 0 || added > maxUnsorted) {
        std::sort(m_items.begin(), m_items.end(), hashLess);
        std::transform(m_items.begin(), m_items.end(), m_index.data(),
                       [](KeyVal const &item) { return item.key.hash; });
    } else {
        mergeIn(sorted, added);
    }
    m_sortedCount = static_cast<std::uint32_t>(m_items.size());
    m_index.setSorted(m_sortedCount);
}

} // namespace Qel
