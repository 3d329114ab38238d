#include "allocationCounter.h"

#include "System/File/archive.h"
#include "System/File/archiveContainer.h"
#include "System/File/archiveManager.h"
#include "System/File/fileInfo.h"
#include "System/Patterns/resourceMgr.h"
#include "System/System/pluginMgr.h"
#include "System/System/stringTools.h"

#include "Tests/Plugins/ZipArchive/zipBytes.h"
#include "Tests/Tools/memoryArchive.h"
#include "Tests/Tools/tempFolder.h"

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <physfs.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Qel::cArchiveContainer;
using Qel::FileInfo;
using Qel::HashConstCharPtr;

// ---- From a name to its entry ----

// 50 000 names of 10 to 40 characters in normal form, each with a spelling as a user writes it.
struct Names {
    std::vector<std::string> normal, written;

    Names()
    {
        std::mt19937 random(50000);
        char const *const folders[] = {"textures/", "models/characters/", "sounds/", "maps/e1/", "gui/"};
        char const *const endings[] = {".tga", ".wav", ".md5mesh", ".dat"};
        for (int i = 0; i < 50000; ++i) {
            std::string name = folders[random() % 5] + std::to_string(i);
            for (std::size_t left = random() % 12; left > 0; --left) {
                name += static_cast<char>('a' + random() % 26);
            }
            name += endings[random() % 4];
            normal.push_back(name);
            for (char &c : name) {
                c = c == '/'                                    ? '\\'
                    : random() % 3 == 0 && c >= 'a' && c <= 'z' ? static_cast<char>(c - 32)
                                                                : c;
            }
            written.push_back(name);
        }
        std::vector<std::size_t> order(normal.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            order[i] = i;
        }
        std::shuffle(order.begin(), order.end(), random);
        for (std::size_t const i : order) {
            asked.push_back(written[i].c_str());
            askedNormal.push_back(normal[i].c_str());
        }
    }

    std::vector<char const *> asked, askedNormal; // in another order than they were added in
};

Names const &names()
{
    static Names const all;
    return all;
}

// The names in as many archives, each mounted.
struct Mounted {
    explicit Mounted(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            archives.push_back(std::make_unique<test::MemoryArchive>("archive"));
        }
        for (std::size_t i = 0; i < names().normal.size(); ++i) {
            archives[i % count]->files.emplace_back(names().normal[i], "");
        }
        for (auto const &archive : archives) {
            files.addArchive(*archive);
        }
    }
    std::vector<std::unique_ptr<test::MemoryArchive>> archives;
    cArchiveContainer files;
};

absl::flat_hash_map<std::string_view, void const *> peerTable()
{
    absl::flat_hash_map<std::string_view, void const *> table;
    for (std::string const &name : names().normal) {
        table.emplace(name, &name);
    }
    return table;
}

void lookUp(benchmark::State &state, std::vector<char const *> const &asked, auto const &find)
{
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(asked[at]));
        at = at + 1 < asked.size() ? at + 1 : 0;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_NameToEntry_Qel(benchmark::State &state)
{
    Mounted mounted(1);
    lookUp(state, names().asked,
           [&](char const *name) { return mounted.files._findResource(name, nullptr); });
}
BENCHMARK(BM_NameToEntry_Qel);

void BM_NameToEntry_abslFlatHashMap(benchmark::State &state)
{
    auto const table = peerTable();
    unsigned char const *const map = Qel::StringTools::getMapTable(Qel::MAP_PATH);
    lookUp(state, names().asked, [&](char const *name) {
        char normal[260];
        std::size_t length = 0;
        for (; name[length] != 0; ++length) {
            normal[length] = static_cast<char>(map[static_cast<unsigned char>(name[length])]);
        }
        return table.contains(std::string_view(normal, length));
    });
}
BENCHMARK(BM_NameToEntry_abslFlatHashMap);

void BM_FindResource_threeArchives(benchmark::State &state)
{
    Mounted mounted(3);
    lookUp(state, names().asked,
           [&](char const *name) { return mounted.files._findResource(name, nullptr); });
}
BENCHMARK(BM_FindResource_threeArchives);

void BM_FindResource_abslWithoutNormalForm(benchmark::State &state)
{
    auto const table = peerTable();
    lookUp(state, names().askedNormal,
           [&](char const *name) { return table.contains(std::string_view(name)); });
}
BENCHMARK(BM_FindResource_abslWithoutNormalForm);

// ---- Open, read 4 KiB, close ----

constexpr std::size_t fileCount = 10000;
constexpr std::size_t fileBytes = 4096;

