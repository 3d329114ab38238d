#include "soundScene.h"

#include "System/Sound/soundSystem.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <random>

namespace {

D3DXVECTOR3 const ahead{0, 0, -1};
D3DXVECTOR3 const upwards{0, 1, 0};

// When things move, in seconds.
constexpr float beeStart = 0.5f;
constexpr float beeEnd = 4.5f;
constexpr float effectsStart = 15.0f;
constexpr float effectsEnd = 25.0f;
constexpr float fallStart = 29.0f;
constexpr float fallEnd = 35.0f;
D3DXVECTOR3 const fallPlace{20, 0, -500}; // a pair stands two hundred units apart

float share(float time, float start, float end)
{
    return std::clamp((time - start) / (end - start), 0.0f, 1.0f);
}

} // namespace

struct SoundScene::Act {
    float time; // seconds
    char const *title;
    void (*begin)(SoundScene &, Qel::iSoundSystem &);
};

SoundScene::Act const SoundScene::acts[] = {
    {0.0f, "silence", [](SoundScene &, Qel::iSoundSystem &) {}},
    {beeStart, "a bee flies past",
     [](SoundScene &scene, Qel::iSoundSystem &system) { scene.play(system, scene.m_bee); }},
    {beeEnd, "the bee is gone",
     [](SoundScene &scene, Qel::iSoundSystem &system) { system.stop(&scene.m_bee, 300); }},
    {5.0f, "music",
     [](SoundScene &scene, Qel::iSoundSystem &system) { scene.play(system, scene.m_music); }},
    {9.0f, "speech ducks the music",
     [](SoundScene &scene, Qel::iSoundSystem &system) { scene.play(system, scene.m_speech); }},
    {effectsStart, "two hundred effects", [](SoundScene &, Qel::iSoundSystem &) {}},
    {effectsEnd, "in a church",
     [](SoundScene &scene, Qel::iSoundSystem &system) {
         system.setListenerRoom(Qel::ROOM_CHURCH, true);
         scene.m_bell.setPosition(scene.m_listener + D3DXVECTOR3(2, 0, -3));
         scene.play(system, scene.m_bell);
     }},
    {28.0f, "outside again",
     [](SoundScene &, Qel::iSoundSystem &system) { system.setListenerRoom(Qel::ROOM_OUTSIDE, true); }},
    {fallStart, "to a waterfall and back",
     [](SoundScene &scene, Qel::iSoundSystem &system) { scene.play(system, scene.m_fall); }},
    {fallEnd, "music alone",
     [](SoundScene &scene, Qel::iSoundSystem &system) { system.stop(&scene.m_fall, 300); }},
    {36.0f, "a pause", [](SoundScene &, Qel::iSoundSystem &system) { system.setPause(true); }},
    {37.0f, "horns on all speakers",
     [](SoundScene &scene, Qel::iSoundSystem &system) {
         system.setPause(false);
         scene.play(system, scene.m_horns);
     }},
    {38.5f, "silence",
     [](SoundScene &scene, Qel::iSoundSystem &system) { system.stop(&scene.m_music, 200); }},
};

SoundScene::SoundScene(std::string const &folder) : m_folder(folder)
{
    prepare(m_bee, "bee.ogg");
    m_bee.getSoundParams().loopCount = 0;
    m_bee.getSoundParams().minDistance = 2;

    prepare(m_music, "music.ogg");
    m_music.getSoundParams().loopCount = 0;
    m_music.getSoundParams().basePriority = Qel::PRIORITY_MOST_URGENT;
    m_music.getSoundParams().fadeInTimeMS = 1000;
    m_music.force2D();

    prepare(m_speech, "speech.ogg");
    m_speech.getSoundParams().set(Qel::SOUNDFLAG_DUCKING_REQUEST, true);
    m_speech.getSoundParams().basePriority = Qel::PRIORITY_MOST_URGENT;
    m_speech.force2D();

    prepare(m_bell, "bell.wav");

    prepare(m_fall, "fallLeft.wav");
    Bytes &right = fileOf("fallRight.wav");
    m_fall.setCompanionName("fallRight.wav");
    m_fall.setCompanionData(right.data(), static_cast<unsigned int>(right.size()));
    m_fall.set3DStereo();
    m_fall.getSoundParams().loopCount = 0;
    m_fall.getSoundParams().minDistance = 200;
    m_fall.getSoundParams().maxDistance = 700;
    m_fall.setPosition(fallPlace);

    prepare(m_horns, "horns.wav");

    char const *const names[] = {"step.wav", "drop.wav", "hammer.wav", "bell.wav"};
    for (std::size_t i = 0; i < m_effects.size(); ++i) {
        prepare(m_effects[i], names[i % std::size(names)]);
        m_effects[i].setPitchVariation(10);
        m_effects[i].getSoundParams().minDistance = 2;
        // Bells are the least of all and are robbed first.
        m_effects[i].getSoundParams().basePriority =
            static_cast<Qel::ePriority>(Qel::PRIORITY_DEFAULT + (i % std::size(names) == 3));
    }
}

