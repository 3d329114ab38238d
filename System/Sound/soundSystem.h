#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/Patterns/resource.h"
#include "System/Sound/soundSystemTypes.h"
#include "System/System/export.h"
#include "System/System/string.h"
#include "System/Thread/mutex.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace Qel {

class iSound3DStereo;
class iSound3DSubwoofer;
class iSoundChannel;
class iSoundClip;
class iSoundSource;
class iSoundVorbis;

/// The engine's sound: all policy above an audio device, and the base of every back end.
///
/// What a game does:
///
/// @code
/// iSoundSystem *const sound = SoundSystemManager::Instance().load("main", "NULL", PRIORITY_MOST_URGENT);
/// sSoundSystemParams params;
/// params.soundCaps = SOUNDCAPS_STEREO;
/// sound->initSoundSystem(params);
/// sound->play(&shot);
/// ... // in each frame:
/// sound->update(dt);
/// @endcode
///
/// **Voices.** Every channel is on a free list, in the channel table while it plays, or among the crossfade
/// channels. 2D and 5.1 channels are made as they are needed; of 3D channels there is a fixed number. A sound
/// that finds none free takes one from a playing sound of lower priority, or of the same and farther away:
/// that one fades out on a crossfade channel's account, or it waits, if its source says so.
///
/// **Ducking.** While a sound plays that asks for it, all others go down to 0.6 of their volume.
///
/// **A back end** derives from this class. It overrides initSoundSystem(), calls the base, and on success
/// makes its channels: 3D ones numbered from 1 and 2D ones after them, so that the number num3DChannels +
/// num2D51Channels + 1 is free; some of the 3D ones go into the crossfade vector and not on the free list;
/// and it gives the channel table room for that many entries. It adds to supportedCaps before, overrides
/// create2D51Channel() to make its own class, and moves fades in its channels' update(). Its load() says
/// true. No entry of its lists stays where it is over a call into the library.
///
/// Operations do nothing and give false, 0 or null before initSoundSystem().
///
/// @par Ownership  Owns its channels, clips, streams and 3D sounds. Sources are the game's, and must live
///                 while they play or wait.
/// @par Threads    One thread calls all of it. Nothing here throws.
class QEL_API iSoundSystem : public cResource {
protected:
    iSoundSystem();
    iSoundSystem(String const &systemName, String const &nameOfFactory);
    ~iSoundSystem() override; ///< expects shutdownSoundSystem() to have run

    bool load() override; ///< false here
    void unload() override;

    virtual void setListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up);
    virtual void setListenerPosition(D3DXVECTOR3 const &pos);                          ///< the back end's
    virtual void setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up); ///< the back end's
    virtual void setDefaultListener(); ///< at the origin, looking along -z, y up

    virtual eSoundPlayReturn playWork(iSoundSource *source); ///< play() without pause and fallback
    /// Starts a source whose data are in memory, as its format says. @param quiet  no line on failure
    virtual bool checkSoundfileAndPlay(iSoundSource *source, bool quiet);
    /// Tells the format from name and data. @param strip  move the data on to a WAV's samples
    virtual void checkSoundfile(iSoundSource *source, bool strip);

    /// Finds 3D voices for a source.
    /// @param voices  how many it needs
    /// @param stolen  receives the numbers of playing channels that it takes
    virtual bool checkPriority(unsigned int voices, std::vector<unsigned int> &stolen, iSoundSource *source);
    virtual unsigned int getFreeCrossfadeChannel() const; ///< place in the vector, from 1; 0 if there is none
    virtual iSoundVorbis *createVorbisStream();
    virtual iSoundVorbis *createAndPlayVorbis(iSoundSource *source);
    virtual bool openVorbis(iSoundVorbis *stream, iSoundSource *source, iSoundChannel *channel);

public:
    /// @name Destroying; with @p ms not 0 they only begin to stop, and go when they have finished
    /// @return false, with a line, if there is no such thing
    /// @{
    virtual bool destroyVorbis(iSoundVorbis const *stream, unsigned int ms);

protected:
    virtual bool destroyVorbis(iSoundSource const *source, unsigned int ms);
    virtual void destroyVorbis_work(iSoundVorbis **stream, unsigned int ms); ///< an entry of the list
    virtual iSound3DStereo *create3DStereo();
    virtual iSound3DStereo *createAndPlay3DStereo(iSoundSource *source);

public:
    virtual bool destroy3DStereo(iSound3DStereo const *sound, unsigned int ms);

protected:
    virtual bool destroy3DStereo(iSoundSource const *source, unsigned int ms);
    virtual iSound3DSubwoofer *create3DSubwoofer();
    virtual iSound3DSubwoofer *createAndPlay3DSubwoofer(iSoundSource *source);

public:
    virtual bool destroy3DSubwoofer(iSound3DSubwoofer const *sound, unsigned int ms);

