#include "System/Sound/movie.h"

namespace Qel {

iSoundSystem *iMovie::soundSystem = nullptr;
unsigned int iMovie::languageTrack = 0;

iMovie::iMovie() : iMovie("INVALID", "")
{
}

iMovie::iMovie(String const &movieName, String const &nameOfFactory)
    : name(movieName), factoryName(nameOfFactory)
{
}

iMovie::~iMovie() = default;

bool iMovie::open(String const &)
{
    return false;
}

void iMovie::close()
{
}

bool iMovie::play()
{
    return false;
}

void iMovie::stop()
{
}

void iMovie::setPause(bool)
{
}

void iMovie::update(float)
{
}

void iMovie::setMovieState(eMovieState state, unsigned int value)
{
    bool const on = value != 0;
    switch (state) {
    case MOVIESTATE_1:
        state1 = on;
        break;
    case MOVIESTATE_2:
        state2 = on;
        break;
    case MOVIESTATE_4:
        state4 = on;
        break;
    case MOVIESTATE_5:
        state5 = on;
        break;
    default:
        break;
    }
}

bool iMovie::isFinished() const
{
    return true;
}

float iMovie::getTime() const
{
    return 0.0f;
}

void iMovie::getSize(unsigned int &width, unsigned int &height) const
{
    width = height = 0;
}

bool iMovie::getFrame(void *, unsigned int)
{
    return false;
}

} // namespace Qel
