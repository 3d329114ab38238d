#include "fileConfigDialog.h"

#include "startSettings.h"

bool FileConfigDialog::display()
{
    StartSettings settings;
    settings.load();
    return settings.start;
}
