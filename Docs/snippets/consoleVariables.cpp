#include "System/System/configurable.h"
#include "System/System/consoleVar.h"

#include <cstdio>

// A type of the host's own, and how it is written.
enum class Detail { Low, High };

template <>
struct Qel::ConfigurableText<Detail> {
    static String toText(Detail const &value) { return value == Detail::High ? "high" : "low"; }
    static void fromText(Detail &value, char const *text)
    {
        value = String(text) == "high" ? Detail::High : Detail::Low;
    }
};

namespace {

Qel::Configurable<float> gravity("world.gravity", 9.81f);
Qel::Configurable<bool> fly("player.fly", false);
Qel::Configurable<Detail> detail("render.detail", Detail::Low);

} // namespace

int main()
{
    Qel::ConsoleVar &console = Qel::ConsoleVar::Instance();
    console.setConfigurable("world.gravity", "1.62");
    console.setConfigurable("render.detail", "high");
    if (!console.setConfigurable("world.gravty", "1")) {
        std::puts("no such variable");
    }

    for (Qel::String const &name : console.getNames()) {
        Qel::String value;
        console.getConfigurable(name, value, nullptr);
        std::printf("%s = %s\n", name.c_str(), value.c_str());
    }

    fly = gravity < 2.0f; // reads and writes as its value
    return fly && detail.get() == Detail::High ? 0 : 1;
}
