#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Mesh.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

namespace Qel {
namespace {

constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

TEST(MD5Anim, FindsTheKeyOfATime)
{
    // The keys are 1, 2, 3 and so on, so that a key tells its place.
    struct {
        float start, end;
        std::size_t keys;
        float time, value;
    } const rows[] = {
        {0, 2, 10, 0, 0},           // the start is outside
        {0, 2, 10, 2, 0},           // the end as well
        {0, 2, 10, nan, 0},         //
        {0, 2, 10, 0.05f, 1},       // (0.5 - 1) / 2 = -0.25
        {0, 2, 10, 0.29f, 1},       // 0.95: cut, not rounded
        {0, 2, 10, 0.31f, 2},       // 1.05
        {0, 2, 10, 1, 5},           // 4.5
        {0, 2, 10, 1.99f, 10},      // 9.45
        {2, 4, 10, 3, 5},           // the start comes off
        {0, 0.5f, 10, 0.01f, 1},    // -1.8: stays inside
        {0, 0.5f, 10, 0.49f, 8},    // 7.8
        {1, 1.1f, 3, 1.09f, 1},     // -7.3
        {0, 100, 4, 99.9f, 4},      // 3.986
        {0, 2, 1, 0.01f, 1},        // one key
        {0, 2, 0, 1, 0},            // none
        {1, 1, 10, 1, 0},           // no time at all
        {2, 1, 10, 1.5f, 0},        // backwards
        {nan, 2, 10, 1, 0},         //
        {0, infinite, 9, 1e30f, 1}, // 9e30 / infinite
        {-infinite, 1, 9, 0, 1},    // infinite / infinite
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.start << " to " << row.end << " at " << row.time);
        MD5Anim anim;
        anim.channels.resize(1);
        anim.channels[0].startTime = row.start;
        anim.channels[0].endTime = row.end;
        anim.channels[0].keys.resize(row.keys);
        std::iota(anim.channels[0].keys.begin(), anim.channels[0].keys.end(), 1.0f);
        EXPECT_EQ(anim.getKeyValue(0, row.time), row.value);
        EXPECT_EQ(anim.getKeyValue(1, row.time), 0) << "there is no such channel";

        MD5Mesh mesh;
        mesh.bones.resize(1);
        mesh.bones[0].attributes[MD5_ROLL] = 9;
        anim.channels[0].attribute = MD5_Z;
        anim.buildChannels(mesh, row.time);
        EXPECT_EQ(mesh.bones[0].attributes[MD5_Z], row.value);
        EXPECT_EQ(mesh.bones[0].attributes[MD5_ROLL], 0);
    }
}

// The products of the given rotations, one after the other, to the bit: signs of zeros included.
TEST(MD5Anim, PosesAreTheProductsOfTheGivenRotations)
{
    float const angles[] = {0, 0.7f, -0.0f, 7.853982f, -2.5f, 6.2831855f, 1e6f, infinite, nan};
    auto const bitsOf = [](D3DXMATRIX const &matrix) {
        std::array<std::uint32_t, 16> bits;
        for (int i = 0; i < 16; ++i) {
            float const x = matrix.m[i / 4][i % 4];
            bits[static_cast<std::size_t>(i)] = std::bit_cast<std::uint32_t>(std::isnan(x) ? nan : x);
        }
        return bits;
    };
    D3DXMATRIX upright;
    D3DXMatrixRotationX(&upright, -1.5707964f);
    for (float const yaw : angles) {
        for (float const pitch : angles) {
            for (float const roll : angles) {
                SCOPED_TRACE(testing::Message() << yaw << " " << pitch << " " << roll);
                MD5Mesh mesh;
                mesh.bones.resize(3);
                mesh.bones[0].parentIndex = 3;
                mesh.bones[2].parentIndex = 1;
                MD5Anim anim;
                for (std::uint32_t i = 0; i < 9; ++i) {
                    MD5Channel &channel = anim.channels.emplace_back();
                    channel.bone = static_cast<std::uint16_t>(i / 3);
                    channel.attribute = MD5_YAW + i % 3;
                    channel.endTime = 1;
                    channel.keys = {i % 3 == 0 ? yaw : i % 3 == 1 ? pitch : roll};
                }
                anim.playAnimation(mesh, 0.5f);

                D3DXMATRIX z, y, x;
                D3DXMatrixRotationZ(&z, yaw);
                D3DXMatrixRotationY(&y, pitch);
                D3DXMatrixRotationX(&x, roll);
                D3DXMATRIX const turn = z * y * x;
                D3DXMATRIX root = turn * upright;
                root._33 = -root._33;
                EXPECT_EQ(bitsOf(mesh.bones[0].matrix), bitsOf(root));
                EXPECT_EQ(bitsOf(mesh.bones[1].matrix), bitsOf(root * turn));
                EXPECT_EQ(bitsOf(mesh.bones[2].matrix), bitsOf(root * turn * turn));
            }
        }
    }
}

TEST(MD5Anim, TimesAreTheOutermostOfTheChannels)
{
    struct {
        std::vector<std::pair<float, float>> channels;
        float start, end;
    } const rows[] = {
        {{}, 0, 0},
        {{{2, 5}, {1, 3}, {4, 9}}, 1, 9},
        {{{-2, -1}}, -2, 0},                // the end starts from 0
        {{{20000, 30000}}, 9999.9f, 30000}, // the start from 9999.9
        {{{nan, nan}, {1, 2}}, 1, 2},
    };
    for (auto const &row : rows) {
        MD5Anim anim;
        anim.startTime = anim.endTime = 7;
        for (auto const &[start, end] : row.channels) {
            anim.channels.emplace_back().startTime = start;
            anim.channels.back().endTime = end;
        }
        anim.precalc();
        EXPECT_EQ(anim.getStartTime(), row.start);
        EXPECT_EQ(anim.getEndTime(), row.end);
        EXPECT_EQ(anim.getDuration(), row.end - row.start);
    }
}

// What no loader makes, but a host may.
TEST(MD5Anim, TakesAnyIndices)
{
    MD5Mesh mesh;
    mesh.bones.resize(70000); // more than indices can tell
    EXPECT_EQ(mesh.getBoneCount(), 65535);
    EXPECT_FALSE(mesh.isValidBoneIndex(65535));
    mesh.bones[65534].name = "last";
    mesh.bones[65535].name = "beyond";
    EXPECT_EQ(mesh.getBoneIndex("beyond"), 65535);
    MD5Anim anim;
    anim.channels.resize(3);
    anim.channels[0].joint = "last";
    anim.channels[1].joint = "beyond";
    anim.connectBones(mesh);
    EXPECT_EQ(anim.channels[0].bone, 65534);
    EXPECT_EQ(anim.channels[1].bone, 65535);
    mesh.bones.resize(3);
    mesh.bones[0].parentIndex = 2; // behind it
    mesh.bones[1].parentIndex = 1; // itself
    mesh.bones[2].parentIndex = 3;
    for (MD5Channel &channel : anim.channels) {
        channel.keys = {1};
        channel.endTime = 2;
    }
    anim.channels[2].bone = 1;
    anim.channels[2].attribute = 6;
    mesh.bones[0].position = mesh.bones[1].position = mesh.bones[2].position = {1, 2, 3};
    anim.playAnimation(mesh, 1);
    EXPECT_EQ(mesh.bones[0].position, D3DXVECTOR3(2, 4, 6));
    EXPECT_EQ(mesh.bones[1].position, D3DXVECTOR3(2, 4, 6));
    EXPECT_EQ(mesh.bones[2].position, D3DXVECTOR3(1, 2, 3));
}

} // namespace
} // namespace Qel
