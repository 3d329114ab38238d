#pragma once

#include "System/Platform/configDialog.h"

/// Config dialog without a user: the answer stands in "platform.cfg" in the working directory, under the key
/// "ConfigDialog". "start" means yes; anything else, or no file, means no.
class FileConfigDialog final : public Qel::ConfigDialog {
public:
    bool display() override;
};
