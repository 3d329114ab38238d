#include "System/System/tableManager.h"

#include "System/System/tableHold.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace Qel {

template class tSingleton<cTableManager>;

namespace {

alignas(cTableManager) std::byte storage[sizeof(cTableManager)];

bool ownsSomething(varType const &value)
{
    return value.isString() || value.isTable();
}

} // namespace

// The manager's life in the process. A host that has loaded the library late may still hold tables when it
// goes, so that an empty manager is left in its place.
struct cTableManager::Life {
    cTableManager *const manager = ::new (storage) cTableManager;

    ~Life()
    {
        manager->~cTableManager();
        ::new (storage) cTableManager;
    }

    static Life const life;
};

__attribute__((init_priority(102))) cTableManager::Life const cTableManager::Life::life;

// Listeners are being told for as long as one of these lives.
class cTableManager::Dispatch {
public:
    explicit Dispatch(cTableManager &manager) : m_manager(manager) { ++manager.m_dispatchDepth; }

    ~Dispatch()
    {
        if (--m_manager.m_dispatchDepth == 0 && m_manager.m_clientsLeft) {
            std::erase_if(m_manager.m_clients,
                          [](sNotifyClient const &client) { return client.function == nullptr; });
            m_manager.m_clientsLeft = false;
        }
    }

    Dispatch(Dispatch const &) = delete;
    Dispatch &operator=(Dispatch const &) = delete;

private:
    cTableManager &m_manager;
};

// Nothing that was replaced is freed for as long as one of these lives: not between two messages either,
// since the change that replaced it may be the one still to be told.
class cTableManager::Round {
public:
    explicit Round(cTableManager &manager) : m_manager(manager) { ++manager.m_rounds; }
    ~Round() { --m_manager.m_rounds; }

    Round(Round const &) = delete;
    Round &operator=(Round const &) = delete;

private:
    cTableManager &m_manager;
};

cTableManager::QueuedNotify::QueuedNotify(cTableManager &owner, sMsgNotify const &message,
                                          NotifyCallback callback)
    : sMsgNotify(message), manager(owner), keyText(owner.CopyValue(message.key.name))
{
    try {
        copy = owner.CopyValue(*message.value);
    } catch (...) {
        owner.FreeValue(keyText);
        throw;
    }
    key.name = keyText.toStPtr();
    value = &copy;
    sender = callback;
    table->AddRef();
}

cTableManager::QueuedNotify::~QueuedNotify()
{
    for (varType *const own : {&keyText, &copy}) {
        // Listeners that still run may have borrowed it. If none does, a long chain of posts must not pile it
        // up.
        if (manager.m_dispatchDepth != 0) {
            manager.discard(*own);
        } else {
            manager.FreeValue(*own);
        }
    }
    table->Release();
}

cTableManager::~cTableManager()
{
    m_queue.clear();
    FlushFreelist();
}

cVarTable &cTableManager::Create(char const *name)
{
    void *const place = PoolHeap::std_alloc(sizeof(cVarTable));
    if (place == nullptr) {
        throw std::bad_alloc();
    }
    try {
        return *::new (place) cVarTable(*this, name);
    } catch (...) {
        PoolHeap::std_free(place);
        throw;
    }
}

void cTableManager::destroy(cVarTable const &table)
{
    table.~cVarTable();
    PoolHeap::std_free(const_cast<cVarTable *>(&table));
}

// While listeners are told, places in the list must stay what they are.
template <typename Test>
void cTableManager::dropClients(Test const &test)
{
    if (m_dispatchDepth == 0) {
        std::erase_if(m_clients, test);
        return;
    }
    for (sNotifyClient &client : m_clients) {
        if (test(client)) {
            client = {};
            m_clientsLeft = true;
        }
    }
}

void cTableManager::AddListener(NotifyCallback function, void *user, IVarTable *table)
{
    if (function != nullptr) {
        m_clients.push_back({function, user, table});
    }
}

void cTableManager::RemoveListener(NotifyCallback function, void *user)
{
    dropClients(
        [=](sNotifyClient const &client) { return client.function == function && client.user == user; });
}

bool cTableManager::isRegistered(cVarTable const &table) const
{
    return table.m_place < m_tables.size() && m_tables[table.m_place] == &table;
}

void cTableManager::Register(cVarTable const &table)
{
    if (!isRegistered(table)) {
        m_tables.push_back(&table);
        table.m_place = m_tables.size() - 1;
    }
}

