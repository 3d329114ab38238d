#include "System/System/stringInterface.h"

#include "System/System/consoleVar.h"
#include "System/System/paramCommand.h"
#include "System/System/stringConverter.h"

#include "Support/OS/module.h"

#include <gtest/gtest.h>

#include <string>

namespace Qel {
namespace {

class Lamp : public StringInterface {
public:
    class CmdPower : public ParamCommand {
    public:
        String doGet(void const *target) override
        {
            return StringConverter::toString(static_cast<Lamp const *>(target)->power);
        }
        void doSet(void *target, String const &value) override
        {
            static_cast<Lamp *>(target)->power = StringConverter::parseInt(value);
        }
    };

    // Named per test: dictionaries stay for the life of the process.
    explicit Lamp(char const *className) : isFirst(createParamDictionary(className)) {}

    int power = 5;
    bool isFirst;

    static CmdPower msPowerCmd;
};

Lamp::CmdPower Lamp::msPowerCmd;

class Bare : public StringInterface {};

TEST(StringInterface, SetsAndGetsByNameThroughTheCommandOfItsClass)
{
    Lamp first("LampA");
    ASSERT_TRUE(first.isFirst);
    first.getParamDictionary()->addParameter({"power", "In watts.", PARAM_INT}, &Lamp::msPowerCmd);
    first.getParamDictionary()->addParameter({"colour", "Not reachable.", PARAM_COLOR}, nullptr);

    Lamp second("LampA");
    EXPECT_FALSE(second.isFirst);
    EXPECT_TRUE(second.setParameter("power", "60"));
    EXPECT_EQ(second.power, 60);
    EXPECT_EQ(first.power, 5);
    EXPECT_EQ(second.getParameter("power"), "60");
    EXPECT_TRUE(second.setParameter("power", "not a number")) << "values are the command's affair";

    EXPECT_FALSE(second.setParameter("Power", "1")) << "names of parameters are exact";
    EXPECT_EQ(second.getParameter("POWER"), "");
    EXPECT_FALSE(second.setParameter("colour", "ffffffff")) << "listed, without a command";
    EXPECT_EQ(second.getParameter("colour"), "");
}

TEST(StringInterface, WorksWithoutADictionary)
{
    Bare bare;
    EXPECT_FALSE(bare.setParameter("power", "1"));
    EXPECT_EQ(bare.getParameter("power"), "");
    EXPECT_EQ(bare.getParamDictionary(), nullptr);
    EXPECT_TRUE(bare.getParameters().empty());
}

TEST(StringInterface, FindsClassesExactlyFirstAndThenInAnyCase)
{
    // In order of names upper case comes first, so "CASE" is the one found for any other case.
    Lamp const lower("case");
    Lamp const upper("CASE");
    ParamDictionary *const dictionaryLower = StringInterface::getParamDictionary("case", true);
    ParamDictionary *const dictionaryUpper = StringInterface::getParamDictionary("CASE", true);
    ASSERT_NE(dictionaryLower, dictionaryUpper);
    EXPECT_EQ(StringInterface::getParamDictionary("case", false), dictionaryLower);
    EXPECT_EQ(StringInterface::getParamDictionary("Case", false), dictionaryUpper);
    EXPECT_EQ(StringInterface::getParamDictionary("Case", true), nullptr);
    EXPECT_EQ(StringInterface::getParamDictionary("Cases", false), nullptr);
    String const list = "\n" + StringInterface::getDictionaryList();
    EXPECT_TRUE(list.match("*\nCASE\n*case\n*", false) || list.match("*\nCASE\n*case\n", false)) << list;
}

TEST(ParamDictionary, KeepsTheFirstCommandAndTheOrderOfAdding)
{
    Lamp lamp("LampB");
    Lamp::CmdPower other;
    ParamDictionary &dictionary = *lamp.getParamDictionary();
    dictionary.addParameter({"z", "", PARAM_INT}, &Lamp::msPowerCmd);
    dictionary.addParameter({"a", "", PARAM_INT}, &other);
    dictionary.addParameter({"z", "again", PARAM_FLOAT}, &other);
    ASSERT_EQ(lamp.getParameters().size(), 2u);
    EXPECT_EQ(lamp.getParameters()[0], ParameterDef("z", "the text does not count", PARAM_INT));
    EXPECT_NE(lamp.getParameters()[0], ParameterDef("z", "", PARAM_FLOAT));
    EXPECT_EQ(lamp.getParameters()[1].name, "a");
}

TEST(ParamDictionary, LosesAParameterWithItsCommandAndIsFilledAgain)
{
    Lamp lamp("LampC");
    {
        Lamp::CmdPower gone;
        lamp.getParamDictionary()->addParameter({"stays", "", PARAM_INT}, &Lamp::msPowerCmd);
        lamp.getParamDictionary()->addParameter({"goes", "", PARAM_INT}, &gone);
        EXPECT_TRUE(lamp.setParameter("goes", "1"));
    }
    EXPECT_FALSE(lamp.setParameter("goes", "2"));
    EXPECT_TRUE(lamp.setParameter("stays", "3"));
    ASSERT_EQ(lamp.getParameters().size(), 1u);

    Lamp next("LampC");
    EXPECT_TRUE(next.isFirst) << "the class has to fill in what is missing";
    EXPECT_FALSE(Lamp("LampC").isFirst);
}

// The module has a configurable and a class with a parameter; see parameterModule.cpp.
TEST(ParamDictionary, SurvivesThePluginThatFilledIt)
{
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        std::string error;
        void *const module = os::openModule(PARAMETER_MODULE, error);
        ASSERT_NE(module, nullptr) << error;
        auto *const make = reinterpret_cast<StringInterface *(*)()>(os::findSymbol(module, "makeSpring"));
        auto *const destroy = reinterpret_cast<void (*)()>(os::findSymbol(module, "destroySpring"));
        ASSERT_TRUE(make != nullptr && destroy != nullptr);
        EXPECT_TRUE(make()->setParameter("force", "12"));
        EXPECT_EQ(make()->getParameter("force"), "12");
        EXPECT_EQ(ConsoleVar::Instance().getAsInt("module.level"), 3);
        destroy();
        ASSERT_TRUE(os::closeModule(module));

        ParamDictionary const *const left = StringInterface::getParamDictionary("Spring", true);
        ASSERT_NE(left, nullptr);
        EXPECT_TRUE(left->getParameters().empty());
        EXPECT_FALSE(ConsoleVar::Instance().isRegistered("module.level"));
    }
}

TEST(ParameterDef, NamesItsType)
{
    char const *const names[] = {"bool", "float", "int",      "uint",   "short",   "ushort",
                                 "long", "ulong", "string",   "vec3",   "matrix3", "matrix4",
                                 "quat", "color", "material", "unknown"};
    for (unsigned int type = 0; type < std::size(names); ++type) {
        EXPECT_STREQ(ParameterDef("", "", static_cast<ParameterType>(type)).getParamType(), names[type]);
    }
}

} // namespace
} // namespace Qel
