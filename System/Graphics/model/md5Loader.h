#pragma once

#include "System/System/export.h"

namespace Qel {

class MD5Anim;
class MD5Mesh;

/// Reads and writes models and animations as text.
///
/// Nothing is reported: a file that cannot be opened leaves the object as it was, and one that ends early
/// leaves what was read. Groups with a number outside the list that was announced are read and dropped, and
/// no list grows beyond what the file has room for.
class QEL_API MD5Loader {
public:
    /// Reads a model, works out the bones' hierarchy and puts the vertices in the default pose. Of several
    /// meshes the last one stays. What the file does not mention stays as it is.
    void loadModel(char const *path, MD5Mesh &mesh);

    /// Reads an animation and works out its times. Keys of angles come in degrees and are stored in radians,
    /// one full turn up.
    void loadAnim(char const *path, MD5Anim &anim);

    void saveModel(char const *path, MD5Mesh &mesh); ///< written aside first, so that no half file is left

    /// Keys of angles are written in degrees with the full turn that is on them: each load and save adds one.
    void saveAnim(char const *path, MD5Anim &anim);
};

} // namespace Qel
