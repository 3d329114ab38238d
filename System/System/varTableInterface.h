#pragma once

#include "System/System/export.h"
#include "System/System/varType.h"

namespace Qel {

class ITableManager;
struct sMsgNotify;

/// A listener's function.
using NotifyCallback = void (*)(sMsgNotify const &);

/// A table of values by key: a text, or a number. A text and a number whose 32-bit values are equal, the
/// text's being its hash, are the same key.
///
/// In all operations @p callback is the sender's own listener function, which is left out when the change is
/// announced; it may be null.
///
/// @par Ownership  Counted: whoever keeps a table calls AddRef(), and Release() when done. The last Release()
///                 destroys it.
/// @par Threads    Tables and their manager belong to one thread and take no lock.
class QEL_API IVarTable {
public:
    virtual void Release() const = 0;
    virtual void AddRef() const = 0;

    /// Announces @p key to the listeners at once, with the integer 1 as value. Nothing is stored.
    virtual void SendCommand(varType key, NotifyCallback callback = nullptr) = 0;

    /// The same, but while listeners are being told it is queued until they all know.
    virtual void PostCommand(varType key, NotifyCallback callback = nullptr) = 0;

    /// Stores a value and announces it, unless it is the same as before (see varType::isSame). A text is
    /// copied, a table counted. The announcement is queued while listeners are being told.
    virtual void Set(varType key, varType value, NotifyCallback callback = nullptr) = 0;

    /// @return the value, or @p defaultValue if the key is absent. A text or table is borrowed: it stays
    /// valid
    ///         until the item has changed and the change has been announced.
    virtual varType Get(varType key, varType defaultValue = varType()) const = 0;

    /// The table under a key. One that is not there is made, in place of any other value.
    /// @return owned by the item: borrowed, as from Get()
    virtual IVarTable &CreateSubTable(varType key) = 0;

    virtual ITableManager &GetManager() = 0;

protected:
    ~IVarTable() = default; // not virtual: a table goes by Release()
};

/// Keeps the listeners of tables.
class QEL_API ITableManager {
public:
    /// Adds a listener at the end. There is no test for one that is there already.
    ///
    /// Listeners may be added and removed while they are being told. One that is added hears of the change in
    /// flight, after all others; one that is removed does not hear of it any more; nobody is passed over.
    /// @param function  null does nothing. A plugin removes its listeners before it goes.
    /// @param user      comes back in sMsgNotify::user
    /// @param table     null for every table. The listener goes with the table.
    virtual void AddListener(NotifyCallback function, void *user, IVarTable *table) = 0;

    /// Removes every listener of that function and user.
    virtual void RemoveListener(NotifyCallback function, void *user) = 0;

protected:
    ~ITableManager() = default; // not virtual: nobody destroys a manager through this
};

} // namespace Qel
