#include "System/File/fileDisk.h"
#include "System/File/fileSystem.h"
#include "System/File/fileTempMem.h"
#include "System/System/string.h"

#include <cstdint>

namespace {

struct Player {
    Qel::String name;
    std::uint32_t level = 0;
    float health = 0.0f;
};

// Small values go into memory first, and reach the disk in one piece.
bool save(Player const &player, Qel::String const &path)
{
    Qel::cFileTempMem content;
    content.write_string(player.name);
    content << player.level << player.health;

    Qel::cFileDisk disk(path, Qel::OPEN_WRITE);
    return disk.write(content) == content.size();
}

bool load(Player &player, Qel::String const &path)
{
    Qel::cFileMem content;
    return content.open(path) && content.read_string(player.name) && content.read_32(player.level) &&
           content.read_float(player.health);
}

} // namespace

int main()
{
    Qel::String const path = Qel::FileSystem::getNextUniqueFilename("./", "player.sav");
    Player const saved{"Ann", 12, 0.75f};
    Player loaded;
    bool const same = save(saved, path) && load(loaded, path) && loaded.name == saved.name &&
                      loaded.level == saved.level && loaded.health == saved.health;
    return Qel::FileSystem::deleteFile(path) && same ? 0 : 1;
}
