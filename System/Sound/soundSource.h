#pragma once

#include "System/Sound/soundParams.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>

namespace Qel {

/// One sound that a game wants heard: where its data lie, how it is to be played, and what has become of it.
///
/// The game fills one in, hands it to iSoundSystem::play(), and may go on changing volume, position and pitch
/// while it plays: the sound system reads it in every update and leaves its results in it.
///
/// @code
/// iSoundSource shot;
/// shot.setResourceName("shot.wav");
/// shot.setData(bytes, size);
/// shot.setUniqueID(7);
/// shot.setPosition({3, 0, 1});
/// sound->play(&shot);
/// @endcode
///
/// @par Ownership  The game's, and it must live until it has stopped: the system keeps pointers to it. Data
///                 are the game's too, but for those of setDataExclusive(). A copy shares the data of its
///                 original and never owns them.
/// @par Threads    Takes no lock; belongs to the thread that runs iSoundSystem::update().
class QEL_API iSoundSource {
public:
    iSoundSource() = default;
    explicit iSoundSource(sSoundParams const &newParams) { init(newParams); }
    iSoundSource(iSoundSource const &other);
    iSoundSource &operator=(iSoundSource const &other);
    ~iSoundSource();

    void init(sSoundParams const &newParams); ///< reset(), then these parameters with all loops ahead
    void reset();                             ///< everything as in a new source; an owned block is freed

    /// Takes parameters over as they stand, the current loop too.
    /// @param markChanged  hand them on to what plays already
    void setSoundParams(sSoundParams const &newParams, bool markChanged);
    sSoundParams const &getSoundParams() const { return params; }
    sSoundParams &getSoundParams() { return params; }

    /// @name Data: a file's image in memory
    /// @{
    void setData(unsigned char *newData, unsigned int size);          ///< not owned, not copied
    void setCompanionData(unsigned char *newData, unsigned int size); ///< not owned, not copied
    unsigned char *getData(unsigned int &size) const { return size = dataSize, data; }
    unsigned char *getCompanionData(unsigned int &size) const
    {
        return size = companionDataSize, companionData;
    }

    /// Takes a copy that the source owns, in place of one it owned before. With null or no size it only gives
    /// an earlier one up; without memory the source has no data then.
    void setDataExclusive(unsigned char const *newData, unsigned int size);

    /// Moves on to what lies behind a header inside the data. The next play looks at the whole image again.
    void _stripData(unsigned char *payload, unsigned int size);
    void _restoreData(); ///< back to the image that _stripData() moved on from, if the data are still its
    /// @}

    /// @name Playing
    /// @{
    void setPlaying();
    void setStopped();                                                  ///< stays at 0
    unsigned short getPlayingCounter() const { return playingCounter; } ///< plays running or waiting
    bool isStopped() const { return playingCounter == 0; }
    bool hasPlayedOnce() const { return has(PLAYED_ONCE); }
    void setCurrentTimeMS(unsigned int ms) { currentTimeMS = ms; }
    unsigned int getCurrentTimeMS() const { return currentTimeMS; } ///< how far it has played
    /// @}

    /// @name Format of the data; each excludes the others
    /// @{
    void setWAVHeader(bool adpcm); ///< @p adpcm: compressed; false leaves that mark as it is
    void resetWAVHeader() { set(WAV, false); }
    bool hasWAVHeader() const { return has(WAV); }
    bool isADPCMCompressed() const { return has(WAV) && has(ADPCM); }
    void setOGGHeader();
    void resetOGGHeader() { set(OGG, false); }
    bool hasOGGHeader() const { return has(OGG); }
    void setMP3Header();
    bool hasMP3Header() const { return has(MP3); }
    void resetFormats() { status &= ~(WAV | ADPCM | OGG | MP3); }
    bool isAnyKnownFormat() const { return (status & (WAV | OGG | MP3)) != 0; }
    /// @}

    /// @name What kind of sound it is
    /// @{
    void setStream() { set(STREAM, true); }
    void resetStream() { set(STREAM, false); }
    bool isStream() const { return has(STREAM); } ///< played by a stream or a clip
    void setStreamRequested() { set(STREAM_REQUESTED, true); }
    void resetStreamRequested() { set(STREAM_REQUESTED, false); }
    bool isStreamRequested() const { return has(STREAM_REQUESTED); }
    void set51Sound(); ///< no stereo pair and no subwoofer sound any more
    bool is51Sound() const { return has(SOUND_51); }
    void set3DStereo(); ///< nothing without a companion's name
    void reset3DStereo() { set(STEREO_3D, false); }
    bool is3DStereo() const { return has(STEREO_3D); }
    void set3DSubwoofer(); ///< nothing without a companion's name or where 2D is forced
    void reset3DSubwoofer() { set(SUBWOOFER_3D, false); }
    bool is3DSubwoofer() const { return has(SUBWOOFER_3D); }
    void setPriorityWait() { set(PRIORITY_WAIT, true); } ///< waits for a voice if there is none
    bool isPriorityWait() const { return has(PRIORITY_WAIT); }
    void setCustomFlag() { set(CUSTOM, true); } ///< the game's
    void resetCustomFlag() { set(CUSTOM, false); }
    bool isCustomFlagSet() const { return has(CUSTOM); }
    /// @}

