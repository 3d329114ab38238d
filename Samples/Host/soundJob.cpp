#include "soundJob.h"

#include "soundScene.h"
#include "soundTable.h"

#include "System/Sound/soundSystem.h"
#include "System/Sound/soundSystemManager.h"
#include "System/System/consoleVar.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

constexpr int framesPerSecond = 60;
constexpr int voices3D = 6; // few, so that there is something to rob

bool fail(char const *what, char const *which)
{
    std::fprintf(stderr, "qelHost: %s: %s\n", what, which);
    return false;
}

void printSecond(SoundScene const &scene, Qel::iSoundSystem const &system)
{
    std::vector<VoiceRow> const rows = playingVoices(system);
    D3DXVECTOR3 const &at = scene.listener();
    std::printf("%5.1f s  %-26s %2zu voices, listener at %.1f %.1f\n", static_cast<double>(scene.time()),
                scene.act(), rows.size(), static_cast<double>(at.x), static_cast<double>(at.z));
    for (VoiceRow const &row : rows) {
        std::printf("  %3u  %-4s %-14s volume %.2f  ducking %.2f  %s\n", row.channel, row.kind.c_str(),
                    row.sound.c_str(), static_cast<double>(row.volume), static_cast<double>(row.ducking),
                    row.state);
    }
}

void play(SoundScene &scene, Qel::iSoundSystem &system, bool inRealTime)
{
    auto const start = std::chrono::steady_clock::now();
    for (int frame = 0; !scene.isOver(); ++frame) {
        scene.step(system, 1.0f / framesPerSecond);
        if (frame % framesPerSecond == framesPerSecond - 1) {
            printSecond(scene, system);
        }
        if (inRealTime) {
            std::this_thread::sleep_until(
                start + std::chrono::microseconds(1000000LL * (frame + 1) / framesPerSecond));
        }
    }
    std::printf("%d sounds played or waited, %d were refused\n", scene.played(), scene.refused());
}

} // namespace

Qel::iSoundSystem *openSound()
{
    auto &manager = Qel::SoundSystemManager::Instance();
    for (char const *const type : {"OPENAL", "NULL"}) {
        Qel::iSoundSystem *const system = manager.load(type, type, Qel::PRIORITY_MOST_URGENT);
        for (Qel::eSoundCaps const caps : {Qel::SOUNDCAPS_51, Qel::SOUNDCAPS_STEREO}) {
            Qel::sSoundSystemParams params;
            params.soundCaps = caps;
            params.num3DChannels = voices3D;
            params.listenerMode = Qel::LISTENER_CAMERA;
            if (system != nullptr && system->initSoundSystem(params)) {
                return system;
            }
        }
    }
    fail("no sound", "the log says why");
    return nullptr;
}

bool playSoundScene(SoundRequest const &request)
{
    SoundScene scene(request.folder);
    if (!scene.isWhole()) {
        return fail("cannot read the sound", scene.missing().c_str());
    }
    auto &variables = Qel::ConsoleVar::Instance();
    if (!request.audioFile.empty() &&
        !variables.setConfigurable("openal.file", Qel::String(request.audioFile))) {
        return fail("no plugin renders into a file", request.audioFile.c_str());
    }
    Qel::iSoundSystem *const system = openSound();
    if (system == nullptr) {
        return false;
    }
    play(scene, *system, request.audioFile.empty());
    system->shutdownSoundSystem();
    return true;
}
