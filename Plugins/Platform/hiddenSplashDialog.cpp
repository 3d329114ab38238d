#include "hiddenSplashDialog.h"

bool HiddenSplashDialog::display()
{
    return false;
}

void HiddenSplashDialog::setProgress(float)
{
}
