#include "System/Sound/soundChannel.h"

#include "System/Sound/soundSystem.h"
#include "System/System/Root.h"
#include "System/System/logManager.h"
#include "System/Time/timer.h"
#include "System/math/rand.h"

#include <algorithm>
#include <cmath>

namespace Qel {

namespace {

constexpr float duckedLevel = 0.6f;
constexpr float duckingStep = 0.02f;
constexpr unsigned int pauseFadeMs = 400;

// Milliseconds of Root's timer; 0 where there is none, as in tools.
std::uint32_t frameTimeMs()
{
    Root *const root = Root::InstancePtr();
    Timer *const timer = root == nullptr ? nullptr : root->getTimer();
    return timer == nullptr ? 0
                            : static_cast<std::uint32_t>(timer->getDurationInProgress().getMilliseconds());
}

float fadeSpeedFor(float change, unsigned int ms)
{
    return ms == 0 ? -1.0f : change * 1000 / static_cast<float>(ms);
}

} // namespace

iSoundChannel::~iSoundChannel() = default;

bool iSoundChannel::init(iSoundSource *newSource)
{
    constexpr float audible = 0.01f;
    stop(0);
    resetStatus();
    if (newSource == nullptr) {
        return isChannelInited();
    }
    source = newSource;
    priority = source->getBasePriority();
    duckingRequest = source->hasDuckingRequested();
    channel3D = !source->is2DForced() && source->getNumChannels() == 1;
    bool const isDuckedByOthers = system != nullptr && system->isDuckingRequested() && !duckingRequest;
    duckingTarget = duckingLevel = source->isLocalDuckingOn() || isDuckedByOthers ? duckedLevel : 1.0f;
    inited = true;
    setParams();
    source->resetVolChanged();
    source->resetParamChanged();
    resetStatus();
    inited = actualVolume > audible || source->playOnPause();
    return isChannelInited();
}

bool iSoundChannel::init_play(iSoundSource *newSource, unsigned int fadeInMs)
{
    return init(newSource) && play(fadeInMs);
}

bool iSoundChannel::play(unsigned int fadeInMs)
{
    if (!isChannelInited()) {
        stop(0);
        return false;
    }
    startTime = frameTimeMs();
    if (source->is51Sound() || source->isSingleSpeaker()) {
        typeText = source->isLFEOnly() ? "LFE" : source->isSingleSpeaker() ? "SS" : "5.1";
    } else {
        typeText = channel3D ? "3D" : "2D";
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("iSoundChannel::play() %s channel %d (#%d '%s').\n", typeText.c_str(),
                                    static_cast<int>(index), static_cast<int>(source->getUniqueID()),
                                    source->getResourceName().c_str());
    }
    if (fadeInMs != 0) {
        setActualVolume(0.0f);
        fadeUp(1.0f, fadeInMs);
    } else {
        setActualVolume(1.0f);
    }
    if (system != nullptr && system->isPaused()) {
        setPause(true, false);
    }
    return true;
}

void iSoundChannel::stop(unsigned int)
{
    setstopAfterFade();
}

unsigned int iSoundChannel::update(float)
{
    if (!isChannelInited()) {
        return 0;
    }
    if (source->isParamChanged()) {
        setParams();
        source->resetParamChanged();
    } else if (source->isVolChanged()) {
        // The mark stays while the ducking still moves, so that it goes on by a step in each update.
        if (isDuckingComplete()) {
            source->resetVolChanged();
            if (!isDucked()) {
                source->resetDuckingLowPass();
            }
        }
        updateVolume();
    }
    if (!source->isStream()) {
        source->setCurrentTimeMS(frameTimeMs() - startTime);
    }
    return 0;
}

bool iSoundChannel::setParams()
{
    constexpr unsigned int mostPercent = 50;
    constexpr float share = 0.00001f;
    if (!isChannelInited()) {
        return false;
    }
    updateVolume();
    unsigned int const percent = std::min(unsigned{source->getPitchVariation()}, mostPercent);
    if (percent == 0) {
        return true;
    }
    auto const amount = static_cast<float>(cRand::random(1, static_cast<int>(percent) * 1000));
    bool const isLower = cRand::random(1, 1000) > 500;
    source->setPitchFactor(isLower ? 1.0f - amount * share : 1.0f + amount * share);
    return true;
}

bool iSoundChannel::updateVolume()
{
    constexpr float widestBand = 22000.0f; // Hz
    if (!isChannelInited()) {
        return false;
    }
    if (std::fabs(duckingTarget - duckingLevel) <= duckingStep) {
        duckingLevel = duckingTarget;
    } else if (duckingTarget > duckingLevel) {
        duckingLevel = std::min(duckingLevel + duckingStep, 1.0f);
    } else {
        duckingLevel = std::clamp(duckingLevel - duckingStep, 0.0f, 1.0f);
    }
    float const group = system == nullptr ? 1.0f : system->getGroupVolume(source->getSoundGroup());
    sSoundParams const &params = source->getSoundParams();
    float volume = group * duckingLevel;
    if (params.isFalloffOverride()) {
        volume *= params.falloff;
    }
    actualVolume = volume * params.volume2 * params.volume1;

    auto const duckedLowPass = [this](float factor) {
        float const pass = (duckingLevel + 0.4f - 0.6f) * factor;
        return pass > 0.0f ? std::min(pass, 1.0f) : 0.0f; // a factor that is no number lets nothing pass
    };
    lowPass = 1.0f;
    if (params.useLowPassFiltering()) {
        lowPass =
            std::min(widestBand / static_cast<float>(std::max<unsigned int>(params.sampleRate, 1)), 1.0f);
        if (params.isFalloffOverride()) {
            lowPass = duckedLowPass(params.falloff);
        }
    } else if (params.isDuckingLowPassOn()) {
        lowPass = duckedLowPass(duckingLevel);
    }
    return true;
}

void iSoundChannel::setPause(bool pause, bool fade)
{
    if (!isChannelInited()) {
        return;
    }
    if (pause && !isPaused()) {
        if (fade) {
            fadeDown(0.0f, pauseFadeMs);
            status &= ~(PLAYING | FINISHED);
        } else {
            status &= ~(PLAYING | FINISHED | FADING_UP | FADING_DOWN);
        }
        status |= PAUSED;
    } else if (!pause && fade && isPaused()) {
        fadeUp(1.0f, pauseFadeMs);
    }
}

void iSoundChannel::fadeUp(float target, unsigned int ms)
{
    if (isChannelInited()) {
        status = (status & ~static_cast<std::uint32_t>(FADING_DOWN)) | FADING_UP;
        fadeTarget = target;
        fadeSpeed = fadeSpeedFor(target, ms);
    }
}

void iSoundChannel::fadeDown(float target, unsigned int ms)
{
    if (isChannelInited()) {
        status = (status & ~static_cast<std::uint32_t>(FADING_UP)) | FADING_DOWN;
        fadeTarget = target;
        fadeSpeed = fadeSpeedFor(1.0f - target, ms);
    }
}

bool iSoundChannel::moveFade(float dt, float &volume)
{
    if (!isFadingUp() && !isFadingDown()) {
        return false;
    }
    bool const isDown = isFadingDown();
    float const step = fadeSpeed < 0 ? 1.0f : fadeSpeed * dt;
    volume = isDown ? std::max(volume - step, fadeTarget) : std::min(volume + step, fadeTarget);
    if (volume != fadeTarget) {
        return false;
    }
    resetFade();
    return isDown && stopAfterFade();
}

void iSoundChannel::setActualVolume(float)
{
}

bool iSoundChannel::setPosition(D3DXVECTOR3 const &position)
{
    if (!isChannelInited()) {
        return false;
    }
    source->setPosition(position);
    return true;
}

bool iSoundChannel::getPosition(D3DXVECTOR3 &position)
{
    if (!isChannelInited()) {
        return false;
    }
    position = source->getPosition();
    return true;
}

bool iSoundChannel::fillBuffer(unsigned int, unsigned char const *, unsigned int)
{
    return true;
}

void const *iSoundChannel::getChannelHandle() const
{
    return nullptr;
}

void iSoundChannel::setPlaying()
{
    status = (status & ~static_cast<std::uint32_t>(PAUSED | FINISHED)) | PLAYING | PLAYED;
}

void iSoundChannel::endPause()
{
    setPlaying();
    if (stopAfterFade()) {
        fadeDown(0.0f, pauseFadeMs);
    }
}

void iSoundChannel::setFinished()
{
    status = (status & ~static_cast<std::uint32_t>(PLAYING | PAUSED | FADING_UP | FADING_DOWN)) | FINISHED;
}

void iSoundChannel::increasePriority()
{
    if (priority > PRIORITY_MOST_URGENT) {
        priority = static_cast<ePriority>(priority - 1);
    }
}

void iSoundChannel::decreasePriority()
{
    if (priority < PRIORITY_LEAST_URGENT) {
        priority = static_cast<ePriority>(priority + 1);
    }
}

void iSoundChannel::setDucking()
{
    duckingTarget = duckedLevel;
    setVolChanged();
}

void iSoundChannel::resetDucking()
{
    duckingTarget = 1.0f;
    setVolChanged();
}

bool iSoundChannel::isDucked() const
{
    constexpr float difference = 0.001f;
    return std::fabs(duckingTarget - 1.0f) >= difference;
}

sSoundParams const &iSoundChannel::getSoundParams() const
{
    static sSoundParams const defaults;
    return isChannelInited() ? source->getSoundParams() : defaults;
}

String const &iSoundChannel::getResourceName() const
{
    static String const none;
    return isChannelInited() ? source->getResourceName() : none;
}

void iSoundChannel::setVolume1(float volume)
{
    if (isChannelInited()) {
        source->setVolume1(volume);
    }
}

float iSoundChannel::getVolume1() const
{
    return isChannelInited() ? source->getVolume1() : 0.0f;
}

void iSoundChannel::setVolume2(float volume)
{
    if (isChannelInited()) {
        source->setVolume2(volume);
    }
}

float iSoundChannel::getVolume2() const
{
    return isChannelInited() ? source->getVolume2() : 0.0f;
}

void iSoundChannel::setNumChannels(unsigned char count)
{
    if (isChannelInited()) {
        source->setNumChannels(count);
    }
}

unsigned char iSoundChannel::getNumChannels() const
{
    return isChannelInited() ? source->getNumChannels() : std::uint8_t{0};
}

void iSoundChannel::setSamplerate(unsigned short hz)
{
    if (isChannelInited()) {
        source->setSamplerate(hz);
    }
}

unsigned int iSoundChannel::getUniqueID() const
{
    return isChannelInited() ? source->getUniqueID() : 0;
}

unsigned char iSoundChannel::getSoundGroup() const
{
    return isChannelInited() ? source->getSoundGroup() : std::uint8_t{0};
}

void iSoundChannel::setVolChanged()
{
    if (isChannelInited()) {
        source->setVolChanged();
    }
}

} // namespace Qel
