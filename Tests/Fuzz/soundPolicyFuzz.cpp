#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Fuzz/fuzzTarget.h"
#include "Tests/Fuzz/soundPolicyBackEnd.h"
#include "Tests/Fuzz/soundPolicyModel.h"
#include "Tests/Tools/steeredClock.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace Qel;
using policy::Answer;
using policy::FuzzChannel;
using policy::FuzzSound;
using policy::Numbers;
using policy::Outcome;
using policy::Request;
using policy::State;

using Bytes = std::vector<unsigned char>;

Bytes soundFile(char const *name)
{
    std::ifstream file(std::string(SOUND_DATA) + name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes wavFile(unsigned char channels)
{
    return {'R', 'I', 'F', 'F', 44,       0, 0,    0,    'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16, 0,
            0,   0,   1,   0,   channels, 0, 0x40, 0x1F, 0,   0,   0,   0,   0,   0,   0,   0,   16, 0,
            'd', 'a', 't', 'a', 8,        0, 0,    0,    0,   0,   0,   0,   0,   0,   0,   0};
}

struct Kind {
    char const *name;
    Bytes data;
    unsigned int channels;
    decltype(Request::format) format;
};

std::vector<Kind> &kinds()
{
    static std::vector<Kind> all{
        {"a.wav", wavFile(1), 1, Request::WAV},
        {"b.WAV", wavFile(1), 1, Request::WAV},
        {"c.wav", wavFile(2), 2, Request::WAV},
        {"d.ogg", soundFile("mono.ogg"), 1, Request::OGG},
        {"e.mp3", {1, 2, 3}, 2, Request::UNKNOWN},
        {"f.wav", {}, 2, Request::UNKNOWN}, // no data at all
        {"g.ogg", soundFile("stereo.ogg"), 2, Request::OGG},
        {"h.ogg", soundFile("six.ogg"), 6, Request::OGG},
    };
    return all;
}

struct Slot {
    std::unique_ptr<iSoundSource> source;
    Kind const *kind = nullptr;
};

// One program of calls.
class Program {
public:
    Program(unsigned char const *data, std::size_t size) : m_at(data), m_end(data + size) {}

    std::string run()
    {
        unsigned int const shape = next();
        m_sound.start(1 + shape % 4, shape / 4 % 4, shape / 16 % 3, shape / 64 % 2 != 0);
        m_numCounted =
            static_cast<unsigned int>(m_sound.free3DChannels.size() + m_sound.crossfadeChannels.size());
        while (m_at != m_end) {
            step();
            m_sound.trouble.hasCome = false;
        }
        m_sound.trouble = {};
        m_sound.setPause(false);
        m_sound.stopAll(0);
        checkAll();
        fuzzRequire(m_sound.getNumPlayingChannels() == 0 && m_sound.clips.empty() &&
                        m_sound.vorbisStreams.empty() && m_sound.stereoSounds.empty() &&
                        m_sound.subwooferSounds.empty() && m_sound.waitlist.empty(),
                    "nothing is left of what has been stopped");
        for (Slot const &slot : m_slots) {
            fuzzRequire(slot.source == nullptr || slot.source->isStopped(), "all plays are taken back");
        }
        m_sound.shutdownSoundSystem();
        return m_seen;
    }

private:
    unsigned int next() { return m_at == m_end ? 0u : *m_at++; }

    State observe() const
    {
        State state;
        for (iSoundChannel const *const channel : m_sound.channelTable) {
            if (channel != nullptr) {
                sSoundParams const &params = channel->getSoundParams();
                state.table[channel->getIndex()] = {channel->getUniqueID(),
                                                    channel->getPriority(),
                                                    channel->is3DChannel(),
                                                    channel->isPlaying(),
                                                    channel->hasDuckingRequest(),
                                                    params.has3DInformation(),
                                                    params.position.x,
                                                    params.position.y};
            }
        }
        for (iSoundChannel const *const channel : m_sound.free3DChannels) {
            state.free3D.push_back(channel->getIndex());
        }
        for (iSoundChannel const *const channel : m_sound.free2D51Channels) {
            state.free2D.push_back(channel->getIndex());
        }
        for (iSoundChannel const *const channel : m_sound.crossfadeChannels) {
            state.crossfade.push_back(channel->getIndex());
        }
        for (iSoundSource const *const source : m_sound.waitlist) {
            state.waiting.push_back(source->getUniqueID());
        }
        state.duckingCounter = m_sound.duckingCounter;
        state.isPaused = m_sound.isPaused();
        return state;
    }

    // Holds after every call, whatever the device does.
    void checkAll()
    {
        State const state = observe();
        Numbers all = state.free3D;
        all.insert(all.end(), state.free2D.begin(), state.free2D.end());
        all.insert(all.end(), state.crossfade.begin(), state.crossfade.end());
        for (auto const &[number, voice] : state.table) {
            if (!state.isCrossfade(number)) {
                all.push_back(number);
            }
            iSoundChannel const *const channel = m_sound.channelTable[number];
            fuzzRequire(channel != nullptr && channel->getIndex() == number, "a voice plays at its number");
            fuzzRequire(channel->isChannelInited(), "what plays has a source");
            fuzzRequire(slotOf(voice.id) != nullptr, "no voice refers to a source that is gone");
            fuzzRequire(std::isfinite(channel->getActualVolume()) && std::isfinite(channel->getLowPass()) &&
                            channel->getActualDuckingVolume() >= 0.6f &&
                            channel->getActualDuckingVolume() <= 1.0f,
                        "volumes are finite");
        }
        fuzzRequire(std::set<unsigned int>(all.begin(), all.end()).size() == all.size(),
                    "every voice is in one place, and has a number of its own");
        fuzzRequire(all.size() == m_numCounted + m_sound.params.num2D51Channels,
                    "free, playing and fading voices are all there are");
        for (auto const &list : {m_sound.free3DChannels, m_sound.free2D51Channels}) {
            for (iSoundChannel const *const channel : list) {
                fuzzRequire(!channel->isPlaying() && channel->getSoundSource() == nullptr,
                            "a free voice plays nothing");
            }
        }
        for (iSoundChannel const *const channel : m_sound.crossfadeChannels) {
            fuzzRequire(channel->isChannelInited() == (state.table.count(channel->getIndex()) != 0),
                        "a crossfade voice is idle or plays");
        }
        unsigned int const requesters = state.requesters();
        m_hasForgottenRequesters = m_hasForgottenRequesters && requesters != 0;
        fuzzRequire(m_hasForgottenRequesters ? state.duckingCounter <= requesters
                                             : state.duckingCounter == requesters,
                    "as many ask for ducking as are playing");
        std::set<unsigned int> const waiting(state.waiting.begin(), state.waiting.end());
        fuzzRequire(waiting.size() == state.waiting.size(), "a sound waits once");
        for (Slot const &slot : m_slots) {
            if (slot.source != nullptr) {
                unsigned int const id = slot.source->getUniqueID();
                unsigned int const counted = slot.source->getPlayingCounter();
                fuzzRequire(counted <= 1 && (counted == 0 || state.plays(id) || isSoundOf(id)),
                            "what is counted as playing plays");
            }
        }
    }

    // Does a pair or a subwoofer sound with this id still stand in the lists?
    bool isSoundOf(unsigned int id) const
    {
        auto const isIt = [id](auto const *sound) { return sound->getUniqueID() == id; };
        return std::any_of(m_sound.stereoSounds.begin(), m_sound.stereoSounds.end(), isIt) ||
               std::any_of(m_sound.subwooferSounds.begin(), m_sound.subwooferSounds.end(), isIt);
    }

    Slot const *slotOf(unsigned int id) const
    {
        Slot const &slot = m_slots[(id - 1) % m_slots.size()];
        return slot.source != nullptr && slot.source->getUniqueID() == id ? &slot : nullptr;
    }

    bool isWaiting(iSoundSource const *source) const
    {
        return std::find(m_sound.waitlist.begin(), m_sound.waitlist.end(), source) != m_sound.waitlist.end();
    }

    void make(std::size_t at)
    {
        Slot &slot = m_slots[at];
        if (slot.source != nullptr) {
            remove(at);
            return;
        }
        unsigned int const look = next();
        unsigned int const flags = next();
        unsigned int const place = next();
        slot.kind = &kinds()[look % kinds().size()];
        if (slot.kind->format == Request::OGG && ++m_numOgg > 4) {
            slot.kind = &kinds()[0]; // decoders are slow to make
        }
        slot.source = std::make_unique<iSoundSource>();
        iSoundSource &source = *slot.source;
        source.setUniqueID(static_cast<unsigned int>(at + 1));
        source.setResourceName(slot.kind->name);
        if (!slot.kind->data.empty()) {
            auto *const data = const_cast<unsigned char *>(slot.kind->data.data());
            source.setData(data, static_cast<unsigned int>(slot.kind->data.size()));
            source.setCompanionData(data, static_cast<unsigned int>(slot.kind->data.size()));
        } else {
            source.setFallbackName("h.ogg");
        }
        sSoundParams &params = source.getSoundParams();
        source.setCompanionName(look / 8 % 4 == 0 ? "" : "companion.wav");
        if (look / 32 % 2 != 0) {
            source.set3DStereo();
        }
        if (look / 64 % 2 != 0) {
            source.set3DSubwoofer();
        }
        if (look / 128 != 0) {
            source.setPriorityWait();
        }
        params.set(SOUNDFLAG_DUCKING_REQUEST, flags % 4 == 1);
        params.set(SOUNDFLAG_LOCAL_DUCKING, flags % 4 == 2);
        params.set(SOUNDFLAG_PLAY_ON_PAUSE, flags / 4 % 4 == 1);
        params.set(SOUNDFLAG_FORCE_2D, flags / 16 % 4 == 1);
        params.loopCount = params.currentLoop = static_cast<std::uint8_t>(flags / 64);
        params.position = {static_cast<float>(place % 4), 0.0f, 0.0f};
        params.basePriority = static_cast<ePriority>(place / 4 % 4 * 4);
        params.soundGroup = static_cast<std::uint8_t>(place / 16 % 3);
        params.fadeInTimeMS = static_cast<std::uint16_t>(place / 64 * 20);
    }

    // As a game has to do it: what plays is stopped before its source goes, and what waits stays.
    void remove(std::size_t at)
    {
        Slot &slot = m_slots[at];
        if (isWaiting(slot.source.get())) {
            return;
        }
        if (!slot.source->isStopped() || observe().plays(slot.source->getUniqueID())) {
            m_sound.stop(slot.source.get(), 0);
        }
        if (!isWaiting(slot.source.get()) && slot.source->isStopped()) {
            slot.source.reset(); // from here on the sanitizer sees who still looks at it
        }
    }

    Request requestOf(Slot const &slot) const
    {
        iSoundSource const &source = *slot.source;
        sSoundParams const &params = source.getSoundParams();
        float const volume = m_sound.getGroupVolume(params.soundGroup) * params.volume1 * params.volume2;
        Request request{};
        request.id = source.getUniqueID();
        request.priority = params.basePriority;
        request.channels = slot.kind->channels;
        request.format = slot.kind->format;
        request.hasData = !slot.kind->data.empty();
        request.isStream = source.isStream();
        request.isPair = source.is3DStereo();
        request.hasSubwoofer = source.is3DSubwoofer();
        request.is2DForced = source.is2DForced();
        request.isRequester = source.hasDuckingRequested();
        request.waits = source.isPriorityWait();
        request.playsOnPause = source.playOnPause();
        request.isAudible = volume > 0.01f || source.playOnPause();
        request.x = params.position.x;
        request.y = params.position.y;
        return request;
    }

    void play(std::size_t at)
    {
        Slot const &slot = m_slots[at];
        if (slot.source == nullptr) {
            return;
        }
        State const before = observe();
        Request const request = requestOf(slot);
        Outcome const expected = policy::play(before, request, m_sound.isMultiChannel(), m_sound.listener);
        bool const plays = m_sound.play(slot.source.get());
        m_seen += plays ? 'p' : 'f';
        if (m_sound.trouble.hasCome) {
            return;
        }
        State const after = observe();
        fuzzRequire(plays == (expected.answer == Answer::plays), "a play ends as the rules say");
        bool const waits = std::count(after.waiting.begin(), after.waiting.end(), request.id) != 0;
        fuzzRequire(expected.answer != Answer::waits || waits, "what may wait waits");
        fuzzRequire(waits || std::count(before.waiting.begin(), before.waiting.end(), request.id) == 0,
                    "a play takes nothing off the waitlist");
        if (!request.hasData || before.isPaused) {
            return; // a fallback robs twice, and in a pause what is robbed goes at once
        }
        std::set<unsigned int> robbed;
        for (unsigned int const number : expected.robbed) {
            robbed.insert(before.table.at(number).id);
            fuzzRequire(after.isCrossfade(number), "a robbed voice fades out on a crossfade place");
        }
        for (auto const &[number, voice] : before.table) {
            auto const place = after.table.find(number);
            fuzzRequire(place != after.table.end() && place->second.id == voice.id,
                        "what played before plays or fades");
            bool const isRobbed = robbed.count(voice.id) != 0;
            iSoundChannel const *const channel = m_sound.channelTable[number];
            fuzzRequire(!isRobbed || (channel->isFadingDown() && channel->stopAfterFade()),
                        "the robbed fade out");
        }
        Numbers fresh;
        for (auto const &entry : after.table) {
            if (before.table.count(entry.first) == 0) {
                fresh.push_back(entry.first);
            }
        }
        Numbers voices = expected.voices;
        for (unsigned int &number : voices) {
            if (number == 0 && !fresh.empty()) {
                number = *std::find_if(fresh.begin(), fresh.end(), [&](unsigned int candidate) {
                    return std::find(voices.begin(), voices.end(), candidate) == voices.end();
                });
            }
        }
        std::sort(voices.begin(), voices.end());
        fuzzRequire(!plays || fresh == voices, "a sound takes the first free voices");
        fuzzRequire(plays || fresh.empty(), "what fails takes no voice");
    }

    void stop(std::size_t at, unsigned int ms)
    {
        iSoundSource *const source = m_slots[at].source.get();
        if (source == nullptr) {
            return;
        }
        State const before = observe();
        m_sound.stop(source, ms);
        if (m_sound.trouble.hasCome) {
            return;
        }
        State const after = observe();
        for (auto const &[number, voice] : before.table) {
            bool const isMeant = voice.id == source->getUniqueID();
            bool const isThere = after.table.count(number) != 0;
            fuzzRequire(isThere == (!isMeant || (ms != 0 && !before.isPaused)),
                        "a stop ends what it names, and at once only without a fade or in a pause");
        }
        fuzzRequire(ms != 0 || !isSoundOf(source->getUniqueID()), "nothing is left of a stopped sound");
    }

    void update(float dt)
    {
        State const before = observe();
        m_sound.update(dt);
        if (m_sound.trouble.hasCome) {
            return;
        }
        State const after = observe();
        for (iSoundChannel const *const channel : m_sound.channelTable) {
            fuzzRequire(channel == nullptr || !channel->isFinished(), "what has ended has gone");
        }
        std::vector<unsigned int> started;
        for (unsigned int const id : after.sounds()) {
            if (!before.plays(id)) {
                started.push_back(id);
            }
        }
        fuzzRequire(started.size() <= 1 && (started.empty() || !before.isPaused),
                    "one at the most comes off the waitlist, and none in a pause");
        for (unsigned int const id : started) {
            auto const isFirst = [&](unsigned int other) {
                return slotOf(other)->source->getBasePriority() < slotOf(id)->source->getBasePriority();
            };
            auto const place = std::find(before.waiting.begin(), before.waiting.end(), id);
            fuzzRequire(place != before.waiting.end(), "what starts has waited");
            fuzzRequire(std::none_of(before.waiting.begin(), before.waiting.end(), isFirst) &&
                            std::none_of(before.waiting.begin(), place,
                                         [&](unsigned int other) {
                                             return slotOf(other)->source->getBasePriority() ==
                                                    slotOf(id)->source->getBasePriority();
                                         }),
                        "the most urgent comes first, and of equals the first");
            fuzzRequire(std::count(after.waiting.begin(), after.waiting.end(), id) == 0,
                        "what has started waits no more");
        }
    }

    void stopAll(unsigned int group)
    {
        m_sound.stopAll(group);
        m_hasForgottenRequesters = true;
        if (m_sound.trouble.hasCome) {
            return;
        }
        for (unsigned int const id : observe().sounds()) {
            fuzzRequire(group != 0 && slotOf(id)->source->getSoundGroup() != group, "a group has stopped");
        }
        fuzzRequire(m_sound.duckingCounter == 0, "nobody asks for ducking after that");
    }

    // What the device does at some call from now on.
    void arm(unsigned int what)
    {
        std::size_t const at = next() % m_slots.size();
        m_sound.trouble.callsLeft = 1 + what / 8 % 8;
        iSoundSource *const source = m_slots[at].source.get();
        unsigned int const id = static_cast<unsigned int>(at + 1);
        // The source may be gone by then.
        auto const withSource = [this, at, source](auto call) {
            return [this, at, source, call] {
                bool const isThere = source != nullptr && m_slots[at].source.get() == source;
                // A stream, a clip or a pair must not be deleted by a call that it makes itself.
                if (isThere && !source->isStream() && !source->is3DStereo() && !source->is3DSubwoofer()) {
                    call(*source);
                }
            };
        };
        switch (what % 8) {
        case 0:
            m_sound.trouble.callBack = withSource([this](iSoundSource &it) { m_sound.play(&it); });
            break;
        case 1:
            m_sound.trouble.callBack = withSource([this](iSoundSource &it) { m_sound.stop(&it, 0); });
            break;
        case 2:
            m_sound.trouble.callBack = withSource([this](iSoundSource &it) { m_sound.stop(&it, 50); });
            break;
        case 3:
            m_sound.trouble.callBack = [this, id] { m_sound.stopChannel(id, 0); };
            break;
        case 4:
            m_sound.trouble.callBack = [this] { m_sound.setPause(!m_sound.isPaused()); };
            break;
        default:
            m_sound.trouble.callBack = nullptr; // it refuses
        }
    }

    void step()
    {
        unsigned int const call = next();
        std::size_t const at = call / 16;
        switch (call % 16) {
        case 0:
        case 1:
            make(at);
            break;
        case 2:
        case 3:
        case 4:
            play(at);
            break;
        case 5:
            stop(at, 0);
            break;
        case 6:
            stop(at, 50);
            break;
        case 7:
            m_sound.stopChannel(static_cast<unsigned int>(at), next() % 2 * 30);
            break;
        case 8:
            if (m_slots[at].source != nullptr && !observe().plays(static_cast<unsigned int>(at + 1))) {
                m_slots[at].source->resetStream();
                m_slots[at].source->setCurrentTimeMS(0);
            }
            break;
        case 9:
            arm(next());
            break;
        case 10:
            m_sound.setPause(!m_sound.isPaused());
            break;
        case 11:
            if (at < 3) {
                stopAll(static_cast<unsigned int>(at));
            } else if (m_slots[at].source != nullptr) {
                setVolumes(*m_slots[at].source, next());
            }
            break;
        case 12:
            if (m_slots[at].source != nullptr && !observe().plays(static_cast<unsigned int>(at + 1)) &&
                !isSoundOf(static_cast<unsigned int>(at + 1))) {
                m_sound.openClip(m_slots[at].source.get());
            }
            break;
        case 13:
            m_sound.fadeOut(static_cast<unsigned int>(at), 0.5f, 20, at % 2 != 0);
            break;
        case 14:
            m_sound.listener = static_cast<float>(at % 4);
            update(static_cast<float>(at) * 2);
            break;
        default:
            update(0.016f);
        }
        m_seen += static_cast<char>('0' + m_sound.getNumPlayingChannels() % 64);
        checkAll();
    }

    void setVolumes(iSoundSource &source, unsigned int volumes)
    {
        constexpr float factors[] = {1.0f, 0.5f, 0.0f, -1.0f};
        source.setVolume1(factors[volumes % 4]);
        source.setVolume2(factors[volumes / 4 % 4]);
        m_sound.setGroupVolume(volumes / 64 % 3, factors[volumes / 16 % 4]);
        source.setParamChanged();
    }

    test::SteeredClock m_clock; // sleeping takes no time
    unsigned char const *m_at;
    unsigned char const *m_end;
    std::array<Slot, 16> m_slots; // outlive the system
    FuzzSound m_sound;
    unsigned int m_numCounted = 0; // 3D voices
    unsigned int m_numOgg = 0;
    bool m_hasForgottenRequesters = false; // by a stop of one group
    std::string m_seen;
};

} // namespace

// The first byte shapes the system; then come calls, with a sound in the upper half of each.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    return size == 0 ? std::string() : Program(data, size).run();
}
