#include "Tests/Fuzz/modelFuzz.h"

#include "System/Graphics/model/md5Loader.h"
#include "System/Graphics/model/md5Mesh.h"
#include "Tests/Fuzz/fuzzTarget.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    static modelFuzz::InputFile const file;
    file.fill(data, size);
    Qel::MD5Mesh mesh;
    Qel::MD5Loader loader;
    loader.loadModel(file.name(), mesh);

    fuzzRequire(mesh.bones.size() <= 1024 + size / 16, "no more bones than the file has room for");
    fuzzRequire(mesh.vertices.size() + mesh.triangles.size() + mesh.weights.size() <= size,
                "a record takes a character at the least");
    std::string answer;
    modelFuzz::add(answer, mesh.version);
    for (Qel::MD5Bone const &bone : mesh.bones) {
        fuzzRequire(bone.parentIndex <= mesh.bones.size(), "a parent is a bone, or none");
        modelFuzz::add(answer, bone.parentIndex);
        modelFuzz::add(answer, bone.matrix);
        modelFuzz::add(answer, bone.attributes);
    }
    for (Qel::MD5Vertex const &vertex : mesh.vertices) {
        modelFuzz::add(answer, vertex.position);
    }
    for (Qel::MD5Triangle const &triangle : mesh.triangles) {
        modelFuzz::add(answer, triangle.index);
    }
    // The text holds all else.
    loader.saveModel(file.name(), mesh);
    return answer + file.content();
}
