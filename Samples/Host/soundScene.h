#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/Sound/soundSource.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Qel {
class iSoundSystem;
}

/// A scripted half minute of sound: a bee flies past, music starts, speech ducks it, two hundred short
/// effects fall around a listener who walks, a church, a waterfall that is walked up to and left, a pause,
/// horns on six speakers, and silence.
class SoundScene {
public:
    static constexpr float seconds = 40; ///< the whole length

    /// Reads the sounds. The sources are the scene's, so the system goes first, or stops them all.
    explicit SoundScene(std::string const &folder);
    ~SoundScene();

    bool isWhole() const { return m_missing.empty(); } ///< were all files there?
    std::string const &missing() const { return m_missing; }

    /// What is due by then, and an update of the system.
    void step(Qel::iSoundSystem &system, float dt);

    bool isOver() const { return m_time >= seconds; }
    float time() const { return m_time; }
    char const *act() const; ///< what goes on, for a caption
    D3DXVECTOR3 const &listener() const { return m_listener; }

    int played() const { return m_played; }   ///< sounds that got a voice or wait for one
    int refused() const { return m_refused; } ///< sounds for which there was none

private:
    struct Act;
    using Sounds = std::array<Qel::iSoundSource, 200>;
    using Bytes = std::vector<unsigned char>;

    void prepare(Qel::iSoundSource &source, char const *name);
    Bytes &fileOf(char const *name);
    void play(Qel::iSoundSystem &system, Qel::iSoundSource &source);
    void moveAll(Qel::iSoundSystem &system);
    void playEffects(Qel::iSoundSystem &system);

    static Act const acts[];

    struct File {
        std::string name;
        Bytes bytes;
    };
    std::string m_folder;
    std::string m_missing;
    std::vector<std::unique_ptr<File>> m_files;

    Qel::iSoundSource m_bee;
    Qel::iSoundSource m_music;
    Qel::iSoundSource m_speech;
    Qel::iSoundSource m_bell;
    Qel::iSoundSource m_fall;
    Qel::iSoundSource m_horns;
    Sounds m_effects;

    float m_time = 0; // seconds
    std::size_t m_nextAct = 0;
    std::size_t m_nextEffect = 0;
    D3DXVECTOR3 m_listener{0, 0, 0};
    unsigned int m_nextId = 1;
    int m_played = 0;
    int m_refused = 0;
};
