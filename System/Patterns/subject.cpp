#include "System/Patterns/subject.h"

#include <algorithm>

namespace Qel {

namespace {

// One running notification. They nest, of one subject or of several, and are kept here so that a change of
// a list finds the walks over it.
class Walk {
public:
    Walk(cSubject const *subject, std::size_t count) : m_subject(subject), m_end(count), m_outer(innermost)
    {
        innermost = this;
    }
    ~Walk() { innermost = m_outer; }

    Walk(Walk const &) = delete;
    Walk &operator=(Walk const &) = delete;

    bool more() const { return m_subject != nullptr && m_next < m_end; }
    std::size_t next() { return m_next++; }

    static void erased(cSubject const *subject, std::size_t at)
    {
        for (Walk *walk = innermost; walk != nullptr; walk = walk->m_outer) {
            if (walk->m_subject == subject) {
                walk->m_next -= at < walk->m_next ? 1 : 0;
                walk->m_end -= at < walk->m_end ? 1 : 0;
            }
        }
    }

    static void destroyed(cSubject const *subject)
    {
        for (Walk *walk = innermost; walk != nullptr; walk = walk->m_outer) {
            if (walk->m_subject == subject) {
                walk->m_subject = nullptr;
            }
        }
    }

private:
    cSubject const *m_subject; // null once it has died
    std::size_t m_next = 0;
    std::size_t m_end; // those attached since stand behind it
    Walk *m_outer;

    static thread_local Walk *innermost;
};

constinit thread_local Walk *Walk::innermost = nullptr;

} // namespace

cSubject::~cSubject()
{
    Walk::destroyed(this);
}

void cSubject::attach(cObserver *observer)
{
    m_observers.push_back(observer);
}

void cSubject::detach(cObserver *observer)
{
    auto const found = std::find(m_observers.begin(), m_observers.end(), observer);
    if (found != m_observers.end()) {
        Walk::erased(this, static_cast<std::size_t>(found - m_observers.begin()));
        m_observers.erase(found);
    }
}

void cSubject::notify()
{
    Walk walk(this, m_observers.size());
    while (walk.more()) {
        m_observers[walk.next()]->update(this);
    }
}

} // namespace Qel
