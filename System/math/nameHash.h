#pragma once

#include "System/math/kernels/kernels.h"

namespace Qel {

/// Hashes a name and measures it in one pass: CRC-32 from 0xFFFFFFFF without final inversion.
/// @param text  not null
inline NameHash hashName(char const *text)
{
    return kernels->hashName(text);
}

/// The same of the name's bytes put through a map. The length is that of the name before the map.
/// @param text  not null
/// @param map   256 bytes; fastest on a boundary of 64
inline NameHash hashName(char const *text, unsigned char const *map)
{
    return kernels->hashMappedName(text, map);
}

/// Maps, hashes and measures a name of up to shortNameRoom - 1 bytes in one pass.
/// @param text  not null
/// @param map   256 bytes; fastest on a boundary of 64
/// @param out   room for shortNameRoom bytes: the mapped name, and zeros up to the end
/// @return a length of shortNameRoom for a longer name, whose hash is not told; @p out may then hold anything
inline NameHash mapShortName(char const *text, unsigned char const *map, char *out)
{
    return kernels->mapShortName(text, map, out);
}

} // namespace Qel
