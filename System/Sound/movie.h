#pragma once

#include "System/Patterns/factoryObj.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>

namespace Qel {

class iSoundSystem;

/// States of a movie that a host switches, see iMovie::setMovieState(). What they mean is the player's.
enum eMovieState : std::uint32_t {
    MOVIESTATE_1 = 1,
    MOVIESTATE_2 = 2,
    MOVIESTATE_4 = 4,
    MOVIESTATE_5 = 5,
};

// MovieManager deletes a player as an iMovie: there is no virtual destructor in its table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A movie player, which a plugin brings.
///
/// The library calls none of its operations but setMovieState(); the others are where a host and a player's
/// author meet, and do nothing unless overridden. There is no virtual destructor: close() releases what a
/// player holds, before MovieManager::destroy().
///
/// @par Ownership  Made and destroyed through MovieManager.
class QEL_API iMovie {
public:
    iMovie();
    iMovie(String const &movieName, String const &nameOfFactory);
    ~iMovie();

    virtual bool open(String const &path); ///< false here
    virtual void close();                  ///< releases what the player holds
    virtual bool play();                   ///< false here
    virtual void stop();
    virtual void setPause(bool pause);
    virtual void update(float dt); ///< seconds

    /// Switches state 1, 2, 4 or 5; others change nothing.
    /// @param value  0 for off
    virtual void setMovieState(eMovieState state, unsigned int value);

    virtual bool isFinished() const;                                       ///< true here
    virtual float getTime() const;                                         ///< seconds played; 0 here
    virtual void getSize(unsigned int &width, unsigned int &height) const; ///< 0 by 0 here
    virtual bool getFrame(void *pixels, unsigned int pitchBytes);          ///< false here

    String const &getName() const { return name; }
    String const &getFactoryName() const { return factoryName; }

    static void setSoundSystem(iSoundSystem *system) { soundSystem = system; } ///< whose channels players use
    static void setLanguageTrack(unsigned int track) { languageTrack = track; }

    static iSoundSystem *soundSystem;
    static unsigned int languageTrack;

protected:
    String name;
    String factoryName;
    bool state1 = false;
    bool state2 = true;
    bool state4 = true;
    bool state5 = true;
};

#pragma GCC diagnostic pop

/// Makes the players of one type; a plugin registers it with MovieManager::addMovieFactory().
class QEL_API MovieFactory : public FactoryObj<iMovie> {
public:
    String getType() const override = 0;
    iMovie *createInstance(String const &name) override = 0;
};

} // namespace Qel
