#include "Tests/Plugins/archivePlugin.h"

#include "System/File/archiveIndex.h"
#include "System/File/diskName.h"

#include "Support/OS/rootedFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace Qel {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

class FileSystemArchive : public ArchivePlugin {
protected:
    FileSystemArchive() : ArchivePlugin("plugin_filesystem.dll")
    {
        fs::create_directories("Media/Sub");
        writeFile("Media/a.txt", "alpha");
        writeFile("Media/Sub/B.TXT", "beta");
        writeFile("secret.txt", "secret");
    }

    iArchive &media() { return *manager.load("Media", "FILESYSTEM"); }
};

TEST_F(FileSystemArchive, FindsMixedCaseByTheNormalName)
{
    writeFile("Media/\u00c4pfel \U0001F34E.Txt", "apples");
    writeFile("Media/empty", "");
    cArchiveContainer files;
    files.addArchive(media());
    StringVector names;
    EXPECT_EQ(files.getFileList(names, nullptr), 4u);

    struct {
        char const *name, *content;
    } const rows[] = {{"A.TXT", "alpha"}, {"sub\\b.txt", "beta"}, {"\u00c4PFEL \U0001F34E.txt", "apples"}};
    for (auto const &row : rows) {
        PoolBlk block;
        ASSERT_TRUE(files._findResourceData(row.name, block, 0, nullptr)) << row.name;
        EXPECT_EQ(std::string(static_cast<char *>(block.data()), block.size()), row.content);
    }
    EXPECT_EQ(contentOf(media(), "empty"), "");

    StringVector list;
    EXPECT_EQ(media().listFolder("", list), 4u);
    EXPECT_EQ(media().listFolder("sub", list), 1u);
    EXPECT_STREQ(list.back(), "b.txt");
    EXPECT_GT(media().getFileTime(HashConstCharPtr("a.txt")), 1600000000);
    EXPECT_EQ(log.take().find("left out"), std::string::npos);
}

TEST_F(FileSystemArchive, LetsTheFirstInByteOrderWinAndSaysSo)
{
    fs::create_directories("Media/SUB");
    writeFile("Media/SUB/b.txt", "the first");
    writeFile("Media/Sub/b.txt", "the last");
    iArchive &archive = media();
    EXPECT_EQ(contentOf(archive, "sub/b.txt"), "the first");
    std::string const text = log.take();
    EXPECT_NE(text.find("Media/Sub/B.TXT: left out, 'SUB/b.txt' differs in case alone"), std::string::npos)
        << text;
    EXPECT_NE(text.find("Media/Sub/b.txt: left out"), std::string::npos);
    EXPECT_EQ(archive.getNumFiles(), 2);
}

TEST_F(FileSystemArchive, LeadsOutByNoName)
{
    for (bool const oneStep : {true, false}) {
        std::unique_ptr<os::NoBeneathScope> const scope(oneStep ? nullptr : new os::NoBeneathScope);
        for (char const *const name : waysOut) {
            EXPECT_EQ(contentOf(media(), name), "(none)") << name;
            FileInfo forged;
            forged.setName(name);
            forged.size = 100;
            forged.archive = &media();
            for (std::uint32_t const handle : {0u, 1u, 2u, 0xFFFFFFFFu}) {
                forged.handle = handle;
                PoolBlk block;
                EXPECT_EQ(cArchiveContainer::_readResourceData(forged, block, 0), 0u) << name;
            }
        }
        EXPECT_EQ(contentOf(media(), "sub/b.txt"), "beta");
    }
}