protected:
    virtual bool destroy3DSubwoofer(iSoundSource const *source, unsigned int ms);
    /// @}

    /// One more on the free list; a back end overrides it to hand a channel of its own to add2D51Channel().
    virtual void create2D51Channel();
    virtual void freeSurplus2D51Channels();             ///< back to 30, if as many are free
    virtual iSoundChannel *getFreeChannel(bool want3D); ///< off its free list; null if there is none

public:
    /// Takes the parameters. A back end calls it and then makes its channels.
    /// @return isInited(): false if the resource is not loaded or the caps are not supported
    virtual bool initSoundSystem(sSoundSystemParams const &newParams);
    virtual bool shutdownSoundSystem(); ///< stops all and deletes all channels. @return isInited()
    virtual bool fastDetect();          ///< true here: a back end says whether its device is there

    virtual void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up); ///< the back end's
    virtual void setCameraListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up);
    virtual void setTargetListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up);
    virtual void setListenerMode(eListenerMode mode);
    virtual eListenerMode getListenerMode() const { return params.listenerMode; }
    virtual bool setListenerRoom(eListenerRoom room, bool); ///< nothing without reverb. @return true
    virtual eListenerRoom getListenerRoom() const { return params.listenerRoom; }
    virtual String getListenerRoomDesc() const;

    /// Plays a source; where it fails and has no data, its fallback.
    /// @return false also for a source that waits
    virtual bool play(iSoundSource *source);

    /// @param ms  length of the fade-out; 0 for at once
    virtual bool stop(iSoundSource *source, unsigned int ms);
    virtual bool stopChannel(unsigned int index, unsigned int ms); ///< false if nothing plays there

    /// Fades all sounds out, waits for it, and stops those of a group.
    /// @param group  0 for all
    /// @return whether there was anything to stop
    virtual bool stopAll(unsigned int group);

    virtual void setMasterVolume(float volume); ///< up to 1; for the device
    virtual float getMasterVolume() const { return masterVolume; }
    virtual void setGroupVolume(unsigned int group, float volume); ///< up to 1; @p group 0 to 31
    virtual float getGroupVolume(unsigned int group) const;        ///< 0 for a group that there is not
    virtual float getWetVolume() const { return params.wetVolume; }
    virtual void setWetVolume(float volume);
    virtual void updateVolume(); ///< lets all that plays work its volume out anew
    virtual void setMuteOnOff(bool mute);
    virtual bool isMuted() const { return muted; }

    /// @param id    a source's unique id; 0 for all
    /// @param wait  until the fade is over, with updates meanwhile
    /// @return whether any channel was touched
    virtual bool fadeIn(unsigned int id, float target, unsigned int ms, bool wait);
    virtual bool fadeOut(unsigned int id, float target, unsigned int ms, bool wait);
    virtual void waitForFade(unsigned int ms); ///< sleeps and updates, five seconds at the most

    virtual void update(float dt); ///< once a frame; seconds

    virtual void backendOperation1() {} ///< the back end's; called by nobody here
    virtual String const &getVersionString() const { return versionString; }

    /// @param index  of a channel, for SOUNDINFO_CHANNEL
    /// @param out    receives a line where the question has one; may be null
    virtual int getSoundInfo(eSoundInfo info, unsigned int index, String *out);
    virtual void setPause(bool pause);
    virtual bool isPaused() const { return paused; }
    virtual eSoundCaps getStereoCaps(eSoundCaps) const { return SOUNDCAPS_STEREO; }

    /// Of the clip whose source has this id. @return false if there is none
    virtual bool setSpeakerSettings(unsigned int id, bool front, bool rear, bool centerLFE);
    virtual bool updateDucking(); ///< @return whether any channel's ducking is changed
    virtual bool isDuckingRequested() const { return duckingCounter != 0; }
    virtual void backendOperation2() {} ///< the back end's; called by nobody here
    virtual bool destroySoundClip(iSoundClip *clip, unsigned int ms);
    virtual bool destroySoundClip(iSoundSource *source, unsigned int ms);

    /// Reads a file's channels into its source. @return 0 if that cannot be read
    virtual unsigned int getNumChannels_Vorbis(iSoundSource *source);
    virtual std::uint64_t getSoundDriverHandle1() const { return 0; }
    virtual std::uint64_t getSoundDriverHandle2() const { return 0; }
    virtual std::uint64_t getSoundDriverHandle3() const { return 0; }
    virtual String getCurrent3DCapsDesc();
    virtual String getCurrent51CapsDesc();
    virtual String getSoundCapsDesc(eSoundCaps caps); ///< empty for a value that there is not
    virtual bool checkForError(String const &, bool) { return false; } ///< the back end's

    bool useHardwareMixer() const { return params.useHardwareMixer; }
    bool isMultiChannel() const { return params.isMultiChannel; }
    bool canPreloadSounds() const { return params.canPreloadSounds; }
    bool isRoomReverbOn() const { return params.isRoomReverbOn; }
    unsigned int getNumSpeakers() const { return params.numSpeakers; }
    unsigned int getDriverSamplerate() const { return params.driverSamplerate; }
    bool isInited() const { return inited; }
    sSoundSystemParams getSoundSystemParams() const { return params; }
    String getLatestPlaying() const { return latestPlaying; } ///< the name of what was started last

    unsigned int getNumPlayingChannels() const;
    unsigned int getPlayingChannels(std::vector<iSoundChannel *> &out) const; ///< appends. @return how many
    unsigned int getChannelID(unsigned int id) const; ///< the channel that plays a source's id; 0 for none
    unsigned int countVoices_51() const;
    unsigned int countVoices_3D() const;
    unsigned int countVoices_2D() const;
    bool isSoundSourcePlaying(iSoundSource *source) const;
    bool isSoundSourcePaused(iSoundSource *source) const;

