#pragma once

#include "alDevice.h"

#include "Plugins/clipMaker.h"

#include "System/Sound/soundSystem.h"

#include <vector>

class AlChannel;

/// A sound system on OpenAL Soft. Everything runs on the thread that calls update().
class AlSound final : public Qel::iSoundSystem, public ClipMaker {
public:
    AlSound(Qel::String const &systemName, Qel::String const &type);
    ~AlSound() override; ///< as shutdownSoundSystem()

    AlDevice &device() { return m_device; }
    void add(AlChannel &channel);
    void remove(AlChannel &channel);
    using iSoundSystem::countRequest;
    Qel::iSoundClip *createClip(bool multichannel) override;

    bool initSoundSystem(Qel::sSoundSystemParams const &newParams) override;
    bool shutdownSoundSystem() override;
    bool fastDetect() override; ///< is there a device of the machine?
    void update(float dt) override;
    bool stopAll(unsigned int group) override;
    void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up) override;
    bool setListenerRoom(Qel::eListenerRoom room, bool flag) override;
    void setMasterVolume(float volume) override;
    void setWetVolume(float volume) override;

    /// Takes the device as lost and finds it again, as update() does where it really is.
    void backendOperation1() override;

    /// @return true, with a line in the log if that is asked for, if the device has refused something
    bool checkForError(Qel::String const &where, bool isTold) override;
    std::uint64_t getSoundDriverHandle1() const override; ///< the ALCdevice's address
    std::uint64_t getSoundDriverHandle2() const override; ///< the ALCcontext's address
    std::uint64_t getSoundDriverHandle3() const override; ///< the ClipMaker's address

protected:
    bool load() override { return true; }
    void setListenerPosition(D3DXVECTOR3 const &pos) override;
    void setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up) override;
    Qel::iSound3DStereo *create3DStereo() override;
    void create2D51Channel() override;

private:
    bool openDevice();
    bool makeChannels();
    void tellDevice();

    AlDevice m_device;
    std::vector<AlChannel *> m_channels;
    D3DXVECTOR3 m_position{0, 0, 0};
    D3DXVECTOR3 m_at{0, 0, -1};
    D3DXVECTOR3 m_up{0, 1, 0};
};
