#pragma once

#include <cstdint>

namespace Qel {

/// What iSoundSystem::playWork() has to say.
enum eSoundPlayReturn : std::uint32_t {
    SOUND_PLAY_FAILED = 0,
    SOUND_PLAY_OK = 1,
    SOUND_PLAY_WAITLIST = 2, ///< it plays when a voice is free
};

/// Speaker set-ups and the abilities of devices.
enum eSoundCaps : std::uint32_t {
    SOUNDCAPS_NONE = 0,
    SOUNDCAPS_WINDOWS = 1, ///< as the system is set
    SOUNDCAPS_STEREO = 2,
    SOUNDCAPS_40 = 3,
    SOUNDCAPS_51 = 4,
    SOUNDCAPS_61 = 5,
    SOUNDCAPS_71 = 6,
    SOUNDCAPS_81 = 7,
    SOUNDCAPS_EAX4 = 8,
    SOUNDCAPS_EAX5 = 9,
};

/// Whose place and direction the listener has.
enum eListenerMode : std::uint32_t {
    LISTENER_MIXED = 0,  ///< place of the target, direction of the camera
    LISTENER_CAMERA = 1, ///< both of the camera
    LISTENER_TARGET = 2, ///< both of the target
};

/// The room that the listener stands in, for a back end's reverb.
enum eListenerRoom : std::uint32_t {
    ROOM_NONE = 0,
    ROOM_OUTSIDE = 1,
    ROOM_HOUSE = 2,
    ROOM_BIG_HOUSE = 3,
    ROOM_CHURCH = 4,
    ROOM_HALLWAY = 5,
    ROOM_BATHROOM = 6,
    ROOM_DUNGEON = 7,
    ROOM_SPECIAL_SHADEFORM = 8,
};

/// The questions of iSoundSystem::getSoundInfo().
enum eSoundInfo : std::uint32_t {
    SOUNDINFO_NONE = 1,            ///< 0
    SOUNDINFO_MAX_3D = 2,          ///< 3D channels that there are
    SOUNDINFO_VOICES_51 = 3,       ///< playing
    SOUNDINFO_VOICES_3D = 4,       ///< playing
    SOUNDINFO_VOICES_2D = 5,       ///< playing
    SOUNDINFO_NUM_3DSTEREO = 6,    ///< 3D stereo sounds
    SOUNDINFO_NUM_3DSUBWOOFER = 7, ///< 3D subwoofer sounds
    SOUNDINFO_NUM_CLIPS = 8,
    SOUNDINFO_NUM_VORBIS = 9, ///< streams
    SOUNDINFO_CHANNEL = 10,   ///< 1 if the channel plays, with a line about it
    SOUNDINFO_ROOM = 11,      ///< 0, with the room's name
    SOUNDINFO_LISTENER = 12,  ///< 0, with where the listener stands
};

/// What a sound system is set to, and what it has become.
struct sSoundSystemParams {
    eSoundCaps soundCaps = SOUNDCAPS_WINDOWS;  ///< what the game asks for
    eSoundCaps current3DCaps = SOUNDCAPS_NONE; ///< what the back end settled on for 3D
    eSoundCaps current51Caps = SOUNDCAPS_NONE; ///< what it settled on for multichannel
    eListenerMode listenerMode = LISTENER_MIXED;
    eListenerRoom listenerRoom = ROOM_NONE;
    bool useHardwareMixer = false;
    bool isMultiChannel = false; ///< the device plays 5.1 sounds
    bool canPreloadSounds = false;
    std::uint8_t num2D51Channels = 30; ///< grows and shrinks with what plays
    std::uint8_t num3DChannels = 50;
    std::uint8_t numSpeakers = 0;
    std::uint16_t driverSamplerate = 48000; ///< Hz
    float backEndValue = 3.0f;              ///< the back end's
    bool isRoomReverbOn = true;
    float wetVolume = 1.0f;
    std::uint8_t backEndFlag = 0; ///< the back end's
};

} // namespace Qel
