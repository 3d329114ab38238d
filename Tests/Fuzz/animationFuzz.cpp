#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Loader.h"
#include "Tests/Fuzz/fuzzTarget.h"
#include "Tests/Fuzz/modelFuzz.h"

// Reads an animation and poses three bones with it, one of them behind its child.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    static modelFuzz::InputFile const file;
    file.fill(data, size);
    Qel::MD5Anim anim;
    Qel::MD5Loader loader;
    loader.loadAnim(file.name(), anim);
    fuzzRequire(anim.channels.size() <= 1024 + size / 16, "no more channels than the file has room for");

    Qel::MD5Mesh mesh;
    mesh.bones.resize(3);
    mesh.bones[0].name = "a";
    mesh.bones[1].name = "b";
    mesh.bones[1].parent = "c";
    mesh.bones[2].name = "c";
    mesh.buildHierarchy();
    anim.connectBones(mesh);
    std::string answer;
    float const end = anim.getEndTime();
    for (float const time : {anim.getStartTime() + 0.01f, 0.5f * end, end * 0.99f, -1.0f}) {
        anim.playAnimation(mesh, time);
        for (Qel::MD5Bone const &bone : mesh.bones) {
            modelFuzz::add(answer, bone.attributes);
            modelFuzz::add(answer, bone.matrix);
        }
    }
    for (Qel::MD5Channel const &channel : anim.channels) {
        fuzzRequire(channel.keys.size() <= size, "a key takes a character at the least");
        fuzzRequire(channel.bone <= mesh.bones.size(), "a channel has a bone, or none");
        modelFuzz::add(answer, channel.stringCount);
    }
    // The text holds all else.
    loader.saveAnim(file.name(), anim);
    return answer + file.content();
}
