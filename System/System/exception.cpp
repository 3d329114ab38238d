#include "System/System/exception.h"

#include "System/System/logManager.h"

#include <atomic>
#include <mutex>
#include <new>
#include <optional>

namespace Qel {

Exception *Exception::last = nullptr;
std::list<String> Exception::msFunctionStack;

namespace {

// Holds what is left of the last exception once it has been caught. Never destroyed, since exceptions may die
// as late as anything else in the process.
class Keepsake {
public:
    std::mutex lock;

    Exception *take(Exception const &dying)
    {
        m_kept.reset();
        return &m_kept.emplace(dying);
    }

private:
    std::optional<Exception> m_kept;
};

Keepsake &keepsake()
{
    alignas(Keepsake) static std::byte room[sizeof(Keepsake)];
    static Keepsake *const made = ::new (room) Keepsake;
    return *made;
}

} // namespace

Exception::Exception(std::int64_t theNumber, String const &theDescription, String const &theSource)
    : number(theNumber), description(theDescription), source(theSource)
{
    announce();
}

Exception::Exception(std::int64_t theNumber, String const &theDescription, String const &theSource,
                     char const *theFile, std::int32_t theLine)
    : line(theLine), number(theNumber), description(theDescription), source(theSource),
      file(theFile == nullptr ? "" : theFile)
{
    announce();
}

Exception::Exception(Exception const &other) = default;

Exception &Exception::operator=(Exception const &other) = default;

Exception::~Exception()
{
    std::atomic_ref<Exception *> const noted(last);
    if (noted.load() != this) {
        return;
    }
    Keepsake &kept = keepsake();
    std::lock_guard const guard(kept.lock);
    if (noted.load() != this) {
        return; // another thread's exception has come and gone meanwhile, and is the one that is kept
    }
    Exception *expected = this;
    try {
        noted.compare_exchange_strong(expected, kept.take(*this));
    } catch (...) {
        noted.compare_exchange_strong(expected, nullptr); // no memory for a copy: better none than a dead one
    }
}

void Exception::announce()
{
    String const text = getFullDescription();
    if (LogManager *const log = LogManager::InstancePtr()) {
        log->logMessage(text, 2);
    }
    // Under the lock, so that describeLast() finds an object that cannot go away meanwhile.
    std::lock_guard const guard(keepsake().lock);
    std::atomic_ref<Exception *>(last).store(this);
}

bool Exception::describeLast(String &text)
{
    std::lock_guard const guard(keepsake().lock);
    Exception const *const noted = std::atomic_ref<Exception *>(last).load();
    if (noted != nullptr) {
        text = noted->getFullDescription();
    }
    return noted != nullptr;
}

String Exception::getFullDescription() const
{
    String text("An exception has been thrown!\nError #: ");
    text += String(static_cast<int>(static_cast<std::uint32_t>(number)));
    text += "\nFunction: " + source;
    text += "\nDescription: " + description;
    text += ". ";
    if (line > 0) {
        text += "\nFile: " + file;
        text += "\nLine: " + String(line);
    }
    text += "\nStack unwinding:\n";
    for (String const &function : msFunctionStack) {
        text += "- " + function + "()\n";
    }
    text += "- <<callstack>>\n";
    return text;
}

void Exception::_pushFunction(std::string const &)
{
}

void Exception::_popFunction()
{
}

} // namespace Qel