TEST_F(FileSystemArchive, LeadsOutByNoLink)
{
    fs::create_directories("outside/deep");
    writeFile("outside/deep/secret.txt", "secret");
    fs::create_symlink("../secret.txt", "Media/file-out");
    fs::create_symlink(folder.path() / "secret.txt", "Media/file-abs");
    fs::create_directory_symlink("../outside", "Media/dir-out");
    fs::create_directory_symlink(folder.path() / "outside", "Media/dir-abs");
    fs::create_symlink("nowhere", "Media/dangling");
    fs::create_symlink("loop", "Media/loop");
    fs::create_directory_symlink("..", "Media/Sub/up");
    fs::create_directory_symlink(".", "Media/Sub/round");
    fs::create_symlink("Sub/B.TXT", "Media/inside");
    ASSERT_EQ(mkfifo("Media/pipe", 0600), 0);

    iArchive &archive = media();
    EXPECT_EQ(archive.getNumFiles(), 3);
    EXPECT_EQ(contentOf(archive, "inside"), "beta") << "a link that stays inside is a file as others are";
    for (char const *const name :
         {"file-out", "file-abs", "dir-out/deep/secret.txt", "dir-abs/deep/secret.txt", "dangling", "loop",
          "pipe", "sub/up/a.txt", "sub/round/b.txt"}) {
        EXPECT_EQ(contentOf(archive, name), "(none)") << name;
    }

    // What was harmless when it was listed is changed behind the archive's back.
    fs::remove("Media/a.txt");
    fs::create_symlink("../secret.txt", "Media/a.txt");
    fs::rename("Media/Sub", "Media/Sub2");
    fs::create_directory_symlink("../outside/deep", "Media/Sub");
    writeFile("outside/deep/B.TXT", "secret");
    for (bool const oneStep : {true, false}) {
        std::unique_ptr<os::NoBeneathScope> const scope(oneStep ? nullptr : new os::NoBeneathScope);
        for (char const *const name : {"a.txt", "sub/b.txt"}) {
            EXPECT_EQ(contentOf(archive, name), "(none)") << name;
            EXPECT_FALSE(archive.exists(HashConstCharPtr(name))) << name << ", nor is it told of";
        }
        EXPECT_NE(contentOf(archive, "inside"), "secret");
    }
    // Without the one step, links are not followed at all.
    os::NoBeneathScope const scope;
    archive.refresh();
    EXPECT_EQ(archive.getNumFiles(), 1);
}

TEST_F(FileSystemArchive, FollowsALinkToAFolderInside)
{
    fs::create_directory_symlink("Sub", "Media/Alias");
    EXPECT_EQ(contentOf(media(), "alias/b.txt"), "beta");
    EXPECT_EQ(contentOf(media(), "sub/b.txt"), "(none)") << "a folder is entered once";
}

TEST_F(FileSystemArchive, FollowsTheDisk)
{
    iArchive &archive = media();
    FileInfo info = lookUp(archive, "a.txt");

    writeFile("Media/a.txt", "longer than before");
    EXPECT_EQ(contentOf(archive, "a.txt"), "longer than before");
    EXPECT_EQ(info.size, 5u);
    PoolBlk block;
    EXPECT_EQ(cArchiveContainer::_readResourceData(info, block, 0), 5u) << "grown since: cut at the record";
    writeFile("Media/a.txt", "al");
    ASSERT_EQ(cArchiveContainer::_readResourceData(info, block, 0), 2u) << "shrunk since: zeros behind";
    EXPECT_EQ(std::string(static_cast<char *>(block.data()), 5), std::string("al\0\0\0", 5));

    writeFile("Media/0new", "new");
    EXPECT_EQ(contentOf(archive, "0new"), "(none)");
    archive.refresh();
    EXPECT_EQ(contentOf(archive, "0new"), "new");
    EXPECT_EQ(cArchiveContainer::_readResourceData(info, block, 0), 2u) << "a record outlives a refresh";
    fs::remove("Media/a.txt");
    EXPECT_EQ(contentOf(archive, "a.txt"), "(none)");
    EXPECT_EQ(cArchiveContainer::_readResourceData(info, block, 0), 0u);

    fs::remove_all("Media");
    archive.refresh();
    EXPECT_EQ(archive.getNumFiles(), 0);
    EXPECT_EQ(contentOf(archive, "0new"), "(none)");
}

