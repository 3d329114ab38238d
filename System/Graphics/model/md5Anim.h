#pragma once

#include "System/Graphics/model/md5Mesh.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>
#include <vector>

namespace Qel {

/// The keys of one attribute of one bone over time.
struct MD5Channel {
    String joint;                    ///< name of the bone
    std::uint32_t attribute = MD5_X; ///< of eMD5Attribute
    float startTime = 0.0f;          ///< seconds
    float endTime = 0.0f;            ///< seconds
    float frameRate = 0.0f;          ///< frames a second; the keys are spread over the time anyway
    std::uint16_t stringCount = 0;
    std::uint16_t rangeStart = 0;
    std::uint16_t rangeEnd = 0;
    std::vector<float> keys; ///< angles in radians
    std::uint16_t bone = 0;  ///< as MD5Anim::connectBones() found it
};

/// An animation: channels that drive the bones of a mesh.
///
/// @code
/// MD5Anim walk;
/// MD5Loader().loadAnim("walk.md5anim", walk);
/// walk.connectBones(figure);
/// for (auto &bone : figure.bones) { ... } // put the positions back first: each pose adds to them
/// walk.playAnimation(figure, walk.getStartTime() + 0.4f);
/// @endcode
class QEL_API MD5Anim {
public:
    MD5Anim();
    ~MD5Anim();
    MD5Anim(MD5Anim const &);
    MD5Anim &operator=(MD5Anim const &);

    /// Finds the bone of every channel; to be called before playAnimation(), and when the mesh is another.
    void connectBones(MD5Mesh &mesh);

    /// Poses the mesh's bones for a time: their matrix, and their position, to which the parent's is added.
    /// Parents must stand before their children. The channels x, y and z reach the attributes alone.
    /// @param time  seconds, on the channels' own scale
    void playAnimation(MD5Mesh &mesh, float time);

    /// Fills the attributes of the mesh's bones for a time; those without a channel are 0.
    void buildChannels(MD5Mesh &mesh, float time);

    /// The value of a channel at a time: one of its keys, with nothing in between.
    /// @return 0 outside the channel's time, its ends included, without keys, and for a channel that is not
    ///         there
    float getKeyValue(unsigned short channel, float time) const;

    void precalc(); ///< works startTime and endTime out from the channels
    float getDuration() const { return endTime - startTime; } ///< seconds
    float getStartTime() const { return startTime; }
    float getEndTime() const { return endTime; }

    std::uint16_t version = 0;
    String commandLine;
    std::vector<MD5Channel> channels;
    float startTime = 0.0f;
    float endTime = 0.0f;
};

} // namespace Qel
