#include "soundTable.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"

std::vector<VoiceRow> playingVoices(Qel::iSoundSystem const &system)
{
    std::vector<Qel::iSoundChannel *> channels;
    system.getPlayingChannels(channels);
    std::vector<VoiceRow> rows;
    rows.reserve(channels.size());
    for (Qel::iSoundChannel const *const channel : channels) {
        char const *const state = channel->isPaused()       ? "paused"
                                  : channel->isFadingUp()   ? "fades in"
                                  : channel->isFadingDown() ? "fades out"
                                                            : "";
        rows.push_back({channel->getIndex(), channel->getTypeDesc().c_str(),
                        channel->getResourceName().c_str(), channel->getActualVolume(),
                        channel->getActualDuckingVolume(), state});
    }
    return rows;
}
