#include "System/Platform/splashDialog.h"

namespace Qel {

SplashDialog::~SplashDialog() = default;

bool SplashDialog::display()
{
    return false;
}

void SplashDialog::setProgress(float)
{
}

} // namespace Qel