    /// @name A single speaker; the position becomes the origin
    /// @{
    void setFrontLeftOnly() { setSpeaker(SOUNDSPEAKER_FRONT_LEFT); }
    void setFrontRightOnly() { setSpeaker(SOUNDSPEAKER_FRONT_RIGHT); }
    void setCenterOnly() { setSpeaker(SOUNDSPEAKER_CENTER); }
    void setLFEOnly() { setSpeaker(SOUNDSPEAKER_LFE); }
    void setRearLeftOnly() { setSpeaker(SOUNDSPEAKER_REAR_LEFT); }
    void setRearRightOnly() { setSpeaker(SOUNDSPEAKER_REAR_RIGHT); }
    bool isFrontLeftOnly() const { return hasSpeaker(SOUNDSPEAKER_FRONT_LEFT); }
    bool isFrontRightOnly() const { return hasSpeaker(SOUNDSPEAKER_FRONT_RIGHT); }
    bool isCenterOnly() const { return hasSpeaker(SOUNDSPEAKER_CENTER); }
    bool isLFEOnly() const { return hasSpeaker(SOUNDSPEAKER_LFE); }
    bool isRearLeftOnly() const { return hasSpeaker(SOUNDSPEAKER_REAR_LEFT); }
    bool isRearRightOnly() const { return hasSpeaker(SOUNDSPEAKER_REAR_RIGHT); }
    bool isSingleSpeaker() const { return params.isSingleSpeaker(); }
    /// @}

    /// @name Loops
    /// @{
    bool isLooping() const { return params.loopCount == 0; } ///< for ever
    bool goesRound() const
    {
        return isLooping() || (params.loopCount > 1 && params.currentLoop > 1);
    } ///< after this pass
    unsigned char getLoop() const { return params.loopCount; }
    unsigned char getCurrentLoop() const { return params.currentLoop; } ///< loops left
    void decCurrentLoop();                                              ///< not below 0; nothing for ever
    /// @}

    /// @name Changes that what plays has to follow
    /// @{
    void setVolChanged() { set(VOLUME_CHANGED, true); }
    void resetVolChanged() { set(VOLUME_CHANGED, false); }
    bool isVolChanged() const { return has(VOLUME_CHANGED); }
    void setParamChanged() { set(PARAM_CHANGED, true); }
    void resetParamChanged() { set(PARAM_CHANGED, false); }
    bool isParamChanged() const { return has(PARAM_CHANGED); }
    void setVolume1(float volume) { params.volume1 = volume, setVolChanged(); }
    void setVolume2(float volume) { params.volume2 = volume, setVolChanged(); }
    float getVolume1() const { return params.volume1; }
    float getVolume2() const { return params.volume2; }
    /// @}

    /// @name Names and numbers
    /// @{
    void setResourceName(String const &name) { resourceName = name; } ///< of the file; tells the format, too
    String const &getResourceName() const { return resourceName; }
    void setFallbackName(String const &name)
    {
        fallbackName = name;
    } ///< tried where the first cannot be played
    void resetFallbackName() { fallbackName.clear(); }
    String const &getFallbackName() const { return fallbackName; }
    void setCompanionName(String const &name) { companionName = name; } ///< second file of a pair
    String const &getCompanionName() const { return companionName; }
    void setUniqueID(unsigned int id)
    {
        uniqueID = id;
    } ///< the game's handle, by which sources are told apart
    unsigned int getUniqueID() const { return uniqueID; }
    void setResourceManagerID(unsigned int id) { resourceManagerID = id; }
    unsigned int getResourceManagerID() const { return resourceManagerID; }
    void setResourceManagerCompanionID(unsigned int id) { resourceManagerCompanionID = id; }
    unsigned int getResourceManagerCompanionID() const { return resourceManagerCompanionID; }
    void setResourceProfileID(unsigned int id) { resourceProfileID = id; }
    unsigned int getResourceProfileID() const { return resourceProfileID; }
    /// @}

