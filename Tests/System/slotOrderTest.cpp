#include "Support/OS/messagePump.h"
#include "System/Patterns/factoryObj.h"
#include "System/Patterns/subject.h"
#include "System/System/configurable.h"
#include "System/System/frameListener.h"
#include "System/System/log.h"
#include "System/System/paramCommand.h"
#include "System/System/plugin.h"
#include "System/System/stringInterface.h"
#include "System/System/tableManager.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// A virtual destructor takes two places of the table.
TEST(SlotOrder, PluginsFindTheOperationsWhereTheyWereBuiltAgainst)
{
    using LogWide = void (Log::*)(WString const &, LogMessageLevel);
    using LogNarrow = void (Log::*)(String const &, LogMessageLevel);
    EXPECT_TRUE(standInOrder(3, static_cast<LogWide>(&Log::logMessage),
                             static_cast<LogNarrow>(&Log::logMessage), &Log::setLogDetail,
                             &Log::isWithinThreshold));
    EXPECT_TRUE(standInOrder(2, &Plugin::load, &Plugin::unload, &Plugin::getSymbol));
    EXPECT_TRUE(standInOrder(0, &FrameListener::frameStarted, &FrameListener::frameEnded,
                             &FrameListener::frameRender, &FrameListener::frameIdle));
    EXPECT_TRUE(standInOrder(2, &FactoryObj<int>::getType, &FactoryObj<int>::createInstance));
    EXPECT_TRUE(standInOrder(0, &IVarTable::Release, &IVarTable::AddRef, &IVarTable::SendCommand,
                             &IVarTable::PostCommand, &IVarTable::Set, &IVarTable::Get,
                             &IVarTable::CreateSubTable, &IVarTable::GetManager));
    EXPECT_TRUE(standInOrder(0, &ITableManager::AddListener, &ITableManager::RemoveListener));
    EXPECT_TRUE(standInOrder(0, &ParamCommand::doGet, &ParamCommand::doSet));
    EXPECT_TRUE(standInOrder(2, &cObserver::update));
    using Pump = os::MessagePump;
    EXPECT_TRUE(standInOrder(2, &Pump::peek, &Pump::isDialogMessage, &Pump::translate, &Pump::dispatch,
                             &Pump::inForeground));
    using Object = StringInterface;
    EXPECT_TRUE(
        standInOrder(virtualSlot(&Object::setParameter), &Object::setParameter, &Object::getParameter));
    using Storable = Storable_configurable;
    EXPECT_TRUE(
        standInOrder(virtualSlot(&Storable::to_string), &Storable::to_string, &Storable::from_string));
}

} // namespace
} // namespace Qel
