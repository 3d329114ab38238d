#include "Support/OS/messagePump.h"

#include <atomic>
#include <utility>

namespace os {

namespace {

constinit std::atomic<MessagePump *> installed{nullptr};

std::function<bool()> &quitHandler()
{
    static std::function<bool()> handler;
    return handler;
}

} // namespace

bool MessagePump::isDialogMessage(void *, Message const &)
{
    return false;
}

void MessagePump::translate(Message const &)
{
}

void MessagePump::dispatch(Message const &)
{
}

bool MessagePump::inForeground()
{
    return true;
}

bool QueueMessagePump::peek(Message &message, bool remove)
{
    std::lock_guard const guard(m_lock);
    if (m_messages.empty()) {
        return false;
    }
    message = m_messages.front();
    if (remove) {
        m_messages.pop_front();
    }
    return true;
}

void QueueMessagePump::post(Message const &message)
{
    std::lock_guard const guard(m_lock);
    m_messages.push_back(message);
}

MessagePump *installedMessagePump()
{
    return installed.load(std::memory_order_acquire);
}

MessagePump &messagePump()
{
    MessagePump *const pump = installed.load(std::memory_order_acquire);
    return pump != nullptr ? *pump : defaultMessagePump();
}

QueueMessagePump &defaultMessagePump()
{
    static QueueMessagePump queue;
    return queue;
}

MessagePump *setMessagePump(MessagePump *pump)
{
    return installed.exchange(pump);
}

void setQuitHandler(std::function<bool()> handler)
{
    quitHandler() = std::move(handler);
}

bool handleQuit()
{
    std::function<bool()> const handler = quitHandler(); // which may replace itself
    return handler && handler();
}

} // namespace os
