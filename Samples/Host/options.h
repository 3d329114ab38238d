#pragma once

#include "mediaJob.h"
#include "modelScreen.h"
#include "soundJob.h"

#include <optional>
#include <string>

/// What the host was asked to do.
struct Options {
    std::string pluginFile; ///< plugins.cfg of the working folder, else the one beside the program
    std::string logFile = "debug.log";
    std::string profileFile = "profile.txt";
    std::string contactSheet;   ///< where a PNG of all pictures is written; empty: nowhere
    MediaPlaces media;          ///< those beside the program unless the user has some
    ModelRequest model;         ///< to be shown in place of all else
    SoundRequest sound;         ///< the same
    std::string screenshot;     ///< PNG file of the model or the last frame; empty for none
    std::string particleFolder; ///< of its scripts
    std::string screen;         ///< which; empty for the first
    std::string usualMedia;     ///< folder of those beside the program
    bool list = false;          ///< show all console variables and end
    bool console = false;       ///< a console on the terminal while frames run
    bool hasUserMedia = false;  ///< --media or --zip was given
    bool particles = false;     ///< the particle screen in place of the usual work
    bool watch = false;         ///< read its scripts again when they are saved
    bool window = false;        ///< show the screens in a window
    bool headless = false;      ///< show one of them without a display, for its picture
    bool hasFrames = false;     ///< --frames was given
};

/// Reads the command line into the options and the settings, and answers --help and mistakes by itself.
/// @param exitCode  set when there is nothing left to do
/// @return nothing in that case
std::optional<Options> readOptions(int argc, char **argv, int &exitCode);
