#include "System/System/tableManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace Qel {
namespace {

cTableManager &manager()
{
    return cTableManager::Instance();
}

// A listener that writes down what it is told, as "mark:key=value ", and then does something.
struct Ear {
    std::string &trace;
    char mark;
    std::function<void(sMsgNotify const &)> then = nullptr;

    static void hear(sMsgNotify const &message)
    {
        Ear &ear = *static_cast<Ear *>(message.user);
        ear.trace +=
            std::string{ear.mark, ':'} + message.key.name + '=' + message.value->toString("-").c_str() + ' ';
        if (ear.then) {
            ear.then(message);
        }
    }
};

// A second function, to be told apart from the first.
void hearToo(sMsgNotify const &message)
{
    Ear::hear(message);
}

struct TableManager : testing::Test {
    TableManager() { listen(); }

    ~TableManager() override
    {
        forget();
        release();
        EXPECT_EQ(cVarTable::m_TableCount, tables);
        EXPECT_EQ(manager().GetStringCount(), texts);
    }

    void listen()
    {
        manager().AddListener(&Ear::hear, &a, nullptr);
        manager().AddListener(&hearToo, &b, nullptr);
        manager().AddListener(&Ear::hear, &c, table);
    }
    void forget()
    {
        for (Ear *ear : {&a, &b, &c, &d}) {
            manager().RemoveListener(&Ear::hear, ear);
            manager().RemoveListener(&hearToo, ear);
        }
    }

    void release()
    {
        if (table != nullptr) {
            std::exchange(table, nullptr)->Release();
        }
    }

    std::string told() { return std::exchange(trace, ""); }

