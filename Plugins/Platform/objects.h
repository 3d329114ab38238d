#pragma once

#include "System/Platform/configDialog.h"
#include "System/Platform/errorDialog.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/splashDialog.h"

#include <memory>

// What the plugin hands out: desktop.cpp makes it of SDL, plain.cpp of nothing but the standard streams and
// files. One of the two is part of the plugin.

std::unique_ptr<Qel::ConfigDialog> makeConfigDialog();
std::unique_ptr<Qel::ErrorDialog> makeErrorDialog();
std::unique_ptr<Qel::InputReader> makeInputReader();
std::unique_ptr<Qel::SplashDialog> makeSplashDialog();
