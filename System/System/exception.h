#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>
#include <list>
#include <string>

namespace Qel {

/// An unrecoverable failure, thrown by value. The one class that the library throws.
///
/// Building one logs its full description and notes it as the last one, so that even an exception that nobody
/// catches leaves its text in the log and in the error dialog at the process's end.
///
/// @code
/// throw Exception(Exception::FileNotFound, "'" + name + "' file not found!", "ConfigFile::load", __FILE__,
///                 __LINE__);
/// @endcode
class QEL_API Exception {
public:
    /// What the library uses of the numbers.
    enum Number : std::int64_t {
        InvalidCall = 0,    ///< a call that the object cannot serve
        UnknownItem = 4,    ///< a named item is unknown
        FileNotFound = 8,   ///< a file is missing
        InternalFailure = 9 ///< an internal or system failure
    };

    /// The exception built most recently, null at load. While that exception lives this points at it; after
    /// that at a copy that the library keeps until the next one dies. Not to be followed while other threads
    /// may throw: see describeLast().
    static Exception *last;

    static std::list<String> msFunctionStack; ///< stays empty; has its place in the description

    /// Stores the arguments, logs getFullDescription() at level 2 if there is a LogManager, and becomes the
    /// last one.
    /// @param source  the throwing function, such as "Plugin::load"
    Exception(std::int64_t number, String const &description, String const &source);

    /// The same with the place in the source.
    /// @param file  copied; null counts as empty
    Exception(std::int64_t number, String const &description, String const &source, char const *file,
              std::int32_t line);

    /// A copy is silent: it does not log and does not become the last one.
    Exception(Exception const &other);
    Exception &operator=(Exception const &other);
    ~Exception();

    /// The text that is logged: number, function, description, and the place if it is known.
    String getFullDescription() const;

    std::int64_t getNumber() const { return number; }

    static Exception *getLastException() { return last; }

    /// Gives getFullDescription() of the last exception, safely while other threads throw.
    /// @return false if there has been none; @p text is then unchanged
    static bool describeLast(String &text);

    static void _pushFunction(std::string const &function); ///< kept for callers; does nothing
    static void _popFunction();                             ///< kept for callers; does nothing

    std::int32_t line = 0; ///< in the source, 0 if not given
    std::int64_t number;   ///< see Number
    String description;    ///< what went wrong
    String source;         ///< the throwing function
    String file;           ///< source file, empty if not given

private:
    void announce();
};

/// Ends the process after an exception that nobody caught: logs, shows the last exception in the platform's
/// error dialog if there is one and waits until the user has seen it, then exits with -1.
[[noreturn]] QEL_API void handleTerminate();

} // namespace Qel
