// One plugin in several behaviours; see CMakeLists.txt.

#include "System/Codec/codecManager.h"
#include "System/Platform/renderSystem.h"
#include "System/System/Root.h"
#include "System/System/exception.h"
#include "System/System/export.h"
#include "System/System/frameListener.h"
#include "System/System/logManager.h"

#include "Support/OS/debug.h"

#include <memory>
#include <string>

namespace {

class Listener final : public Qel::FrameListener {};

[[maybe_unused]] std::unique_ptr<Qel::RenderSystem> renderer;
[[maybe_unused]] std::unique_ptr<Listener> listener;

#ifdef MODULE_LOADS_OTHERS
class Codec final : public Qel::iCodec {
    bool encode(Qel::cFile &, Qel::cFile &, ...) override { return true; }
    bool decode(Qel::cFile &, Qel::cFile &, ...) override { return true; }
};

class Factory final : public Qel::CodecFactory {
    Qel::String getType() const override { return "CODEC_NESTED"; }
    Qel::iCodec *createInstance(Qel::String const &) override { return std::make_unique<Codec>().release(); }
};

Factory factory;
#endif

} // namespace

#ifdef MODULE_STARTS
extern "C" QEL_API void dllStartPlugin()
{
    Qel::logMessage("start " MODULE_NAME "\n", 2);
    renderer = std::make_unique<Qel::RenderSystem>();
    listener = std::make_unique<Listener>();
    Qel::Root::Instance().addRenderSystem(renderer.get());
    Qel::Root::Instance().addFrameListener(listener.get());
#ifdef MODULE_LOADS_OTHERS
    Qel::CodecManager::Instance().addFactory(&factory);
    Qel::CodecManager::Instance().getCodec("CODEC_NESTED");
    Qel::Root::Instance().loadPlugins("others.cfg");
#endif
#ifdef MODULE_THROWS
    throw Qel::Exception(Qel::Exception::InternalFailure, "no such device", "dllStartPlugin");
#endif
}
#endif

#ifdef MODULE_STOPS
extern "C" QEL_API void dllStopPlugin()
{
    std::string text = "stop " MODULE_NAME;
    text += Qel::LogManager::InstanceActive() ? " with a log\n" : "\n";
    os::debugOutput(text.c_str());
    // Not taken off the engine's lists: they must not be followed after this.
    listener.reset();
    renderer.reset();
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->getTimeSinceInit();
        root->makeGlobalString(MODULE_NAME);
        root->showConfigDialog();
    }
#ifdef MODULE_THROWS_IN_STOP
    throw 1;
#endif
}
#endif
