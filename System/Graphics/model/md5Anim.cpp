#include "System/Graphics/model/md5Anim.h"

#include "System/Graphics/model/boneNames.h"

#include <algorithm>
#include <cmath>

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

// The rotations about Z, Y and X, one after the other, without the products with 0 and 1. A zero may have
// another sign than theirs; in the product that follows it is lost.
void turnOf(D3DXMATRIX &turn, float yaw, float pitch, float roll)
{
    float const sz = std::sin(yaw);
    float const cz = std::cos(yaw);
    float const sy = std::sin(pitch);
    float const cy = std::cos(pitch);
    float const sx = std::sin(roll);
    float const cx = std::cos(roll);
    if (std::isnan(sz + sy + sx)) { // an angle that is none spoils more of the products
        D3DXMATRIX next;
        D3DXMatrixMultiply(&turn, D3DXMatrixRotationZ(&turn, yaw), D3DXMatrixRotationY(&next, pitch));
        D3DXMatrixMultiply(&turn, &turn, D3DXMatrixRotationX(&next, roll));
        return;
    }
    float const x[] = {cz * cy, -(sz * cy), sy};
    float const y[] = {sz, cz, 0};
    float const z[] = {-(cz * sy), sz * sy, cy};
    for (int row = 0; row < 3; ++row) {
        turn.m[row][0] = x[row];
        turn.m[row][1] = y[row] * cx - z[row] * sx;
        turn.m[row][2] = y[row] * sx + z[row] * cx;
        turn.m[row][3] = turn.m[3][row] = 0;
    }
    turn._44 = 1;
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
        turnOf(turn, bone.attributes[MD5_YAW], bone.attributes[MD5_PITCH], bone.attributes[MD5_ROLL]);
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