    int const tables = cVarTable::m_TableCount;
    std::uint32_t const texts = manager().GetStringCount();
    cVarTable *table = &manager().Create("table");
    std::string trace;
    Ear a{trace, 'a'};
    Ear b{trace, 'b'};
    Ear c{trace, 'c'};
    Ear d{trace, 'd'};
};

TEST_F(TableManager, TellsOfChangesInOrderOfListeners)
{
    table->Set("k", "one");
    EXPECT_EQ(told(), "a:k=one b:k=one c:k=one ");
    table->Set("k", std::string("one").c_str());
    EXPECT_EQ(told(), "") << "an equal text is no change";
    table->Set("k", 1);
    table->Set("k", 1.0f);
    EXPECT_EQ(told(), "a:k=1 b:k=1 c:k=1 a:k=1 b:k=1 c:k=1 ") << "another type is one";
    table->Set("f", 0.0f);
    told();
    table->Set("f", -0.0f);
    EXPECT_EQ(told(), "a:f=-0 b:f=-0 c:f=-0 ") << "floats compare by their bits";
    table->Set("nil", varType());
    EXPECT_EQ(told(), "") << "a new item is nil already";
}

TEST_F(TableManager, LeavesOutTheSenderAndListenersOfOtherTables)
{
    table->Set("k", 1, &Ear::hear);
    cVarTable &other = manager().Create("other");
    other.Set("k", 2);
    EXPECT_EQ(told(), "b:k=1 a:k=2 b:k=2 ");
    other.Release();
}

TEST_F(TableManager, SendsCommandsWithoutStoringThem)
{
    table->SendCommand("go");
    table->PostCommand("stop", &hearToo);
    EXPECT_EQ(told(), "a:go=1 b:go=1 c:go=1 a:stop=1 c:stop=1 ");
    EXPECT_TRUE(table->GetItems().empty());
}

// Nothing that is queued may point into the table, the caller's texts or a table that has gone.
TEST_F(TableManager, QueuesWhatIsPostedWhileItTellsAsItWasThen)
{
    NotifyCallback sender = nullptr;
    a.then = [&](sMsgNotify const &message) {
        sender = message.sender;
        if (message.key.hash != cVarTable::CalcKey("start")) {
            return;
        }
        EXPECT_EQ(message.sender, nullptr) << "only queued messages name their sender";
        std::string key = "posted";
        std::string value = "first value, too long to be kept in place";
        table->Set(key.c_str(), value.c_str());
        table->Set(key.c_str(), 2, &hearToo);
        table->PostCommand((key + "Command").c_str());
        EXPECT_EQ(table->Get("posted").toI32(), 2) << "stored at once";
        for (int i = 0; i < 100; ++i) {
            table->Set(i, i, &Ear::hear); // moves the items
        }
        table->Clear();
        cVarTable &brief = manager().Create("brief");
        brief.Set("inner", 3);
        brief.Release();
    };
    b.then = [&](sMsgNotify const &message) {
        if (*message.key.name == '\0') {
            trace.erase(trace.rfind("b:"));
        }
        EXPECT_TRUE(message.table == table || std::string("brief") == message.table->GetName());
    };
    table->Set("start", "go");
    EXPECT_EQ(told(), "a:start=go b:start=go c:start=go "
                      "a:posted=first value, too long to be kept in place "
                      "b:posted=first value, too long to be kept in place "
                      "c:posted=first value, too long to be kept in place "
                      "a:posted=2 c:posted=2 "
                      "a:postedCommand=1 b:postedCommand=1 c:postedCommand=1 "
                      "a:inner=3 b:inner=3 ");
    EXPECT_EQ(sender, nullptr);
}

TEST_F(TableManager, SendsAtOnceEvenWhileItTellsAndThenWhatIsQueued)
{
    a.then = [&](sMsgNotify const &message) {
        if (message.key.hash == cVarTable::CalcKey("start")) {
            table->Set("queued", 1);
            table->SendCommand("now");
        }
    };
    table->Set("start", 1);
    EXPECT_EQ(told(),
              "a:start=1 a:now=1 b:now=1 c:now=1 a:queued=1 b:queued=1 c:queued=1 b:start=1 c:start=1 ");
}

// What a listener has in hand stays valid for those behind it, whatever it does to the table.
TEST_F(TableManager, KeepsWhatIsBeingToldValid)
{
    table->Set("k", "old text, long enough for a block of its own");
    told();
    struct {
        char const *what;
        std::function<void()> aDoes;
    } const rows[] = {
        {"sets the key again", [&] { table->Set("k", 1, &Ear::hear); }},
        {"and sends a command, which ends a round of its own",
         [&] {
             table->Set("k", 2, &Ear::hear);
             table->SendCommand("cmd", &Ear::hear);
         }},
        {"clears the table", [&] { table->Clear(); }},
        {"releases the table", [&] { release(); }},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        bool done = false;
        a.then = [&](sMsgNotify const &) {
            if (!std::exchange(done, true)) {
                row.aDoes();
            }
        };
        std::string lastHeard;
        c.then = [&](sMsgNotify const &message) {
            if (message.value->isString()) {
                lastHeard = std::string(message.table->GetName()) + '.' + message.key.name + '=' +
                            message.value->toStPtr();
            }
        };
        table->Set("k", "new text, as long as the one before it");
        EXPECT_EQ(lastHeard, "table.k=new text, as long as the one before it");
        told();
    }
    EXPECT_EQ(cVarTable::m_TableCount, tables) << "the table went when the last listener had been told";
}

// A listener may keep what it has got from a table until it hears that it has changed. A table that dies with
// an earlier message must not end that.
TEST_F(TableManager, KeepsWhatWasReplacedUntilItsOwnChangeIsTold)
{
    table->Set("k", "old text, long enough for a block of its own");
    told();
    char const *const kept = table->Get("k");
    std::string seen;
    a.then = [&](sMsgNotify const &message) {
        if (message.key.hash == cVarTable::CalcKey("start")) {
            cVarTable &brief = manager().Create("brief");
            brief.Set("inner", "text of a table that goes with its message");
            brief.Release();
            table->Set("k", "new text, as long as the one before it");
        } else if (message.key.hash == cVarTable::CalcKey("k")) {
            seen = kept;
        }
    };
    table->Set("start", 1);
    EXPECT_EQ(seen, "old text, long enough for a block of its own");
    EXPECT_EQ(cVarTable::m_TableCount, tables + 1) << "nothing is left when all is told";
}

// Who is added hears of the change in flight, who is removed does not, and nobody is passed over.
TEST_F(TableManager, LetsListenersComeAndGoWhileItTells)
{
    struct {
        char const *what;
        std::function<void()> bDoes;
        char const *now;
        char const *later;
    } const rows[] = {
        {"removes itself", [&] { manager().RemoveListener(&hearToo, &b); }, "a b c ", "a c "},
        {"removes one that was told", [&] { manager().RemoveListener(&Ear::hear, &a); }, "a b c ", "b c "},
        {"removes one to come", [&] { manager().RemoveListener(&Ear::hear, &c); }, "a b ", "a b "},
        {"adds one", [&] { manager().AddListener(&Ear::hear, &d, nullptr); }, "a b c d ", "a b c d "},
        {"removes all", [&] { forget(); }, "a b ", ""},
        {"sends a command, and one goes in that",
         [&] {
             a.then = [&](sMsgNotify const &) { manager().RemoveListener(&Ear::hear, &c); };
             table->SendCommand("x", &hearToo);
         },
         "a b a ", "a b "},
    };
    auto const marks = [&] {
        std::string text;
        for (std::size_t i = 0; i + 1 < trace.size(); ++i) {
            text += trace[i + 1] == ':' ? std::string{trace[i], ' '} : "";
        }
        trace.clear();
        return text;
    };
    int value = 0;
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        forget();
        listen();
        b.then = [&](sMsgNotify const &) {
            b.then = nullptr;
            row.bDoes();
        };
        table->Set("k", ++value);
        EXPECT_EQ(marks(), row.now);
        a.then = nullptr;
        table->Set("k", ++value);
        EXPECT_EQ(marks(), row.later);
    }
}