// The archive keeps what it has found open for the read.
TEST_F(FileSystemArchive, ReadsAFileAsItWasFound)
{
    iArchive &archive = media();
    auto const read = [](FileInfo info) {
        PoolBlk block;
        cArchiveContainer::_readResourceData(info, block, 0);
        return std::string(static_cast<char *>(block.data()), block.size());
    };
    auto const openFiles = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    EXPECT_EQ(contentOf(archive, "a.txt"), "alpha");
    auto const before = openFiles();
    FileInfo const a = lookUp(archive, "a.txt");
    writeFile("other", "another");
    fs::rename("other", "Media/a.txt");
    EXPECT_EQ(read(a), "alpha") << "though another has taken its place";
    EXPECT_EQ(read(a), "anoth") << "and not a second time";

    FileInfo const b = lookUp(archive, "sub/b.txt");
    FileInfo const newA = lookUp(archive, "a.txt");
    EXPECT_EQ(read(b), "beta") << "when another has been looked up since";
    EXPECT_EQ(read(newA), "another");
    for (int i = 0; i < 20; ++i) {
        lookUp(archive, i % 2 == 0 ? "a.txt" : "sub/b.txt");
    }
    EXPECT_LE(openFiles(), before + 1);
    fs::remove("Media/Sub/B.TXT");
    EXPECT_EQ(contentOf(archive, "sub/b.txt"), "(none)");
}

TEST_F(FileSystemArchive, RefusesWhatNobodyCouldLookUp)
{
    writeFile("Media/back\\slash", "x");
    std::ofstream("Media/huge").close();
    fs::resize_file("Media/huge", std::uintmax_t{1} << 32);
    std::string deep = "Media";
    for (int i = 0; i < 100; ++i) {
        deep += "/d";
        fs::create_directory(deep);
        writeFile(deep + "/f", "x");
    }
    fs::create_directories("Media/" + std::string(200, 'l'));
    writeFile("Media/" + std::string(200, 'l') + "/" + std::string(100, 'l'), "x");

    iArchive &archive = media();
    EXPECT_EQ(archive.getNumFiles(), 2 + 64);
    EXPECT_EQ(contentOf(archive, "huge"), "(none)");
    EXPECT_EQ(contentOf(archive, "back/slash"), "(none)");
    std::string const text = log.take();
    EXPECT_NE(text.find("Media/huge: left out, 4 GiB or longer\n"), std::string::npos);
    EXPECT_NE(text.find("Media/back\\slash: left out, its name cannot be looked up\n"), std::string::npos);

    EXPECT_FALSE(manager.load("nowhere", "FILESYSTEM")->isLoaded());
    EXPECT_FALSE(manager.load("secret.txt", "FILESYSTEM")->isLoaded());
    EXPECT_FALSE(manager.load("", "FILESYSTEM")->isLoaded());
    fs::resize_file("Media/a.txt", std::uintmax_t{5} << 32);
    EXPECT_EQ(contentOf(archive, "a.txt"), "(none)") << "has become too long since";
}