// 10 000 files of 4 KiB on the disk and in two zip files, and the order that they are read in.
class Media {
public:
    Media()
        : m_plugins(std::make_unique<Qel::PluginMgr>()), m_manager(std::make_unique<Qel::ArchiveManager>())
    {
        std::mt19937 random(4096);
        std::vector<test::ZipMember> stored, packed;
        std::filesystem::create_directory("media");
        for (std::size_t i = 0; i < fileCount; ++i) {
            std::string content(fileBytes, '\0');
            for (char &c : content) {
                c = static_cast<char>(random() % 23 + 'a'); // packs to about 60 per cent
            }
            paths.push_back("media/file" + std::to_string(i) + ".dat");
            members.push_back("file" + std::to_string(i) + ".dat");
            test::writeFile(paths.back(), content);
            stored.push_back({members.back(), content, false});
            packed.push_back({members.back(), content, true});
        }
        test::writeFile("stored.zip", test::zipBytes(stored));
        test::writeFile("packed.zip", test::zipBytes(packed));
        std::vector<std::size_t> order(fileCount);
        for (std::size_t i = 0; i < fileCount; ++i) {
            order[i] = i;
        }
        std::shuffle(order.begin(), order.end(), random);
        std::vector<std::string> const inOrder[] = {paths, members};
        for (std::size_t i = 0; i < fileCount; ++i) {
            paths[i] = inOrder[0][order[i]];
            members[i] = inOrder[1][order[i]];
        }
        for (char const *const plugin : {"plugin_filesystem.dll", "plugin_zip.dll"}) {
            reinterpret_cast<void (*)()>(m_plugins->load(plugin)->getSymbol("dllStartPlugin"))();
        }
    }

    Qel::iArchive &archive(char const *name, char const *type) { return *m_manager->load(name, type); }

    std::vector<std::string> paths, members;

private:
    test::TempFolder m_folder;
    std::unique_ptr<Qel::PluginMgr> m_plugins;
    std::unique_ptr<Qel::ArchiveManager> m_manager;
};

Media &media()
{
    static auto *const all = new Media; // the plugins stay loaded to the end
    return *all;
}

void readAll(benchmark::State &state, std::vector<std::string> const &files, auto const &read)
{
    std::vector<char> buffer(fileBytes);
    std::size_t at = 0;
    for (auto _ : state) {
        if (read(files[at].c_str(), buffer.data()) != fileBytes) {
            state.SkipWithError("short read");
            break;
        }
        benchmark::ClobberMemory();
        at = at + 1 < files.size() ? at + 1 : 0;
    }
    state.SetItemsProcessed(state.iterations());
}

// From a name to the bytes, as a resource manager does it.
void readByArchive(benchmark::State &state, char const *name, char const *type)
{
    cArchiveContainer files;
    files.addArchive(media().archive(name, type));
    readAll(state, media().members, [&](char const *file, char *buffer) -> std::size_t {
        FileInfo info;
        return files._findResource(file, &info)
                   ? info.archive->readFile(&info, buffer, info.size, info.handle)
                   : 0;
    });
}

void readByPhysFs(benchmark::State &state, char const *name)
{
    PHYSFS_init(nullptr);
    PHYSFS_mount(name, nullptr, 1);
    readAll(state, media().members, [](char const *file, char *buffer) -> std::size_t {
        PHYSFS_File *const opened = PHYSFS_openRead(file);
        auto const read = PHYSFS_readBytes(opened, buffer, fileBytes);
        PHYSFS_close(opened);
        return static_cast<std::size_t>(read);
    });
    PHYSFS_deinit();
}

void BM_ReadFile_FILESYSTEM(benchmark::State &state)
{
    media();
    readByArchive(state, "media", "FILESYSTEM");
}
BENCHMARK(BM_ReadFile_FILESYSTEM);

// With the record at hand, as a streamer's worker reads.
void BM_ReadFile_FILESYSTEM_record(benchmark::State &state)
{
    Qel::iArchive &archive = (media(), media().archive("media", "FILESYSTEM"));
    std::vector<FileInfo> records(media().members.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        HashConstCharPtr const file(media().members[i].c_str());
        archive.findFile(file.text, &records[i], file.hash);
    }
    std::size_t at = 0;
    readAll(state, media().members, [&](char const *, char *buffer) -> std::size_t {
        FileInfo &info = records[at];
        at = at + 1 < records.size() ? at + 1 : 0;
        return archive.readFile(&info, buffer, info.size, info.handle);
    });
}
BENCHMARK(BM_ReadFile_FILESYSTEM_record);

