#include "info.h"

#include "System/File/fileMem.h"
#include "System/Graphics/model/md5Loader.h"
#include "Tools/model/modelCheck.h"

#include <cstdio>

using namespace Qel;

namespace {

void tell(std::vector<std::string> const &findings, ExitCode &code)
{
    for (std::string const &finding : findings) {
        std::printf("  but      %s\n", finding.c_str());
        code = exitRefused;
    }
}

void describe(MD5Mesh const &mesh)
{
    std::printf("  shader   %s\n", mesh.shader.c_str());
    std::printf("  mesh     %zu vertices, %zu triangles, %zu weights\n", mesh.vertices.size(),
                mesh.triangles.size(), mesh.weights.size());
    std::printf("  bones    %zu\n", mesh.bones.size());
    for (MD5Bone const &bone : mesh.bones) {
        std::printf("           %-20s %s\n", bone.name.c_str(), bone.parent.c_str());
    }
}

void describe(MD5Anim const &animation)
{
    std::printf("  time     %g to %g seconds\n", static_cast<double>(animation.getStartTime()),
                static_cast<double>(animation.getEndTime()));
    std::printf("  channels %zu\n", animation.channels.size());
}

} // namespace

bool informOfModel(Options const &options, std::string_view text, ExitCode &code)
{
    ModelText const kind = modelTextOf(text);
    if (kind == ModelText::NONE) {
        return false;
    }
    if (!options.convert.empty()) {
        std::fprintf(stderr, "qelinfo: %s: --convert is for pictures\n", options.file.c_str());
        code = exitUsage;
        return true;
    }
    code = exitDone;
    MD5Mesh mesh;
    MD5Anim animation;
    if (kind == ModelText::ANIMATION) {
        std::printf("%s: animation, %zu bytes\n", options.file.c_str(), text.size());
        MD5Loader().loadAnim(options.file.c_str(), animation);
        describe(animation);
        tell(checkAnimation(animation), code);
        return true;
    }
    std::printf("%s: model, %zu bytes\n", options.file.c_str(), text.size());
    MD5Loader().loadModel(options.file.c_str(), mesh);
    describe(mesh);
    tell(checkModel(mesh), code);
    if (!options.animation.empty()) {
        if (!cFileMem().open(options.animation.c_str())) {
            std::fprintf(stderr, "qelinfo: %s: cannot be read\n", options.animation.c_str());
            code = exitFile;
            return true;
        }
        MD5Loader().loadAnim(options.animation.c_str(), animation);
        describe(animation);
        tell(checkAnimation(animation), code);
        tell(channelsWithoutBone(animation, mesh), code);
    }
    return true;
}
