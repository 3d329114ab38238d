#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

namespace os {

/// One message of a window system, in the shape that the frame loop hands on. The meaning of the fields is
/// the pump's.
struct Message {
    void *window = nullptr;
    std::uint32_t id = 0;
    std::uintptr_t first = 0;
    std::intptr_t second = 0;
};

/// What the frame loop asks of the desktop. A platform plugin installs one; the default is a queue of the
/// process that is always in the foreground. Called on the thread that runs the frame loop.
class QEL_API MessagePump {
public:
    virtual ~MessagePump() = default;

    /// Looks for the next message.
    /// @param remove  take it out of the queue; else it is left there
    /// @return false if there is none; @p message is then unchanged
    virtual bool peek(Message &message, bool remove) = 0;

    /// Offers a message to a dialog.
    /// @return true if the dialog took it; nobody else is then told
    virtual bool isDialogMessage(void *dialog, Message const &message);

    virtual void translate(Message const &message); ///< before dispatch: makes characters out of keys
    virtual void dispatch(Message const &message);  ///< gives the message to its window

    /// Does the foreground window belong to the calling thread? Asked once a frame while background
    /// behaviour is on.
    virtual bool inForeground();
};

/// The default pump: a queue that any thread may post to. Messages that no dialog takes are dropped.
class QEL_API QueueMessagePump : public MessagePump {
public:
    bool peek(Message &message, bool remove) override;

    void post(Message const &message); ///< appends; any thread

private:
    std::mutex m_lock;
    std::deque<Message> m_messages;
};

QEL_API MessagePump &messagePump();             ///< the installed pump, else the default
QEL_API MessagePump *installedMessagePump();    ///< null if it is the default
QEL_API QueueMessagePump &defaultMessagePump(); ///< the process's own queue

/// Installs a pump in place of the one before.
/// @param pump  not owned; null brings back the default. Must be replaced before it dies.
/// @return the pump before, or null if it was the default
QEL_API MessagePump *setMessagePump(MessagePump *pump);

/// Says what happens when the desktop wants the program to end, as when its user closes the last window.
/// Without a handler, or if it returns false, the platform's pump ends the frame loop.
/// @param handler  true: has dealt with it, and may end the loop later. Called on the thread of the frame
/// loop.
///                 Null takes it back, which a plugin must do before it goes.
QEL_API void setQuitHandler(std::function<bool()> handler);
QEL_API bool handleQuit(); ///< for pumps: asks the handler; false if there is none

/// Installs a pump for a scope. Scopes nest; they end in reverse order.
class QEL_API MessagePumpScope {
public:
    explicit MessagePumpScope(MessagePump &pump) : m_before(setMessagePump(&pump)) {}
    ~MessagePumpScope() { setMessagePump(m_before); }

    MessagePumpScope(MessagePumpScope const &) = delete;
    MessagePumpScope &operator=(MessagePumpScope const &) = delete;

private:
    MessagePump *m_before;
};

} // namespace os
