#pragma once

#include "Plugins/clipMaker.h"
#include "voiceLog.h"

#include "System/Sound/soundSystem.h"

class NullChannel;

/// A sound system without a device: all the policy, on a clock that update() alone moves.
class NullSound final : public Qel::iSoundSystem, public ClipMaker {
public:
    NullSound(Qel::String const &systemName, Qel::String const &type);

    /// Puts a record into the log, with the time.
    void note(VoiceRecord record);

    using iSoundSystem::countRequest;
    Qel::iSoundClip *createClip(bool multichannel) override;
    bool initSoundSystem(Qel::sSoundSystemParams const &newParams) override;
    bool shutdownSoundSystem() override;
    void update(float dt) override;
    bool stopAll(unsigned int group) override;
    void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up) override;
    std::uint64_t getSoundDriverHandle1() const override; ///< address of the VoiceLog
    std::uint64_t getSoundDriverHandle3() const override; ///< address of the ClipMaker

protected:
    bool load() override { return true; }
    void setListenerPosition(D3DXVECTOR3 const &pos) override { m_position = pos; }
    void setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up) override;
    bool checkPriority(unsigned int voices, std::vector<unsigned int> &stolen,
                       Qel::iSoundSource *source) override;
    void create2D51Channel() override;

private:
    double m_time = 0.0; // seconds of updates
    VoiceLog m_log;
    D3DXVECTOR3 m_position{0, 0, 0};
    D3DXVECTOR3 m_at{0, 0, -1};
    D3DXVECTOR3 m_up{0, 1, 0};
};
