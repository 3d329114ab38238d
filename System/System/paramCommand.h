#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

namespace Qel {

/// Gets and sets one parameter of the objects of one class, as text.
///
/// A static object of the class that owns the parameter, entered in that class's ParamDictionary. How it
/// reaches the value is the class's own affair; mostly it is a nested class that calls getter and setter:
///
/// @code
/// class Lamp : public StringInterface {
///     class CmdPower : public ParamCommand {
///     public:
///         String doGet(void const *target) override
///         {
///             return StringConverter::toString(static_cast<Lamp const *>(target)->m_power);
///         }
///         void doSet(void *target, String const &value) override
///         {
///             static_cast<Lamp *>(target)->m_power = StringConverter::parseReal(value);
///         }
///     };
///     static CmdPower msPowerCmd;
///     ...
/// };
/// @endcode
///
/// The target is the `StringInterface *` of the object. A class whose StringInterface is not its first base
/// casts to that first: `static_cast<Lamp *>(static_cast<StringInterface *>(target))`.
///
/// @par Ownership  Never owned by a dictionary. A command that dies takes its parameter out of every
///                 dictionary that holds it, so a plugin's commands go with the plugin.
/// @par Threads    As StringInterface.
class QEL_API ParamCommand {
public:
    ParamCommand() = default;

    /// @param target  an object of the class the command was made for; never null
    virtual String doGet(void const *target) = 0;

    /// @param target  an object of the class the command was made for; never null
    /// @param value   not checked by anyone before; text that cannot be read is the command's to settle
    virtual void doSet(void *target, String const &value) = 0;

    virtual ~ParamCommand();

protected:
    // Registration goes by address and is not copied.
    ParamCommand(ParamCommand const &) {}
    ParamCommand &operator=(ParamCommand const &) { return *this; }
};

} // namespace Qel
