#include "System/Graphics/model/md5Anim.h"

#include "System/Graphics/model/boneNames.h"

#include <algorithm>

namespace Qel {

namespace {

float keyAt(MD5Channel const &channel, float time)
{
    if (!(time > channel.startTime) || !(time < channel.endTime) || channel.keys.empty()) {
        return 0;
    }
    auto const count = static_cast<float>(channel.keys.size());
    // One comes off ahead of the division, so that the index lags behind the time a little.
    float const index = ((time - channel.startTime) * count - 1) / (channel.endTime - channel.startTime);
    if (!(index > 0)) {
        return channel.keys.front();
    }
    return index < count ? channel.keys[std::min(static_cast<std::size_t>(index), channel.keys.size() - 1)]
                         : channel.keys.back();
}

} // namespace

MD5Anim::MD5Anim() = default;
MD5Anim::~MD5Anim() = default;
MD5Anim::MD5Anim(MD5Anim const &) = default;
MD5Anim &MD5Anim::operator=(MD5Anim const &) = default;

void MD5Anim::connectBones(MD5Mesh &mesh)
{
    BoneNames const names(mesh);
    for (MD5Channel &channel : channels) {
        channel.bone = names.find(channel.joint);
    }
}

void MD5Anim::playAnimation(MD5Mesh &mesh, float time)
{
    constexpr float quarterTurn = 1.5707964f;
    D3DXMATRIX upright;
    D3DXMatrixRotationX(&upright, -quarterTurn);
    buildChannels(mesh, time);
    for (MD5Bone &bone : mesh.bones) {
        D3DXMATRIX turn;
        D3DXMATRIX next;
        D3DXMatrixRotationZ(&turn, bone.attributes[MD5_YAW]);
        D3DXMatrixRotationY(&next, bone.attributes[MD5_PITCH]);
        D3DXMatrixMultiply(&turn, &turn, &next);
        D3DXMatrixRotationX(&next, bone.attributes[MD5_ROLL]);
        D3DXMatrixMultiply(&turn, &turn, &next);
        if (mesh.isValidBoneIndex(bone.parentIndex)) {
            MD5Bone const &parent = mesh.bones[bone.parentIndex];
            D3DXMatrixMultiply(&bone.matrix, &parent.matrix, &turn);
            bone.position += parent.position;
        } else {
            D3DXMatrixMultiply(&bone.matrix, &turn, &upright);
            bone.matrix._33 = -bone.matrix._33;
        }
    }
}

void MD5Anim::buildChannels(MD5Mesh &mesh, float time)
{
    mesh.resetAttrib();
    for (MD5Channel const &channel : channels) {
        if (mesh.isValidBoneIndex(channel.bone) && channel.attribute < MD5_ATTRIBUTES) {
            mesh.bones[channel.bone].attributes[channel.attribute] = keyAt(channel, time);
        }
    }
}

float MD5Anim::getKeyValue(unsigned short channel, float time) const
{
    return channel < channels.size() ? keyAt(channels[channel], time) : 0;
}

void MD5Anim::precalc()
{
    startTime = channels.empty() ? 0 : 9999.9f;
    endTime = 0;
    for (MD5Channel const &channel : channels) {
        startTime = std::min(startTime, channel.startTime);
        endTime = std::max(endTime, channel.endTime);
    }
}

} // namespace Qel
