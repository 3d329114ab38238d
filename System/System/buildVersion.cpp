#include "System/System/buildVersion.h"

#include "System/System/buildNumber.h"

namespace Qel {

BuildVersion::BuildVersion(unsigned char majorNumber, unsigned char minorNumber, unsigned char releaseNumber,
                           char const *date)
{
    set(majorNumber, minorNumber, releaseNumber, date);
}

void BuildVersion::set(unsigned char majorNumber, unsigned char minorNumber, unsigned char releaseNumber,
                       char const *date)
{
    major = majorNumber;
    minor = minorNumber;
    release = releaseNumber;
    build = static_cast<std::uint16_t>(date != nullptr ? BuildNumber::computeBuildNumber(date)
                                                       : BuildNumber::getBuildNumber());
}

} // namespace Qel
