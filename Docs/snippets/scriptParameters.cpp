#include "System/System/paramCommand.h"
#include "System/System/stringConverter.h"
#include "System/System/stringInterface.h"

#include <cstdio>

namespace {

class Lamp : public Qel::StringInterface {
public:
    Lamp();
    float power() const { return m_power; }

private:
    // Nested, so that it reaches the private field.
    class CmdPower : public Qel::ParamCommand {
    public:
        Qel::String doGet(void const *target) override
        {
            return Qel::StringConverter::toString(static_cast<Lamp const *>(target)->m_power);
        }
        void doSet(void *target, Qel::String const &value) override
        {
            static_cast<Lamp *>(target)->m_power = Qel::StringConverter::parseReal(value);
        }
    };

    static CmdPower msPowerCmd;

    float m_power = 40.0f;
};

Lamp::CmdPower Lamp::msPowerCmd;

Lamp::Lamp()
{
    // True for the first lamp alone: the names stand once per class.
    if (createParamDictionary("Lamp")) {
        getParamDictionary()->addParameter({"power", "Power in watts.", Qel::PARAM_FLOAT}, &msPowerCmd);
    }
}

} // namespace

int main()
{
    Lamp lamp;
    if (!lamp.setParameter("power", "60")) {
        return 1;
    }
    for (Qel::ParameterDef const &parameter : lamp.getParameters()) {
        std::printf("%s (%s) = %s\n", parameter.name.c_str(), parameter.getParamType(),
                    lamp.getParameter(parameter.name).c_str());
    }
    return lamp.power() == 60.0f ? 0 : 1;
}