TEST_F(TableManager, ForgetsTheListenersOfATableThatHasGone)
{
    for (int i = 0; i < 50; ++i) {
        cVarTable &brief = manager().Create("brief"); // mostly at the address of the one before
        brief.Set("k", 1);
        manager().AddListener(&hearToo, &d, &brief);
        brief.Release();
    }
    EXPECT_EQ(trace.find('d'), std::string::npos);
}

TEST_F(TableManager, GoesOnAfterAListenerHasThrown)
{
    b.then = [&](sMsgNotify const &) {
        table->Set("queued", 1);
        manager().RemoveListener(&hearToo, &b);
        throw std::runtime_error("listener");
    };
    EXPECT_THROW(table->Set("k", "text"), std::runtime_error);
    told();
    table->Set("k", 2);
    EXPECT_EQ(told(), "a:k=2 c:k=2 a:queued=1 c:queued=1 ");
}

// A listener that sends what it hears is a recursion of the host's; one that posts is none.
TEST_F(TableManager, BearsAThousandSendsInEachOtherAndManyMorePosts)
{
    int left = 1000;
    a.then = [&](sMsgNotify const &) {
        if (left-- > 0) {
            table->SendCommand("deeper", &hearToo);
        }
    };
    table->SendCommand("deeper", &hearToo);
    EXPECT_EQ(left, -1);
    told();

    left = 200'000;
    a.then = [&](sMsgNotify const &) {
        trace.clear();
        if (left-- > 0) {
            table->Set("again", left);
        }
    };
    table->Set("again", left);
    EXPECT_EQ(left, -1);
}

// The listener takes the new sub-table out again before the caller has it.
TEST_F(TableManager, GivesTheDummyTableForASubTableThatAListenerRemoves)
{
    a.then = [&](sMsgNotify const &message) {
        if (message.value->isTable()) {
            table->Set(message.key.name, 5);
        }
    };
    IVarTable &sub = table->CreateSubTable("sub");
    sub.Set("x", 1);
    EXPECT_TRUE(sub.Get("x").isNil());
    EXPECT_EQ(table->Get("sub").toI32(), 5);
}

// The key is a text of the table itself, which goes when the listener sets another.
TEST_F(TableManager, MakesASubTableNamedByATextThatAListenerReplaces)
{
    std::string const name = "the name of the sub-table, in a block of its own";
    table->Set("name", name.c_str());
    a.then = [&](sMsgNotify const &message) {
        if (message.value->isTable()) {
            table->Set("name", "a name of another length");
        }
    };
    IVarTable &sub = table->CreateSubTable(table->Get("name"));
    sub.Set("x", 1, &Ear::hear);
    EXPECT_EQ(table->Get(name.c_str()).toTable().Get("x").toI32(), 1);
}

} // namespace
} // namespace Qel
