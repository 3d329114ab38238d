#include "System/File/archiveContainer.h"
#include "System/File/indexedArchive.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

// Files that are built into the program.
constexpr struct {
    char const *name;
    std::string_view bytes;
} builtIn[] = {{"Fonts/Default.fnt", "size 12"}, {"Shaders\\Fallback.fx", "black"}};

struct BuiltInContents {
    Qel::ArchiveIndex index; // an entry's place is its number in builtIn
};

class BuiltInArchive : public Qel::tIndexedArchive<BuiltInContents> {
public:
    BuiltInArchive() : tIndexedArchive("built in") { load(); }

protected:
    std::shared_ptr<BuiltInContents> readContents() const override
    {
        auto contents = std::make_shared<BuiltInContents>();
        for (std::size_t i = 0; i < std::size(builtIn); ++i) {
            Qel::ArchiveIndex::Entry entry;
            entry.size = entry.packedSize = static_cast<std::uint32_t>(builtIn[i].bytes.size());
            entry.place = i;
            contents->index.add(builtIn[i].name, entry); // false for a name that could lead out
        }
        contents->index.finish(); // tells which names came twice
        return contents;
    }

    unsigned int readEntry(BuiltInContents &contents, std::size_t at, void *buffer,
                           unsigned int room) override
    {
        std::string_view const bytes = builtIn[contents.index[at].place].bytes;
        std::size_t const count = std::min<std::size_t>(room, bytes.size());
        std::memcpy(buffer, bytes.data(), count);
        return static_cast<unsigned int>(count);
    }
};

int main()
{
    BuiltInArchive archive;
    Qel::cArchiveContainer files;
    files.addArchive(archive);
    PoolBlk data;
    return files._findResourceData("shaders/FALLBACK.fx", data, 0x228FC766, nullptr) && data.size() == 5 ? 0
                                                                                                         : 1;
}
