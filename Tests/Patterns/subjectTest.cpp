#include "System/Patterns/subject.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace Qel {
namespace {

struct Recorder : cObserver {
    Recorder(std::string &sharedTrace, char ownMark) : trace(sharedTrace), mark(ownMark) {}
    void update(cSubject *subject) override
    {
        trace += mark;
        if (also) {
            also(subject);
        }
    }

    std::string &trace;
    char mark;
    std::function<void(cSubject *)> also;
};

struct Subject : testing::Test {
    Subject() { start(); }

    void start()
    {
        subject = std::make_unique<cSubject>();
        for (cObserver *observer : {&a, &b, &c}) {
            subject->attach(observer);
        }
    }

    std::string told()
    {
        trace.clear();
        subject->notify();
        return trace;
    }

    std::string trace;
    Recorder a{trace, 'a'};
    Recorder b{trace, 'b'};
    Recorder c{trace, 'c'};
    Recorder d{trace, 'd'};
    std::unique_ptr<cSubject> subject;
};

TEST_F(Subject, TellsInOrderOfAttachmentAndDetachesTheFirstPlaceOnly)
{
    subject->attach(&a);
    EXPECT_EQ(told(), "abca");
    subject->detach(&a);
    EXPECT_EQ(told(), "bca");
    subject->detach(&d);
    EXPECT_EQ(told(), "bca");
}

// What an observer does to the list while it is told; nobody is left out, called twice, or called when gone.
TEST_F(Subject, CanBeChangedWhileItTells)
{
    struct {
        char const *what;
        std::function<void(cSubject *)> bDoes;
        char const *now;
        char const *later; // with b doing nothing more
    } const rows[] = {
        {"detaches itself", [this](cSubject *s) { s->detach(&b); }, "abc", "ac"},
        {"detaches one that was told", [this](cSubject *s) { s->detach(&a); }, "abc", "bc"},
        {"detaches one to come", [this](cSubject *s) { s->detach(&c); }, "ab", "ab"},
        {"attaches another", [this](cSubject *s) { s->attach(&d); }, "abc", "abcd"},
        {"attaches another and detaches it", [this](cSubject *s) { s->attach(&d), s->detach(&d); }, "abc",
         "abc"},
        {"detaches all", [this](cSubject *s) { s->detach(&c), s->detach(&b), s->detach(&a); }, "ab", ""},
        {"tells again, and the inner walk loses one",
         [this](cSubject *s) {
             b.also = [this](cSubject *inner) { inner->detach(&a); };
             s->notify();
         },
         "ababcc", "bc"},
        {"destroys the subject", [this](cSubject *) { subject.reset(); }, "ab", nullptr},
    };

    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        start();
        b.also = row.bDoes;
        EXPECT_EQ(told(), row.now);
        b.also = nullptr;
        if (row.later != nullptr) {
            EXPECT_EQ(told(), row.later);
        }
    }
}

TEST_F(Subject, KeepsTheOrderOfItsOperations)
{
    EXPECT_TRUE(standInOrder(virtualSlot(&cSubject::attach), &cSubject::attach, &cSubject::detach,
                             &cSubject::notify));
}

} // namespace
} // namespace Qel
