#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

namespace Qel {

/// "JPG": a name without a codec, so that code that goes through the formats finds it. Neither reads nor
/// writes.
class QEL_API cIO_jpg : public iImageIO {
public:
    bool load(cFile &file, cImage &image, unsigned int flags) override; ///< @return false, always
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @return false, always
    char const *get_type() const override;
};

} // namespace Qel