    /// @name Parameters, one by one; see sSoundParams
    /// @{
    void setPosition(D3DXVECTOR3 const &position) { params.position = position; }
    D3DXVECTOR3 const &getPosition() const { return params.position; }
    unsigned short getSamplerate() const { return params.sampleRate; }
    void setSamplerate(unsigned short hz) { params.sampleRate = hz; }
    unsigned char getNumChannels() const { return params.numChannels; }
    void setNumChannels(unsigned char count) { params.numChannels = count; }
    float getPitchFactor() const { return params.pitchFactor; }
    void setPitchFactor(float factor) { params.pitchFactor = factor; }
    ePriority getBasePriority() const { return params.basePriority; }
    unsigned short getFadeInTimeMS() const { return params.fadeInTimeMS; }
    unsigned char getSoundGroup() const { return params.soundGroup; }
    unsigned char getPitchVariation() const { return params.pitchVariation; }
    void setPitchVariation(unsigned char percent) { params.pitchVariation = percent; }
    void setSampleLengthMS(unsigned int ms) { params.sampleLengthMS = ms; }
    unsigned int getSampleLengthMS() const { return params.sampleLengthMS; }
    void force2D() { params.force2D(); }
    void resetForce2D() { params.resetForce2D(); }
    bool is2DForced() const { return params.is2DForced(); }
    bool has3DInformation() const { return params.has3DInformation(); }
    void enableWetVolume() { params.enableWetVolume(); }
    void disableWetVolume() { params.disableWetVolume(); }
    bool isWetVolumeOn() const { return params.isWetVolumeOn(); }
    void setPlayOnPause(bool on = true) { params.set(SOUNDFLAG_PLAY_ON_PAUSE, on); }
    bool playOnPause() const { return params.playOnPause(); }
    bool hasDuckingRequested() const { return params.hasDuckingRequested(); }
    void setLocalDucking() { params.set(SOUNDFLAG_LOCAL_DUCKING, true); }
    void resetLocalDucking() { params.set(SOUNDFLAG_LOCAL_DUCKING, false); }
    bool isLocalDuckingOn() const { return params.isLocalDuckingOn(); }
    void setDuckingLowPass() { params.set(SOUNDFLAG_DUCKING_LOW_PASS, true); }
    void resetDuckingLowPass() { params.set(SOUNDFLAG_DUCKING_LOW_PASS, false); }
    bool isDuckingLowPassOn() const { return params.isDuckingLowPassOn(); }
    void setLowPassFiltering() { params.set(SOUNDFLAG_LOW_PASS, true); }
    void resetLowPassFiltering() { params.set(SOUNDFLAG_LOW_PASS, false); }
    bool useLowPassFiltering() const { return params.useLowPassFiltering(); }
    bool isOpenSky() const { return params.isOpenSky(); }
    /// @}

private:
    enum Status : std::uint32_t {
        EXCLUSIVE = 0x0001,
        STREAM = 0x0002,
        SOUND_51 = 0x0004,
        VOLUME_CHANGED = 0x0008,
        PARAM_CHANGED = 0x0010,
        PRIORITY_WAIT = 0x0020,
        PLAYED_ONCE = 0x0040,
        WAV = 0x0080,
        ADPCM = 0x0100,
        OGG = 0x0200,
        MP3 = 0x0400,
        STREAM_REQUESTED = 0x0800,
        CUSTOM = 0x1000,
        STEREO_3D = 0x2000,
        SUBWOOFER_3D = 0x4000,
    };

    bool has(Status bit) const { return (status & bit) != 0; }
    void set(Status bit, bool on) { status = on ? status | bit : status & ~static_cast<std::uint32_t>(bit); }
    void setSpeaker(eSoundSpeaker speaker);
    bool hasSpeaker(eSoundSpeaker speaker) const { return (params.singleSpeaker & speaker) != 0; }
    void freeOwned();

    std::uint32_t status = 0;
    std::uint16_t playingCounter = 0;
    std::uint32_t currentTimeMS = 0;
    unsigned char *data = nullptr;
    std::uint32_t dataSize = 0;
    unsigned char *companionData = nullptr;
    std::uint32_t companionDataSize = 0;
    std::uint32_t resourceManagerID = 0;
    std::uint32_t resourceManagerCompanionID = 0;
    std::uint32_t resourceProfileID = 0;
    std::uint32_t uniqueID = 0;
    sSoundParams params;
    String resourceName;
    String fallbackName;
    String companionName;
    unsigned char *m_block = nullptr;    // the owned block; data may have moved on inside it
    unsigned char *m_image = nullptr;    // what data was before a header was stripped
    std::uint32_t m_imageSize = 0;       // bytes
    unsigned char *m_stripped = nullptr; // what data became then
};

} // namespace Qel
