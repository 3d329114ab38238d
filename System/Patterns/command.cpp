#include "System/Patterns/command.h"

namespace Qel {

cCommand::~cCommand() = default;

} // namespace Qel
