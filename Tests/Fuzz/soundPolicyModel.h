#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <vector>

/// What the rules of voices say, as plainly as they can be said: no object of the library takes part.
namespace policy {

using Numbers = std::vector<unsigned int>; // of channels, or ids of sounds

/// A voice that stands in the table.
struct Voice {
    unsigned int id; ///< of its sound
    unsigned int priority;
    bool is3D, isPlaying, isRequester, hasPlace;
    float x, y; ///< its place
};

/// All that is decided on, at one moment.
struct State {
    std::map<unsigned int, Voice> table; ///< by number
    Numbers free3D, free2D;              ///< from the front
    Numbers crossfade;                   ///< by place
    std::vector<unsigned int> waiting;   ///< ids
    unsigned int duckingCounter = 0;
    bool isPaused = false;

    bool plays(unsigned int id) const { return !voicesOf(id).empty(); }
    Numbers voicesOf(unsigned int id) const
    {
        Numbers numbers;
        for (auto const &[number, voice] : table) {
            if (voice.id == id) {
                numbers.push_back(number);
            }
        }
        return numbers;
    }
    bool isCrossfade(unsigned int number) const
    {
        return std::find(crossfade.begin(), crossfade.end(), number) != crossfade.end();
    }
    std::vector<unsigned int> sounds() const ///< that play, each once, in the order of their ids
    {
        std::vector<unsigned int> ids;
        for (auto const &entry : table) {
            ids.push_back(entry.second.id);
        }
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        return ids;
    }
    unsigned int requesters() const
    {
        unsigned int count = 0;
        for (unsigned int const id : sounds()) {
            Numbers const numbers = voicesOf(id);
            count += std::any_of(numbers.begin(), numbers.end(),
                                 [this](unsigned int number) { return table.at(number).isRequester; });
        }
        return count;
    }
};

/// A sound that is to be played.
struct Request {
    unsigned int id, priority, channels;
    enum { WAV, OGG, UNKNOWN } format;
    bool hasData, isStream, isPair, hasSubwoofer, is2DForced, isRequester, waits, playsOnPause, isAudible;
    float x, y;
    bool hasFallback;
};

enum class Answer { fails, plays, waits };

struct Outcome {
    Answer answer;
    Numbers robbed; ///< numbers of the voices that were taken
    Numbers voices; ///< that it plays on
};

/// The whole of a play by a system that has no trouble with its device.
/// @param listener  where it is heard from, on both axes
inline Outcome play(State state, Request sound, bool isMultichannel, float listener)
{
    auto const squared = [](float x, float y) { return x * x + y * y; };
    Outcome outcome{Answer::fails, {}, {}};
    if (state.isPaused && !sound.playsOnPause) {
        return outcome;
    }
    if (state.plays(sound.id)) {
        return outcome;
    }
    bool const is51 = sound.format == Request::OGG && sound.channels > 2;
    if (is51) {
        sound.isPair = sound.hasSubwoofer = false;
    }
    unsigned int voices = sound.isPair ? 2 : 1;
    if (sound.hasSubwoofer && isMultichannel) {
        ++voices;
    } else if (sound.hasSubwoofer && !sound.isPair) {
        sound.hasSubwoofer = false;
    }
    if (is51 && !isMultichannel) {
        return outcome;
    }
    if (!sound.is2DForced && state.free3D.size() < voices) {
        float const reach = squared(sound.x - listener, sound.y - listener);
        Numbers lower;
        Numbers equal;
        for (auto const &[number, voice] : state.table) {
            if (!voice.is3D || !voice.isPlaying || state.isCrossfade(number)) {
                continue;
            }
            if (voice.priority > sound.priority) {
                lower.push_back(number);
            } else if (voice.priority == sound.priority && voice.hasPlace &&
                       squared(voice.x - sound.x, voice.y - sound.y) > reach) {
                equal.push_back(number);
            }
        }
        if (lower.size() + equal.size() < voices) {
            outcome.answer = sound.waits ? Answer::waits : Answer::fails;
            return outcome;
        }
        Numbers victims = lower;
        victims.insert(victims.end(), equal.begin(), equal.end());
        victims.resize(voices);
        if (state.crossfade.size() >= victims.size()) {
            for (unsigned int const victim : victims) {
                auto const idle =
                    std::find_if(state.crossfade.begin(), state.crossfade.end(),
                                 [&](unsigned int number) { return state.table.count(number) == 0; });
                if (idle == state.crossfade.end() || state.table.count(victim) == 0) {
                    continue;
                }
                state.free3D.push_back(*idle);
                *idle = victim;
                outcome.robbed.push_back(victim);
            }
        }
    }
    bool const hasPlace = sound.x != 0 || sound.y != 0;
    bool const isSingle = sound.format == Request::OGG || (!sound.isPair && !sound.hasSubwoofer);
    if (!sound.hasData || sound.isStream || !sound.isAudible ||
        (isSingle && sound.format == Request::UNKNOWN)) {
        return outcome;
    }
    if (isSingle && (!hasPlace || sound.channels >= 2)) {
        sound.is2DForced = true;
    }
    bool const wants3D = !sound.is2DForced && hasPlace && !is51;
    std::size_t const needed = !isSingle && sound.isPair ? 2 : 1;
    if (wants3D && state.free3D.size() < needed) {
        return outcome;
    }
    Numbers taken(state.free3D.begin(),
                  state.free3D.begin() + static_cast<std::ptrdiff_t>(wants3D ? needed : 0));
    // 2D voices are made when there are none, but for that of a subwoofer.
    std::size_t next2D = 0;
    auto const take2D = [&] {
        taken.push_back(next2D < state.free2D.size() ? state.free2D[next2D] : 0);
        ++next2D;
    };
    for (std::size_t i = wants3D ? needed : 0; i < needed; ++i) {
        take2D();
    }
    if (!isSingle && sound.hasSubwoofer) {
        if (isMultichannel && next2D < state.free2D.size()) {
            take2D();
        } else if (!sound.isPair) {
            return outcome; // it cannot do without
        }
    }
    outcome.answer = Answer::plays;
    outcome.voices = taken;
    return outcome;
}

} // namespace policy
