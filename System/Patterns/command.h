#pragma once

#include "System/System/export.h"

namespace Qel {

/// Something that can be done later: an object with one operation.
class QEL_API cCommand {
public:
    virtual ~cCommand();

    virtual void execute() = 0;
};

} // namespace Qel
