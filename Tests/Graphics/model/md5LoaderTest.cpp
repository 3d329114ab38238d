#include "System/Graphics/model/md5Loader.h"
#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Mesh.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <sstream>

namespace Qel {
namespace {

MD5Mesh modelOf(std::string const &text)
{
    std::filesystem::remove("model"); // a file made anew waits for no disk
    test::writeFile("model", text);
    MD5Mesh mesh;
    MD5Loader().loadModel("model", mesh);
    return mesh;
}

MD5Anim animOf(std::string const &text)
{
    test::writeFile("animation", text);
    MD5Anim anim;
    MD5Loader().loadAnim("animation", anim);
    return anim;
}

// As printf writes it: by hand.
char const savedModel[] =
    "MD5Version 10\ncommandline \"make -all\"\nnumbones 2\n"
    "bone 0 {\n    name \"hip\"\n    bindpos 0.100000 -2.500000 -0.000000\n"
    "    bindmat 1.000000 0.000000 0.333333 0.000000 1.000000 0.000000 0.000000 0.000000 "
    "16777216.000000\n}\n\n"
    "bone 1 {\n    name \"knee\"\n    bindpos 340282346638528859811704183484516925440.000000 0.000001 "
    "0.000000\n"
    "    bindmat 0.000000 1.000000 2.000000 3.000000 4.000000 5.000000 6.000000 7.000000 8.000000\n"
    "    parent \"hip\"\n}\n\n"
    "nummeshes 1\nmesh 0 { \n  shader \"cloth/red 1\"\n"
    "\n  numverts 2\n    verts 0 0.250000 0.750000 0 2\n    verts 1 0.500000 -0.500000 1 1\n"
    "\n  numtris 2\n    tri 0  0 1 65535\n    tri 1  2 3 4\n"
    "\n  numweights 2\n    weight 0 0 0.250000 1.000000 2.000000 3.000000\n"
    "    weight 1 1 0.750000 -4.000000 5.000000 6.000000\n}\n";

MD5Mesh smallModel()
{
    MD5Mesh mesh;
    mesh.version = 10;
    mesh.commandLine = "make -all";
    mesh.shader = "cloth/red 1";
    mesh.bones.resize(2);
    mesh.bones[0].name = "hip";
    mesh.bones[0].position = {0.1f, -2.5f, -0.0f};
    mesh.bones[0].matrix._13 = 1 / 3.0f;
    mesh.bones[0].matrix._33 = 16777216;
    mesh.bones[1].name = "knee";
    mesh.bones[1].parent = "hip";
    mesh.bones[1].position = {std::numeric_limits<float>::max(), 9.5e-7f, 4e-7f};
    for (int i = 0; i < 9; ++i) {
        mesh.bones[1].matrix.m[i / 3][i % 3] = static_cast<float>(i);
    }
    mesh.vertices = {{0.25f, 0.75f, 0, 2, {9, 9, 9}}, {0.5f, -0.5f, 1, 1, {9, 9, 9}}};
    mesh.triangles = {{7, 0, 1, 65535}, {7, 2, 3, 4}}; // the numbers are those of the list
    mesh.weights = {{7, 0, 0.25f, {1, 2, 3}}, {7, 1, 0.75f, {-4, 5, 6}}};
    return mesh;
}

TEST(MD5Loader, WritesModelsToTheByteAndReadsThemBack)
{
    test::TempFolder const folder;
    MD5Mesh mesh = smallModel();
    MD5Loader().saveModel("model", mesh);
    EXPECT_EQ(test::readFile("model"), savedModel);

    MD5Mesh read = modelOf(savedModel);
    EXPECT_EQ(read.bones[0].parentIndex, 2);
    EXPECT_EQ(read.bones[1].parentIndex, 0);
    EXPECT_EQ(read.bones[1].matrix, mesh.bones[1].matrix);
    EXPECT_EQ(read.bones[1].matrix._44, 1) << "what the file does not give is the identity's";
    EXPECT_EQ(read.triangles[1].index, 1);
    EXPECT_EQ(read.weights[1].offset, D3DXVECTOR3(-4, 5, 6));
    MD5Loader().saveModel("again", read);
    EXPECT_EQ(test::readFile("again"), savedModel);
    MD5Loader().saveModel("", read);
    MD5Loader().saveModel("no/such/folder", read);
    MD5Loader().saveModel(nullptr, read);
}

TEST(MD5Loader, WritesAnimationsToTheByteAndAddsATurnEachTime)
{
    test::TempFolder const folder;
    MD5Anim anim;
    anim.version = 65535;
    anim.commandLine = "x";
    anim.channels.resize(3);
    MD5Channel &yaw = anim.channels[0];
    yaw.joint = "hip";
    yaw.attribute = MD5_YAW;
    yaw.startTime = 0.5f;
    yaw.endTime = 2;
    yaw.frameRate = 29.97f;
    yaw.stringCount = 3;
    yaw.rangeStart = 1;
    yaw.rangeEnd = 60000;
    yaw.keys = {7.853982f, 0, -1.5707964f, 1, 2, 3, 4, 5, 6.2831855f};
    anim.channels[1].attribute = MD5_Y;
    anim.channels[1].keys = {0.00005f, -123456.78f, 0.1f, 1e9f, 5, 6, 7, 8};
    anim.channels[2].attribute = 6;
    std::string const expected =
        "MD5Version 65535\ncommandline \"x\"\n\nnumchannels 3\n\n"
        "channel 0 {\n        joint \"hip\"\n        attribute \"yaw\"\n        starttime 0.500000\n"
        "        endtime 2.000000\n        framerate 29.969999\n\n        strings 0\n\n"
        "        range 1 60000\n        keys 9\n"
        "                 450.0000 0.0000 -90.0000 57.2958 114.5916 171.8873 229.1831 286.4789 \n"
        "                 360.0000 \n}\n\n"
        "channel 1 {\n        joint \"\"\n        attribute \"y\"\n        starttime 0.000000\n"
        "        endtime 0.000000\n        framerate 0.000000\n\n        strings 0\n\n"
        "        range 0 0\n        keys 8\n"
        "                 0.0000 -123456.7812 0.1000 1000000000.0000 5.0000 6.0000 7.0000 8.0000 \n}\n\n"
        "channel 2 {\n        joint \"\"\n        starttime 0.000000\n        endtime 0.000000\n"
        "        framerate 0.000000\n\n        strings 0\n\n        range 0 0\n        keys 0\n}\n\n";
    MD5Loader().saveAnim("animation", anim);
    EXPECT_EQ(test::readFile("animation"), expected);

    // A channel without its attribute shifts what follows, so the last one is left out.
    MD5Anim const read = animOf(expected.substr(0, expected.find("channel 2")));
    ASSERT_EQ(read.channels.size(), 3u);
    EXPECT_EQ(read.channels[0].keys[0], 14.137167f); // 450 degrees and a turn
    EXPECT_EQ(read.channels[0].keys[2], -1.5707964f + 6.2831855f);
    EXPECT_EQ(read.channels[0].rangeEnd, 60000);
    EXPECT_EQ(read.channels[1].keys[1], -123456.7812f);
    EXPECT_EQ(read.channels[1].attribute, MD5_Y);
    EXPECT_EQ(read.getEndTime(), 2);
}

TEST(MD5Loader, ReadsGroupsByPositionAndPassesOverTheRest)
{
    test::TempFolder const folder;
    MD5Mesh mesh = modelOf(R"(
        / * ' md5version 1 Bone { } MD5Version 70000 rubbish commandline "a // b"
        numbones 4
        bone 3 [ "any" "last" 5 -1 .5 -2e1 word 1 2 3 4 5 6 7 8 9 parent "first" ]
        bone 0 { name "first" bindpos 1 0 0 bindmat 1 2 3 4 5 6 7 8 9 Parent
        bone 1 { name "first" bindpos 0 1 0 bindmat 1 2 3 4 5 6 7 8 9 parent "gone" }
        bone 4 { name "dropped" bindpos 1 0 0 bindmat 1 2 3 4 5 6 7 8 9 parent "first" }
        bone -1 { name "dropped" bindpos 1 0 0 bindmat 1 2 3 4 5 6 7 8 9 }
        bone 2 { name middle bindpos 0 0 4 bindmat 1 2 3 4 5 6 7 8 9 parent "last" }
        nummeshes 2
        mesh 0 { shader "one" numverts 1 verts 0 1 2 0 1 numtris 1 tri 0 1 2 3 numweights 1
            weight 0 1 1 1 2 3 }
        mesh 7 { s "two" n 4 v 9 0.5 -0.5 0 2 v 9 1 2 2 65535 v 9 1 2 65535 9 v 9 1 2 1 0 t 0 w 4 w 5 0 0.25 1 2 3
            w 6 3 0.5 -1 2 3 w 7 9 4 0 0 0 w 8 2 0.5 0 0 0 } MD5Version 65546)");
    EXPECT_EQ(mesh.version, 10) << "the last one, in 16 bits";
    EXPECT_EQ(mesh.commandLine, "a // b");
    std::ostringstream bones;
    bones.precision(9);
    for (auto const &bone : mesh.bones) {
        bones << bone.name << bone.parentIndex << ' ' << bone.position.x << ' ' << bone.position.y << ' '
              << bone.position.z << '\n';
        EXPECT_EQ(bone.matrix, D3DXMATRIX(1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1)) << bone.name;
    }
    EXPECT_EQ(bones.str(), "first4 1 0 0\nfirst4 0 1 0\nmiddle3 0 0 4\nlast0 -1 0.5 -20\n");
    EXPECT_EQ(mesh.shader, "two") << "the last mesh stays";
    EXPECT_TRUE(mesh.triangles.empty());
    ASSERT_EQ(mesh.weights.size(), 4u);
    EXPECT_EQ(mesh.weights[1].index, 6);
    mesh.defaultPose(); // once more, from zero again
    // Bones' positions times weights: 0.25 of the first and 0.5 of the last; then, since there is no bone 9
    // and no weight behind the last, 0.5 of the middle one; then none.
    D3DXVECTOR3 const positions[] = {{-0.25f, 0.25f, -10}, {0, 0, 2}, {0, 0, 0}, {0, 0, 0}};
    ASSERT_EQ(mesh.vertices.size(), std::size(positions));
    for (std::size_t i = 0; i < std::size(positions); ++i) {
        EXPECT_EQ(mesh.vertices[i].position, positions[i]) << i;
    }

    MD5Anim const anim = animOf(R"(
        MD5Version 6 numchannels 9
        channel 8 { j "hip" a "ROLL" s -1 e 3.5 f 24 strings 3 "a" b 5 range 2 -1 keys 2 90 -90 }
        channel 9 { j "hip" a "roll" s -7 e 35 f 24 strings 0 range 0 0 keys 1 90 }
        channel 0 { j "hip" a "x" s 0 e 1 f 24 strings -2 range 0 0 keys 2 90 -90 }
        channel 1 { j "" a "Y" s 0 e 1 f 9 n 0 r 0 0 k 0 } channel 2 { j "" a "Z" s 0 e 1 f 9 n 0 r 0 0 k -1 }
        channel 3 { j "" a "yaw" s 0 e 1 f 9 n 0 r 0 0 k 0 } channel 4 { j "" a "YAW" s 0 e 1 f 9 n 0 r 0 0 k 0 }
        channel 5 { j "" a "pitch" s 0 e 1 f 9 n 0 r 0 0 k 0 }
        channel 6 { j "" a "PITCH" s 0 e 1 f 9 n 0 r 0 0 k 0 }
        channel 7 { j "" a "Roll" s 0 e 1 f 24 strings 0 range 0 0 keys 1 7 })");
    EXPECT_EQ(anim.getStartTime(), -1) << "the channel that is not in the list does not count";
    EXPECT_EQ(anim.getEndTime(), 3.5f);
    std::string attributes;
    for (MD5Channel const &channel : anim.channels) {
        attributes += std::to_string(channel.attribute);
    }
    EXPECT_EQ(attributes, "012334405");
    EXPECT_EQ(anim.channels[8].stringCount, 3);
    EXPECT_EQ(anim.channels[8].rangeEnd, 65535);
    EXPECT_EQ(anim.channels[8].keys, (std::vector<float>{7.853982f, 4.712389f}));
    EXPECT_EQ(anim.channels[0].keys, (std::vector<float>{90, -90}));
    EXPECT_EQ(anim.channels[7].keys, (std::vector<float>{7}));
    EXPECT_TRUE(anim.channels[2].keys.empty());
}

TEST(MD5Loader, AMissingFileLeavesTheObjectAndAnotherOneReplacesItsLists)
{
    test::TempFolder const folder;
    MD5Mesh mesh = smallModel();
    MD5Anim anim = animOf("numchannels 1 channel 0 { j \"a\" a \"yaw\" s 1 e 2 f 1 strings 0 r 0 0 k 1 5 }");
    for (char const *path : {"missing", ".", "", static_cast<char const *>(nullptr)}) {
        MD5Loader().loadModel(path, mesh);
        MD5Loader().loadAnim(path, anim);
    }
    EXPECT_EQ(mesh.vertices[0].position, D3DXVECTOR3(9, 9, 9));
    EXPECT_EQ(anim.getEndTime(), 2);

    test::writeFile("text", "numbones 2 bone 1 { n \"foot\" p 0 0 0 m 1 0 0 0 1 0 0 0 1 } "
                            "numchannels 1 channel 0 { j \"b\" a \"tilt\" s 0 e 1 f 1 strings 0 r 0 0 k 0 }");
    MD5Loader().loadModel("text", mesh);
    MD5Loader().loadAnim("text", anim);
    EXPECT_EQ(mesh.bones[0].name, "");
    EXPECT_EQ(mesh.bones[1].parentIndex, 2) << "no parent of the model before";
    EXPECT_EQ(mesh.vertices.size(), 2u) << "no mesh was mentioned";
    EXPECT_EQ(anim.channels[0].attribute, MD5_X);
}

TEST(MD5Loader, WhatIsReadStaysWhereverTheFileEnds)
{
    test::TempFolder const folder;
    MD5Mesh const full = modelOf(savedModel);
    std::string const text = savedModel;
    std::size_t vertices = 0;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        MD5Mesh const mesh = modelOf(text.substr(0, length));
        ASSERT_LE(mesh.bones.size(), 2u);
        ASSERT_TRUE(mesh.vertices.size() >= vertices && mesh.vertices.size() <= 2);
        vertices = mesh.vertices.size();
        if (vertices > 0) {
            EXPECT_EQ(mesh.bones[1].parent, "hip");
        }
        if (vertices > 1) { // the last one may be half
            EXPECT_EQ(mesh.vertices[0].v, full.vertices[0].v);
        }
    }
    EXPECT_EQ(vertices, 2u);
}

TEST(MD5Loader, NothingIsReservedOnTrust)
{
    test::TempFolder const folder;
    for (char const *count : {"2147483647", "99999999999", "1000000000", "-1"}) {
        SCOPED_TRACE(count);
        std::string lists;
        for (int i = 0; i < 20000; ++i) { // each would make as many bones again
            lists += std::string("numbones ") + count + " numchannels " + count + " ";
        }
        std::size_t const room = 1024 + lists.size() / 16;
        EXPECT_LE(modelOf(lists).bones.capacity(), room);
        EXPECT_LE(animOf(lists).channels.capacity(), room);
        for (std::string const start :
             {"mesh 0 { s \"\" n ", "mesh 0 { s \"\" n 0 t ", "mesh 0 { s \"\" n 0 t 0 w "}) {
            MD5Mesh const mesh = modelOf(start + count + " v 1 2 3");
            EXPECT_LE(mesh.vertices.size() + mesh.triangles.size() + mesh.weights.size(), 2u);
        }
        MD5Anim const anim =
            animOf(std::string("numchannels 1 channel 0 { j a a x s 0 e 0 f 0 strings 0 r 0 0 k ") + count);
        EXPECT_LE(anim.channels[0].keys.size(), 1u);
        animOf(std::string("numchannels 1 channel 0 { j a a x s 0 e 0 f 0 strings ") + count);
    }

    // Vertices that all claim all weights: work in proportion to the file.
    std::string text = "numbones 1 bone 0 { n a p 1 1 1 m 1 0 0 0 1 0 0 0 1 } mesh 0 { s x n 40000 ";
    for (int i = 0; i < 40000; ++i) {
        text += "v 0 0 0 0 65535 ";
    }
    text += "t 0 w 40000 ";
    for (int i = 0; i < 40000; ++i) {
        text += "w 0 0 1 0 0 0 ";
    }
    MD5Mesh const mesh = modelOf(text);
    EXPECT_EQ(mesh.vertices[0].position, D3DXVECTOR3(40000, 40000, 40000));
    EXPECT_EQ(mesh.vertices[39999].position, D3DXVECTOR3(0, 0, 0));
}

} // namespace
} // namespace Qel