void BM_ReadFile_fopen(benchmark::State &state)
{
    readAll(state, media().paths, [](char const *path, char *buffer) {
        std::FILE *const file = std::fopen(path, "rb");
        std::size_t const read = std::fread(buffer, 1, fileBytes, file);
        std::fclose(file);
        return read;
    });
}
BENCHMARK(BM_ReadFile_fopen);

void BM_ReadFile_threeSystemCalls(benchmark::State &state)
{
    readAll(state, media().paths, [](char const *path, char *buffer) {
        int const file = open(path, O_RDONLY);
        auto const got = read(file, buffer, fileBytes);
        close(file);
        return static_cast<std::size_t>(got);
    });
}
BENCHMARK(BM_ReadFile_threeSystemCalls);

void BM_ReadFile_ZIP(benchmark::State &state, char const *name)
{
    media();
    readByArchive(state, name, "ZIP");
}
BENCHMARK_CAPTURE(BM_ReadFile_ZIP, stored, "stored.zip");

void BM_ReadFile_PhysicsFS(benchmark::State &state, char const *name)
{
    media();
    readByPhysFs(state, name);
}
BENCHMARK_CAPTURE(BM_ReadFile_PhysicsFS, stored, "stored.zip");
BENCHMARK_CAPTURE(BM_ReadFile_ZIP, deflated, "packed.zip");
BENCHMARK_CAPTURE(BM_ReadFile_PhysicsFS, deflated, "packed.zip");

// ---- Resources ----

class Sized : public Qel::cResource {
public:
    explicit Sized(int number) { setName(Qel::String(number)); }

protected:
    bool load() override
    {
        size = 100;
        return true;
    }
};

class Manager : public Qel::cResourceManager {
public:
    explicit Manager(int count) : cResourceManager(0, UNLOAD_REFERENCED_RESOURCES)
    {
        for (int i = 0; i < count; ++i) {
            Register(std::make_unique<Sized>(i).release(), Qel::PRIORITY_MOST_URGENT);
        }
    }
    ~Manager() override { unloadAndDestroyAll(); }

protected:
    void destroy(Qel::cResource *resource) override { std::unique_ptr<Qel::cResource> const owner(resource); }
};

void BM_cResourceManager_getByID(benchmark::State &state)
{
    Manager manager(1000);
    Qel::cResourceManager &resources = manager;
    unsigned int id = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(resources.getByID(id, true));
        id = id < 1000 ? id + 1 : 1;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_cResourceManager_getByID);

void BM_cResourceManager_getByName(benchmark::State &state)
{
    Manager manager(1000);
    Qel::String const name = "777";
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager.getByName(name, true));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_cResourceManager_getByName);

// The counter sees what it is there to see: a block of the system's and one of the library's lists.
void requireCounting(benchmark::State &state)
{
    AllocationCounter const seen;
    benchmark::DoNotOptimize(std::make_unique<int>());
    benchmark::DoNotOptimize(Qel::String("longer than what a text holds within itself"));
    if (seen.count() < 2) { // the first text of a size takes more
        state.SkipWithError("allocations are not counted");
    }
}

// A pass that looks at all and finds nothing old enough: the most that it can cost without evicting.
void BM_cResourceManager_checkUsage100000(benchmark::State &state)
{
    Manager manager(100000);
    manager.setMemoryBudget(1);
    requireCounting(state);
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        AllocationCounter const counter;
        manager.checkUsage();
        allocations += counter.count();
    }
    state.SetItemsProcessed(state.iterations() * 100000);
    state.counters["allocations"] = static_cast<double>(allocations);
}
BENCHMARK(BM_cResourceManager_checkUsage100000);

// A pass over 100 000 that unloads the third that is oldest; they are loaded again outside the time.
void BM_cResourceManager_evictOf100000(benchmark::State &state)
{
    constexpr unsigned count = 100000;
    Manager manager(count);
    for (unsigned id = 1; id <= count; ++id) {
        manager.getByID(id, false)->incRefCount(); // so that they are unloaded and not destroyed
    }
    requireCounting(state);
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        state.PauseTiming();
        manager.setMemoryBudget(0);
        for (unsigned id = 1; id <= count; ++id) {
            manager.getByID(id, true);
        }
        for (int ticks = 0; ticks < 3; ++ticks) {
            Qel::cResourceManager::resourceMgrTick();
        }
        unsigned const before = manager.getMemoryUsage();
        state.ResumeTiming();
        AllocationCounter const counter;
        manager.setMemoryBudget(before / 9 * 8);
        allocations += counter.count();
        if (manager.getMemoryUsage() > before / 3 * 2) {
            state.SkipWithError("nothing was evicted");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * (count / 3));
    state.counters["allocations"] = static_cast<double>(allocations);
}
BENCHMARK(BM_cResourceManager_evictOf100000);

} // namespace
