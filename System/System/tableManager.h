#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/varTable.h"
#include "System/System/varTableInterface.h"
#include "System/System/varType.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <vector>

namespace Qel {

class cTableManager;
extern template class QEL_API tSingleton<cTableManager>;

/// Makes the tables, owns the texts in them, and tells listeners of every change.
///
/// @code
/// cTableManager &manager = cTableManager::Instance();
/// cVarTable &player = manager.Create("player");
/// manager.AddListener(&onChange, &hud, &player);
/// player.Set("health", 80); // onChange() is called
/// player.Release();
/// @endcode
///
/// While listeners are being told of a change, a further Set() or PostCommand() is stored at once and
/// announced after all of them know of the first; the queue holds copies of key and value and keeps the
/// table. SendCommand() is announced at once even then, and so is, after it, whatever is queued. Listeners
/// that post a change for each change they hear of never come to an end; the stack does not grow by it.
/// SendCommand() in a listener of the same command does grow it, as any recursion.
///
/// What a change replaces stays valid until the last listener has been told and the queue is empty.
///
/// @par Lifetime  One object, of the library itself: there before any static object of a host, and after
///                them. Tables that are left when the library unloads are not touched.
/// @par Threads   Belongs to the thread of the tables; takes no lock.
class QEL_API cTableManager final : public ITableManager, public tSingleton<cTableManager> {
public:
    enum eMsgMode : std::uint32_t {
        MSG_SEND = 0, ///< tell at once
        MSG_POST = 1, ///< queue while listeners are being told
    };

    /// A listener, and the table it listens to; null for every table.
    struct sNotifyClient {
        NotifyCallback function;
        void *user;
        IVarTable *table;
    };

    cTableManager(cTableManager const &) = delete;
    cTableManager &operator=(cTableManager const &) = delete;

    /// Makes an empty table, whose one reference is the caller's: Release() it when done.
    /// @param name  copied; null counts as empty. Need not be unique.
    /// @throws std::bad_alloc if there is no memory
    cVarTable &Create(char const *name);

    void AddListener(NotifyCallback function, void *user, IVarTable *table) override;
    void RemoveListener(NotifyCallback function, void *user) override;

    void Register(cVarTable const &table);   ///< for tables: enters one that is not there yet
    void Unregister(cVarTable const &table); ///< for tables: takes one out, and its listeners

    /// A copy of a text, counted, for UnregisterString() to free. Null and the empty text give a static empty
    /// text, which is not counted.
    /// @throws std::bad_alloc if there is no memory
    char const *RegisterString(char const *text);
    void UnregisterString(char const *text); ///< only what RegisterString() gave, or null

    /// A value to keep: with a copy of its text, or a reference on its table. FreeValue() gives it back.
    varType CopyValue(varType const &value);
    void FreeValue(varType &value); ///< leaves nil

    /// Sets an item and announces it: what every change comes down to.
    /// @param item      its key, with the text in it, must stay valid until this returns
    /// @param callback  the listener's function that is left out; may be null
    void ItemChange(cVarTable const &table, cVarTable::KeyVal &item, varType const &value, eMsgMode mode,
                    NotifyCallback callback);

    std::vector<cVarTable const *> const &
    GetTables(); ///< the live ones as made, until one more is made or dies
    std::uint32_t GetStringCount() const { return m_stringCount; } ///< live texts

private:
    friend class cVarTable;
    class Dispatch;
    class Round;
    struct Life;

    // A message that waits for its turn, and what it refers to.
    struct QueuedNotify : sMsgNotify {
        QueuedNotify(cTableManager &owner, sMsgNotify const &message, NotifyCallback callback);
        ~QueuedNotify();

        QueuedNotify(QueuedNotify const &) = delete;
        QueuedNotify &operator=(QueuedNotify const &) = delete;

        cTableManager &manager;
        varType keyText;
        varType copy;
    };

    cTableManager() = default;
    ~cTableManager();

    static void destroy(cVarTable const &table);

    bool isRegistered(cVarTable const &table) const;

    void tell(sMsgNotify message, NotifyCallback callback);
    template <typename Test>
    void dropClients(Test const &test);
    bool keeps(varType const &value) const;
    void reserveFreelist(std::size_t count);
    void discard(varType value);
    void FlushFreelist();

    std::vector<cVarTable const *> m_tables; // all live ones, and null for some that have gone
    std::vector<sNotifyClient> m_clients;    // without a function: removed while listeners were told
    std::vector<varType> m_freeList;         // replaced values that listeners may still see
    std::list<QueuedNotify> m_queue;         // a list: an empty one owns nothing when the library goes
    std::uint32_t m_dispatchDepth = 0;       // not 0 while listeners run
    std::uint32_t m_rounds = 0;              // not 0 until all are told of a change and the queue is empty
    std::uint32_t m_stringCount = 0;
    std::size_t m_tablesGone = 0; // null entries of m_tables
    bool m_flushing = false;
    bool m_clientsLeft = false; // m_clients has entries without a function
};

} // namespace Qel