TEST_F(FileSystemArchive, IsReadOnManyThreadsWhileItIsReread)
{
    iArchive &archive = media();
    FileInfo info = lookUp(archive, "a.txt");
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::thread readers[2];
    for (std::thread &reader : readers) {
        reader = std::thread([&] {
            while (!stop) {
                FileInfo own = info;
                char buffer[5];
                wrong += archive.readFile(&own, buffer, 5, own.handle) != 5 || buffer[0] != 'a';
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        archive.refresh();
    }
    stop = true;
    for (std::thread &reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(FileSystemArchive, ServesAsTheViewOfLooseFiles)
{
    cArchiveContainer::refreshExternals("MEDIA");
    ASSERT_NE(cArchiveContainer::mExternals, nullptr);
    EXPECT_TRUE(cArchiveContainer::mExternals->isLoaded());
    EXPECT_EQ(contentOf(*cArchiveContainer::mExternals, "a.txt"), "alpha");
}

TEST(ArchivePlugins, ComeOffCleanlyWithTheirArchives)
{
    test::TempFolder const folder;
    fs::create_directory("media");
    writeFile("media/a.txt", "alpha");
    auto const isMapped = [] {
        std::ifstream maps("/proc/self/maps");
        return std::string(std::istreambuf_iterator<char>(maps), {}).find("plugin_filesystem") !=
               std::string::npos;
    };
    for (int round = 0; round < 2; ++round) {
        PluginMgr plugins;
        ArchiveManager manager;
        cArchiveContainer files;
        {
            StartedPlugin const plugin("plugin_filesystem.dll");
            EXPECT_TRUE(isMapped());
            files.addArchive(*manager.load("media", "FILESYSTEM"));
            EXPECT_TRUE(files._findResource("a.txt", nullptr));
        }
        EXPECT_FALSE(isMapped());
        EXPECT_FALSE(files._findResource("a.txt", nullptr));
    }
}

// Only lower case is known of the way to an archive.
TEST(DiskName, FindsThePathBehindANormalName)
{
    test::TempFolder const folder;
    fs::create_directories("One/Two");
    fs::create_directories("oNE/three");
    fs::create_directories("one");
    writeFile("oNE/three/File.Pak", "x");
    writeFile("One/Two/file.pak", "x");
    struct {
        char const *name, *path;
    } const rows[] = {
        {"one", "one"},
        {"one/two/file.pak", "One/Two/file.pak"},
        {"one\\three\\file.pak", "oNE/three/File.Pak"},
        {"One/Two", "One/Two"},
        {"one/two/", "One/Two/"},
        {"one/four", ""},
        {"one/two/file.pak/x", ""},
        {"", ""},
    };
    for (auto const &row : rows) {
        EXPECT_STREQ(findDiskName(row.name), row.path) << row.name;
    }
    String absolute((folder.path() / "ONE" / "TWO").string());
    EXPECT_STREQ(findDiskName(absolute.toLowerCase()), (folder.path() / "One" / "Two").c_str());
    EXPECT_STREQ(findDiskName(nullptr), "");
}

TEST(ArchiveIndexTest, JudgesNames)
{
    for (char const *const name : {"a", "a/b", "a\\b", "...", "a..b/.c", "ab:c", "c", "%2e"}) {
        EXPECT_TRUE(ArchiveIndex::isSafeName(name)) << name;
    }
    for (char const *const name : waysOut) {
        bool const harmless = std::string_view(name).starts_with("%");
        EXPECT_EQ(ArchiveIndex::isSafeName(name), harmless) << name;
    }
    EXPECT_FALSE(ArchiveIndex::isSafeName(nullptr));
    for (std::size_t const length : {1u, 255u, 256u, 5000u}) {
        EXPECT_EQ(ArchiveIndex::isSafeName(std::string(length, 'n').c_str()), length <= 255) << length;
    }

    // So many names with one beginning of their hashes that the search by halves is taken, one of them twice.
    std::vector<std::string> names;
    for (int i = 0; names.size() < 100; ++i) {
        if (HashConstCharPtr(std::to_string(i).c_str()).hash >> 24 == 0x5A) {
            names.push_back(std::to_string(i));
        }
    }
    names.back() = names[50];
    ArchiveIndex index;
    for (std::size_t i = 0; i < names.size(); ++i) {
        ArchiveIndex::Entry entry;
        entry.place = i;
        EXPECT_TRUE(index.add(names[i].c_str(), entry));
    }
    std::vector<ArchiveIndex::Double> const doubles = index.finish();
    ASSERT_EQ(doubles.size(), 1u);
    EXPECT_EQ(doubles[0].kept.place, 50u);
    EXPECT_EQ(doubles[0].dropped.place, 99u);
    for (std::size_t i = 0; i < 99; ++i) {
        std::size_t const at = index.find(HashConstCharPtr(names[i].c_str()));
        ASSERT_NE(at, ArchiveIndex::npos);
        EXPECT_EQ(index[at].place, i);
    }
    EXPECT_EQ(index.find(HashConstCharPtr("99")), ArchiveIndex::npos);
}

} // namespace
} // namespace Qel
