#include "alReverb.h"

#include <AL/efx-presets.h>
#include <AL/efx.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace {

// In the order of eListenerRoom, without ROOM_NONE.
constexpr EFXEAXREVERBPROPERTIES rooms[] = {
    EFX_REVERB_PRESET_PLAIN,       EFX_REVERB_PRESET_LIVINGROOM, EFX_REVERB_PRESET_WOODEN_LARGEROOM,
    EFX_REVERB_PRESET_CONCERTHALL, EFX_REVERB_PRESET_HALLWAY,    EFX_REVERB_PRESET_BATHROOM,
    EFX_REVERB_PRESET_STONEROOM,   EFX_REVERB_PRESET_PSYCHOTIC,
};

// What the library of the device brings beyond the plain interface. The same for all of its devices.
struct Effects {
    LPALGENEFFECTS genEffects;
    LPALDELETEEFFECTS deleteEffects;
    LPALEFFECTI effecti;
    LPALEFFECTF effectf;
    LPALEFFECTFV effectfv;
    LPALGENFILTERS genFilters;
    LPALDELETEFILTERS deleteFilters;
    LPALFILTERI filteri;
    LPALFILTERF filterf;
    LPALGENAUXILIARYEFFECTSLOTS genSlots;
    LPALDELETEAUXILIARYEFFECTSLOTS deleteSlots;
    LPALAUXILIARYEFFECTSLOTI sloti;
    LPALAUXILIARYEFFECTSLOTF slotf;
    bool isWhole;
};

template <typename Function>
bool find(Function &function, char const *name)
{
    function = reinterpret_cast<Function>(alGetProcAddress(name));
    return function != nullptr;
}

Effects const &effects()
{
    static Effects const all = [] {
        Effects found{};
        found.isWhole =
            find(found.genEffects, "alGenEffects") && find(found.deleteEffects, "alDeleteEffects") &&
            find(found.effecti, "alEffecti") && find(found.effectf, "alEffectf") &&
            find(found.effectfv, "alEffectfv") && find(found.genFilters, "alGenFilters") &&
            find(found.deleteFilters, "alDeleteFilters") && find(found.filteri, "alFilteri") &&
            find(found.filterf, "alFilterf") && find(found.genSlots, "alGenAuxiliaryEffectSlots") &&
            find(found.deleteSlots, "alDeleteAuxiliaryEffectSlots") &&
            find(found.sloti, "alAuxiliaryEffectSloti") && find(found.slotf, "alAuxiliaryEffectSlotf");
        return found;
    }();
    return all;
}

void fillFull(ALuint effect, EFXEAXREVERBPROPERTIES const &room)
{
    auto const set = effects().effectf;
    set(effect, AL_EAXREVERB_DENSITY, room.flDensity);
    set(effect, AL_EAXREVERB_DIFFUSION, room.flDiffusion);
    set(effect, AL_EAXREVERB_GAIN, room.flGain);
    set(effect, AL_EAXREVERB_GAINHF, room.flGainHF);
    set(effect, AL_EAXREVERB_GAINLF, room.flGainLF);
    set(effect, AL_EAXREVERB_DECAY_TIME, room.flDecayTime);
    set(effect, AL_EAXREVERB_DECAY_HFRATIO, room.flDecayHFRatio);
    set(effect, AL_EAXREVERB_DECAY_LFRATIO, room.flDecayLFRatio);
    set(effect, AL_EAXREVERB_REFLECTIONS_GAIN, room.flReflectionsGain);
    set(effect, AL_EAXREVERB_REFLECTIONS_DELAY, room.flReflectionsDelay);
    effects().effectfv(effect, AL_EAXREVERB_REFLECTIONS_PAN, room.flReflectionsPan);
    set(effect, AL_EAXREVERB_LATE_REVERB_GAIN, room.flLateReverbGain);
    set(effect, AL_EAXREVERB_LATE_REVERB_DELAY, room.flLateReverbDelay);
    effects().effectfv(effect, AL_EAXREVERB_LATE_REVERB_PAN, room.flLateReverbPan);
    set(effect, AL_EAXREVERB_ECHO_TIME, room.flEchoTime);
    set(effect, AL_EAXREVERB_ECHO_DEPTH, room.flEchoDepth);
    set(effect, AL_EAXREVERB_MODULATION_TIME, room.flModulationTime);
    set(effect, AL_EAXREVERB_MODULATION_DEPTH, room.flModulationDepth);
    set(effect, AL_EAXREVERB_AIR_ABSORPTION_GAINHF, room.flAirAbsorptionGainHF);
    set(effect, AL_EAXREVERB_HFREFERENCE, room.flHFReference);
    set(effect, AL_EAXREVERB_LFREFERENCE, room.flLFReference);
    set(effect, AL_EAXREVERB_ROOM_ROLLOFF_FACTOR, room.flRoomRolloffFactor);
    effects().effecti(effect, AL_EAXREVERB_DECAY_HFLIMIT, room.iDecayHFLimit);
}