SoundScene::~SoundScene() = default;

SoundScene::Bytes &SoundScene::fileOf(char const *name)
{
    auto const known =
        std::find_if(m_files.begin(), m_files.end(), [name](auto const &file) { return file->name == name; });
    if (known != m_files.end()) {
        return (*known)->bytes;
    }
    std::ifstream in(m_folder + "/" + name, std::ios::binary);
    auto file = std::make_unique<File>();
    file->name = name;
    file->bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (file->bytes.empty()) {
        m_missing = m_folder + "/" + name;
    }
    m_files.push_back(std::move(file));
    return m_files.back()->bytes;
}

void SoundScene::prepare(Qel::iSoundSource &source, char const *name)
{
    Bytes &bytes = fileOf(name);
    source.setUniqueID(m_nextId++);
    source.setResourceName(name);
    source.setData(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

void SoundScene::play(Qel::iSoundSystem &system, Qel::iSoundSource &source)
{
    ++(system.play(&source) ? m_played : m_refused);
}

char const *SoundScene::act() const
{
    return m_nextAct == 0 ? "" : acts[m_nextAct - 1].title;
}

void SoundScene::step(Qel::iSoundSystem &system, float dt)
{
    m_time += dt;
    moveAll(system);
    for (; m_nextAct < std::size(acts) && acts[m_nextAct].time <= m_time; ++m_nextAct) {
        acts[m_nextAct].begin(*this, system);
    }
    playEffects(system);
    system.update(dt);
}

void SoundScene::moveAll(Qel::iSoundSystem &system)
{
    float const speed = 16 / (beeEnd - beeStart);
    float const flown = share(m_time, beeStart, beeEnd) * (beeEnd - beeStart);
    m_bee.setPosition({-8 + speed * flown, 0, -2});
    m_bee.getSoundParams().motion = {speed, 0, 0};
    m_bee.setParamChanged();

    // Along the x axis among the effects, then to the waterfall and back.
    float const toFall = share(m_time, fallStart, (fallStart + fallEnd) / 2) -
                         share(m_time, (fallStart + fallEnd) / 2, fallEnd);
    m_listener = {20 * share(m_time, effectsStart, effectsEnd), 0, -480 * toFall};
    system.setCameraListener(m_listener, ahead, upwards);
    system.setTargetListener(m_listener, ahead, upwards);
}

void SoundScene::playEffects(Qel::iSoundSystem &system)
{
    auto const due = static_cast<std::size_t>(share(m_time, effectsStart, effectsEnd) *
                                              static_cast<float>(m_effects.size()));
    for (; m_nextEffect < due; ++m_nextEffect) {
        Qel::iSoundSource &effect = m_effects[m_nextEffect];
        std::minstd_rand random(static_cast<unsigned int>(m_nextEffect) + 1);
        random.discard(3);
        auto const between = [&random](float least, float most) {
            return least + (most - least) * static_cast<float>(random()) /
                               static_cast<float>(std::minstd_rand::max());
        };
        float const angle = between(0, 6.2831853f);
        float const distance = between(1, 15);
        effect.setPosition(m_listener +
                           D3DXVECTOR3(distance * std::cos(angle), 0, distance * std::sin(angle)));
        play(system, effect);
    }
}