protected:
    friend class SoundSystemManager;

    /// The number that the next 2D/5.1 channel has to have: that of a trimmed one, where there is any; 0 when
    /// there are as many channels as can be counted.
    unsigned int getNew2D51Index() const;
    void add2D51Channel(std::unique_ptr<iSoundChannel> channel); ///< numbered so; it goes on the free list

    /// Takes a back end's clip into the list, and its channel into the table. @return the clip
    iSoundClip *addClip(std::unique_ptr<iSoundClip> clip);
    void countRequest(iSoundChannel const &channel); ///< of a clip that is opened; stopChannel() counts back

    iSoundChannel *getChannel(unsigned int index) const; ///< playing, or a free 3D one; else null
    bool isCrossfadeChannel(iSoundChannel const *channel) const;
    bool isCrossfadeChannel(unsigned int index) const;

    static constexpr unsigned int numGroups = 32;

    bool inited = false;
    bool paused = false;
    bool muted = false;
    float masterVolume = 1.0f;
    float groupVolumes[numGroups];
    std::vector<iSoundChannel *> crossfadeChannels; ///< spare 3D channels, and stolen ones that fade out
    std::uint32_t duckingCounter = 0;               ///< sounds playing that ask for ducking
    float surplusTimer = 0.0f;                      ///< seconds since 2D channels were last trimmed
    String description;                             ///< the back end's
    String versionString;                           ///< the back end's
    sSoundSystemParams params;
    std::vector<eSoundCaps> supportedCaps;     ///< the back end adds what it can do
    std::vector<iSoundChannel *> channelTable; ///< by number: what plays, else null
    std::deque<iSoundChannel *> free3DChannels;
    std::deque<iSoundChannel *> free2D51Channels;
    std::vector<iSoundClip *> clips;
    std::vector<iSoundVorbis *> vorbisStreams;
    std::vector<iSoundSource *> waitlist;
    std::vector<iSound3DStereo *> stereoSounds;
    std::vector<iSound3DSubwoofer *> subwooferSounds;
    cMutex mutex; ///< the back end's
    String latestPlaying;

private:
    bool fade(unsigned int id, float target, unsigned int ms, bool wait, bool up);
    iSoundChannel *playing(unsigned int index) const;
    iSoundChannel *channelOf(unsigned int id) const;
    bool plays(iSoundSource const &source) const;
    bool isStarting(unsigned int id) const;
    void enter(iSoundChannel *channel);
    void giveBack(iSoundChannel *channel, bool from3D);
    void stealVoices(std::vector<unsigned int> const &stolen);
    bool startWav(iSoundSource &source);
    void release(iSoundChannel &channel);
    template <class Sound, class GroupOf>
    bool destroyGroup(std::vector<Sound *> &list, unsigned int group, GroupOf groupOf);
    template <class Sound>
    void destroyFinished(std::vector<Sound *> &list, unsigned int const *onlyId = nullptr);
    void destroyFinished(unsigned int id);
    void destroyNow(iSound3DStereo *sound);
    void destroyNow(iSound3DSubwoofer *sound);
    void destroyNow(iSoundClip *clip);
    void destroyNow(iSoundVorbis *stream);
    void updateChannels(float dt);
    void serveWaitlist();
    void destroyEntry(std::vector<iSound3DStereo *>::iterator place, unsigned int ms);
    void destroyEntry(std::vector<iSound3DSubwoofer *>::iterator place, unsigned int ms);
    void destroyEntry(std::vector<iSoundClip *>::iterator place, unsigned int ms);
    void emptyChannels();

    std::vector<unsigned int> m_freeIndices; // of trimmed channels, to be used again
    std::vector<unsigned int> m_starting;    // ids whose voices are not in the table yet
};

} // namespace Qel