void fillPlain(ALuint effect, EFXEAXREVERBPROPERTIES const &room)
{
    auto const set = effects().effectf;
    set(effect, AL_REVERB_DENSITY, room.flDensity);
    set(effect, AL_REVERB_DIFFUSION, room.flDiffusion);
    set(effect, AL_REVERB_GAIN, room.flGain);
    set(effect, AL_REVERB_GAINHF, room.flGainHF);
    set(effect, AL_REVERB_DECAY_TIME, room.flDecayTime);
    set(effect, AL_REVERB_DECAY_HFRATIO, room.flDecayHFRatio);
    set(effect, AL_REVERB_REFLECTIONS_GAIN, room.flReflectionsGain);
    set(effect, AL_REVERB_REFLECTIONS_DELAY, room.flReflectionsDelay);
    set(effect, AL_REVERB_LATE_REVERB_GAIN, room.flLateReverbGain);
    set(effect, AL_REVERB_LATE_REVERB_DELAY, room.flLateReverbDelay);
    set(effect, AL_REVERB_AIR_ABSORPTION_GAINHF, room.flAirAbsorptionGainHF);
    set(effect, AL_REVERB_ROOM_ROLLOFF_FACTOR, room.flRoomRolloffFactor);
    effects().effecti(effect, AL_REVERB_DECAY_HFLIMIT, room.iDecayHFLimit);
}

} // namespace

void AlReverb::open(ALCdevice *device)
{
    m_slot = m_effect = m_filter = 0;
    if (alcIsExtensionPresent(device, "ALC_EXT_EFX") == ALC_FALSE || !effects().isWhole) {
        return;
    }
    alGetError();
    effects().genSlots(1, &m_slot);
    effects().genEffects(1, &m_effect);
    effects().genFilters(1, &m_filter);
    effects().filteri(m_filter, AL_FILTER_TYPE, AL_FILTER_LOWPASS);
    if (alGetError() != AL_NO_ERROR) {
        close();
        return;
    }
    effects().effecti(m_effect, AL_EFFECT_TYPE, AL_EFFECT_EAXREVERB);
    m_isFull = alGetError() == AL_NO_ERROR;
    if (!m_isFull) {
        effects().effecti(m_effect, AL_EFFECT_TYPE, AL_EFFECT_REVERB);
    }
    setRoom(m_room);
    setWet(m_wet);
}

void AlReverb::close()
{
    if (m_slot != 0) {
        effects().deleteSlots(1, &m_slot);
    }
    if (m_effect != 0) {
        effects().deleteEffects(1, &m_effect);
    }
    if (m_filter != 0) {
        effects().deleteFilters(1, &m_filter);
    }
    m_slot = m_effect = m_filter = 0;
}

void AlReverb::setRoom(Qel::eListenerRoom room)
{
    m_room = room;
    if (m_slot == 0) {
        return;
    }
    bool const isRoom = room != Qel::ROOM_NONE && room <= std::size(rooms);
    if (isRoom) {
        (m_isFull ? fillFull : fillPlain)(m_effect, rooms[room - 1]);
    }
    effects().sloti(m_slot, AL_EFFECTSLOT_EFFECT, isRoom ? static_cast<ALint>(m_effect) : AL_EFFECT_NULL);
}

void AlReverb::setWet(float volume)
{
    m_wet = std::clamp(volume, 0.0f, 1.0f);
    if (m_slot != 0) {
        effects().slotf(m_slot, AL_EFFECTSLOT_GAIN, m_wet);
    }
}

void AlReverb::send(ALuint source, bool on) const
{
    if (m_slot != 0) {
        alSource3i(source, AL_AUXILIARY_SEND_FILTER,
                   on ? static_cast<ALint>(m_slot) : ALint{AL_EFFECTSLOT_NULL}, 0, AL_FILTER_NULL);
    }
}

void AlReverb::filter(ALuint source, float pass) const
{
    if (m_slot == 0) {
        return;
    }
    bool const isFiltered = pass < 1;
    if (isFiltered) {
        effects().filterf(m_filter, AL_LOWPASS_GAINHF, std::max(pass, 0.0f));
    }
    // The source takes a copy of the filter's values.
    alSourcei(source, AL_DIRECT_FILTER, isFiltered ? static_cast<ALint>(m_filter) : AL_FILTER_NULL);
}
