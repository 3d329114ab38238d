// A plugin with a class that has a parameter, and with a value for the console.

#include "System/System/configurable.h"
#include "System/System/paramCommand.h"
#include "System/System/stringInterface.h"

#include <memory>

namespace {

class Spring final : public Qel::StringInterface {
public:
    class CmdForce final : public Qel::ParamCommand {
    public:
        Qel::String doGet(void const *target) override
        {
            return static_cast<Spring const *>(target)->m_force;
        }
        void doSet(void *target, Qel::String const &value) override
        {
            static_cast<Spring *>(target)->m_force = value;
        }
    };

    Spring();

private:
    Qel::String m_force;
};

Spring::CmdForce forceCommand;
Qel::Configurable<int> const level("module.level", 3);
std::unique_ptr<Spring> spring;

Spring::Spring()
{
    if (createParamDictionary("Spring")) {
        getParamDictionary()->addParameter({"force", "", Qel::PARAM_INT}, &forceCommand);
    }
}

} // namespace

extern "C" QEL_API Qel::StringInterface *makeSpring()
{
    if (spring == nullptr) {
        spring = std::make_unique<Spring>();
    }
    return spring.get();
}

extern "C" QEL_API void destroySpring()
{
    spring.reset();
}
