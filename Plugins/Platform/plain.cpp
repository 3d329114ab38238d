#include "objects.h"

#include "consoleErrorDialog.h"
#include "fedInputReader.h"
#include "fileConfigDialog.h"
#include "hiddenSplashDialog.h"

std::unique_ptr<Qel::ConfigDialog> makeConfigDialog()
{
    return std::make_unique<FileConfigDialog>();
}

std::unique_ptr<Qel::ErrorDialog> makeErrorDialog()
{
    return std::make_unique<ConsoleErrorDialog>();
}

std::unique_ptr<Qel::InputReader> makeInputReader()
{
    return std::make_unique<FedInputReader>();
}

std::unique_ptr<Qel::SplashDialog> makeSplashDialog()
{
    return std::make_unique<HiddenSplashDialog>();
}