void cTableManager::Unregister(cVarTable const &table)
{
    if (isRegistered(table)) {
        m_tables[table.m_place] = nullptr;
        ++m_tablesGone;
    }
    if (m_tablesGone > m_tables.size() / 2) {
        GetTables();
    }
    // Another table may come to lie at this one's address.
    IVarTable const *const gone = &table;
    dropClients([=](sNotifyClient const &client) { return client.table == gone; });
}

// Closing the gaps only now and then keeps the order at little cost, however many tables come and go.
std::vector<cVarTable const *> const &cTableManager::GetTables()
{
    if (m_tablesGone != 0) {
        std::erase(m_tables, nullptr);
        for (std::size_t i = 0; i < m_tables.size(); ++i) {
            m_tables[i]->m_place = i;
        }
        m_tablesGone = 0;
    }
    return m_tables;
}

char const *cTableManager::RegisterString(char const *text)
{
    if (text == nullptr || *text == '\0') {
        return "";
    }
    std::size_t const bytes = std::strlen(text) + 1;
    void *const copy = poolheap_malloc(bytes);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(copy, text, bytes);
    ++m_stringCount;
    return static_cast<char const *>(copy);
}

void cTableManager::UnregisterString(char const *text)
{
    if (text == nullptr || *text == '\0') {
        return;
    }
    --m_stringCount;
    poolheap_free(const_cast<char *>(text));
}

varType cTableManager::CopyValue(varType const &value)
{
    if (value.isString()) {
        return RegisterString(value.toStPtr());
    }
    if (value.isTable()) {
        value.toTable().AddRef();
    }
    return value;
}

void cTableManager::FreeValue(varType &value)
{
    varType const gone = value;
    value = varType();
    if (gone.isString()) {
        UnregisterString(gone.toStPtr());
    } else if (gone.isTable()) {
        gone.toTable().Release();
    }
}

void cTableManager::ItemChange(cVarTable const &table, cVarTable::KeyVal &item, varType const &value,
                               eMsgMode mode, NotifyCallback callback)
{
    bool const replaces = ownsSomething(item.value);
    if (replaces) {
        m_freeList.push_back(item.value);
    }
    varType fresh;
    try {
        fresh = CopyValue(value);
    } catch (...) {
        if (replaces) {
            m_freeList.pop_back();
        }
        throw;
    }
    item.value = fresh;

    // From here on the item is not looked at: a listener may move or remove it.
    sMsgNotify const message{nullptr, &table, item.key, &fresh, nullptr};
    if (m_dispatchDepth != 0 && mode == MSG_POST) {
        m_queue.emplace_back(*this, message, callback);
        return;
    }
    TableHold const hold(table);
    {
        Round const round(*this);
        tell(message, callback);
        while (!m_queue.empty()) {
            std::list<QueuedNotify> front;
            front.splice(front.begin(), m_queue, m_queue.begin());
            tell(front.front(), front.front().sender);
        }
    }
    FlushFreelist();
}

void cTableManager::tell(sMsgNotify message, NotifyCallback callback)
{
    Dispatch const dispatch(*this);
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        sNotifyClient const client = m_clients[i];
        bool const hears = client.table == nullptr || client.table == message.table;
        if (hears && client.function != callback && client.function != nullptr) {
            message.user = client.user;
            client.function(message);
        }
    }
}

// Does discard() put it on the list?
bool cTableManager::keeps(varType const &value) const
{
    return value.isTable() || (value.isString() && m_rounds != 0);
}

// So that discard() can not fail for as many values. Grows by doubling: a tree of small tables asks often.
void cTableManager::reserveFreelist(std::size_t count)
{
    std::size_t const needed = m_freeList.size() + count;
    if (needed > m_freeList.capacity()) {
        m_freeList.reserve(std::max(needed, 2 * m_freeList.capacity()));
    }
}

void cTableManager::discard(varType value)
{
    if (keeps(value)) {
        m_freeList.push_back(value);
    } else if (value.isString()) {
        UnregisterString(value.toStPtr());
    }
}

// Releasing a table may release others: they come to the list, so that the depth of the stack does not grow
// with theirs. Nested calls leave the work to the outermost, and before a round is over nothing is released.
void cTableManager::FlushFreelist()
{
    if (m_flushing || m_rounds != 0) {
        return;
    }
    m_flushing = true;
    while (!m_freeList.empty()) {
        varType value = m_freeList.back();
        m_freeList.pop_back();
        FreeValue(value);
    }
    m_flushing = false;
}

} // namespace Qel
