#include "System/System/export.h"

extern "C" {
QEL_API void createPlatformConfigDialog()
{
}
QEL_API void createPlatformErrorDialog()
{
}
QEL_API void createPlatformInputReader()
{
}
QEL_API void createPlatformSplashDialog()
{
}
QEL_API void destroyPlatformConfigDialog()
{
}
QEL_API void destroyPlatformErrorDialog()
{
}
QEL_API void destroyPlatformInputReader()
{
}
}
