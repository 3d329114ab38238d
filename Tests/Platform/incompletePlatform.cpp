#include "System/System/export.h"

#define EMPTY_EXPORT(name)                                                                                   \
    extern "C" QEL_API void name()                                                                           \
    {                                                                                                        \
    }

EMPTY_EXPORT(createPlatformConfigDialog)
EMPTY_EXPORT(createPlatformErrorDialog)
EMPTY_EXPORT(createPlatformInputReader)
EMPTY_EXPORT(createPlatformSplashDialog)
EMPTY_EXPORT(destroyPlatformConfigDialog)
EMPTY_EXPORT(destroyPlatformErrorDialog)
EMPTY_EXPORT(destroyPlatformInputReader)
