#include "System/math/rand.h"

namespace Qel {

constinit cMersenneTwister cRand::mt;

} // namespace Qel
