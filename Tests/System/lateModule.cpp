// Objects of the library that are taken while it lives and given back when its static objects are gone.

#include "System/System/configurable.h"
#include "System/System/consoleVar.h"
#include "System/System/paramCommand.h"
#include "System/System/stringInterface.h"
#include "System/System/tableManager.h"

#include <memory>

namespace {

using namespace Qel;

class Command final : public ParamCommand {
public:
    String doGet(void const *) override { return "got"; }
    void doSet(void *, String const &) override {}
};

class Object final : public StringInterface {
public:
    explicit Object(ParamCommand *command)
    {
        createParamDictionary("late");
        getParamDictionary()->addParameter({"command", "", PARAM_STRING}, command);
    }
};

// Plain pointers, since objects with destructors would go too soon.
Configurable<int> *value = nullptr;
Command *command = nullptr;
cVarTable *table = nullptr;

void listen(sMsgNotify const &message)
{
    ++*static_cast<int *>(message.user);
}

int heard = 0;

} // namespace

extern "C" QEL_API bool hold()
{
    value = std::make_unique<Configurable<int>>("late.value", 5).release();
    command = std::make_unique<Command>().release();
    Object object(command);
    table = &cTableManager::Instance().Create("late table");
    table->Set("text", "a text of the table, longer than any that is kept in place");
    table->CreateSubTable("inner").Set("x", 1);
    cTableManager::Instance().AddListener(&listen, &heard, nullptr);
    return object.getParameter("command") == "got" && ConsoleVar::Instance().getAsInt("late.value") == 5;
}

extern "C" QEL_API bool letGo()
{
    bool works = !ConsoleVar::Instance().isRegistered("late.value");
    std::unique_ptr<Configurable<int>>{value}.reset();
    {
        Configurable<int> const later("late.later", 6);
        works = works && ConsoleVar::Instance().getAsInt("late.later") == 6;
    }
    std::unique_ptr<Command>{command}.reset();
    works = works && table->Get("text").isString();
    int const before = heard;
    table->Set("text", "another one");
    works = works && heard == before; // the listeners went with the manager's end
    table->Release();
    return works && cVarTable::m_TableCount == 0 && ConsoleVar::Instance().size() == 0;
}
