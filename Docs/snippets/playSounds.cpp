#include "System/Sound/soundSource.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundSystemManager.h"
#include "System/System/Root.h"

#include <vector>

using namespace Qel;

// With the back end's plugin in plugins.cfg, and the bytes of three files from wherever they come.
void playThree(std::vector<unsigned char> &shotFile, std::vector<unsigned char> &musicFile,
               std::vector<unsigned char> &speechFile)
{
    iSoundSystem *const sound = SoundSystemManager::Instance().load("main", "NULL", PRIORITY_MOST_URGENT);
    sSoundSystemParams params;
    params.soundCaps = SOUNDCAPS_STEREO;
    if (sound == nullptr || !sound->initSoundSystem(params)) {
        return; // the log says why
    }

    // One channel and a place: it is heard in 3D, full within 5 and not at all beyond 25 units.
    iSoundSource shot;
    shot.setUniqueID(1); // of its own: a source whose id plays already is refused
    shot.setResourceName("shot.wav");
    shot.setData(shotFile.data(), static_cast<unsigned int>(shotFile.size()));
    shot.setPosition({3, 0, 1});
    shot.setPitchVariation(10);
    sound->play(&shot);

    // An Ogg file is decoded while it plays. Urgent sounds are robbed of their voices last.
    iSoundSource music;
    music.setUniqueID(2);
    music.setResourceName("music.ogg");
    music.setData(musicFile.data(), static_cast<unsigned int>(musicFile.size()));
    music.getSoundParams().basePriority = PRIORITY_MOST_URGENT;
    music.getSoundParams().loopCount = 0; // for ever
    music.getSoundParams().soundGroup = 1;
    music.force2D();
    sound->play(&music);

    // While it is heard, the others are at 0.6 of their volume.
    iSoundSource speech;
    speech.setUniqueID(3);
    speech.setResourceName("speech.wav");
    speech.setData(speechFile.data(), static_cast<unsigned int>(speechFile.size()));
    speech.getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
    speech.setPriorityWait(); // rather late than never
    sound->play(&speech);

    for (int frame = 0; frame < 600; ++frame) {
        shot.setPosition({3.0f - 0.01f * static_cast<float>(frame), 0, 1});
        shot.setParamChanged(); // moves, volumes and pitch are handed on in the next update
        sound->setTargetListener({0, 0, 0}, {0, 0, 1}, {0, 1, 0});
        sound->update(1.0f / 60);
    }

    sound->setGroupVolume(1, 0.5f);
    sound->stop(&music, 2000);    // fades out; the source has to live until it has stopped
    sound->shutdownSoundSystem(); // stops all at the latest
}

int main()
{
    std::vector<unsigned char> shot;
    std::vector<unsigned char> music;
    std::vector<unsigned char> speech;
    Root root;
    playThree(shot, music, speech);
}
