#include "System/File/fileSystem.h"

#include "System/File/fileInfo.h"
#include "System/System/stringVector.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Qel {
namespace {

namespace fs = std::filesystem;

StringVector filesOf(String const &search, String const &pattern, bool ignoreCase = true)
{
    StringVector found;
    EXPECT_TRUE(FileSystem::getFiles(search, found, pattern, ignoreCase));
    return found;
}

TEST(FileSystem, ListsFilesOnAllLevels)
{
    test::TempFolder const folder;
    fs::create_directories("media/b/deep");
    fs::create_directories("media/empty");
    fs::create_directories("media/z.particle"); // a folder, whatever it is called
    for (char const *const name :
         {"a.particle", "b/B.PARTICLE", "b/deep/c.particle", "c.txt", "d.particle.bak"}) {
        test::writeFile(fs::path("media") / name, "x");
    }

    EXPECT_EQ(filesOf("media/*.*", "*.particle"),
              (StringVector{"media/a.particle", "media/b/B.PARTICLE", "media/b/deep/c.particle"}));
    EXPECT_EQ(filesOf("media\\*.*", "*.particle", false),
              (StringVector{"media\\a.particle", "media\\b/deep/c.particle"}));
    EXPECT_EQ(filesOf("media/*.txt", "*"), (StringVector{"media/c.txt"}));
    EXPECT_EQ(filesOf("media/c.txt", "*"), (StringVector{"media/c.txt"}));
    EXPECT_EQ(filesOf("media/empty/*.*", "*"), StringVector());

    StringVector kept{"before"};
    EXPECT_FALSE(FileSystem::getFiles("nowhere/*.*", kept, "*", true));
    EXPECT_FALSE(FileSystem::getFiles("media/", kept, "*", true));
    EXPECT_FALSE(FileSystem::getFiles("", kept, "*", true));
    EXPECT_EQ(kept, StringVector{"before"});
    fs::current_path("media/b");
    EXPECT_TRUE(FileSystem::getFiles("*.*", kept, "c*", true));
    EXPECT_EQ(kept, (StringVector{"before", "deep/c.particle"}));

    StringVector folders;
    EXPECT_TRUE(FileSystem::getDirectories("../*.*", folders, "*?p*", true));
    EXPECT_EQ(folders, (StringVector{"../empty", "../z.particle"}));
}

TEST(FileSystem, AListingEndsWhateverTheLinksAreLike)
{
    test::TempFolder const folder;
    fs::create_directories("tree/a/b");
    fs::create_directories("beside");
    test::writeFile("tree/a/b/file", "");
    test::writeFile("beside/other", "");
    fs::create_directory_symlink("..", "tree/a/b/up");
    fs::create_directory_symlink("a", "tree/0first");
    fs::create_directory_symlink("../beside", "tree/aside");
    fs::create_directory_symlink("../beside", "tree/again");
    fs::create_directory_symlink("../tree", "beside/back");
    fs::create_symlink("nowhere", "tree/dangling");
    fs::create_symlink("a/b/file", "tree/link");
    ASSERT_EQ(mkfifo("tree/pipe", 0600), 0);
    EXPECT_EQ(filesOf("tree/*.*", "*"), (StringVector{"tree/a/b/file", "tree/link", "tree/again/other"}));

    // Deeper than is looked: built step by step from inside.
    fs::path const start = fs::current_path();
    for (int depth = 0; depth < 300; ++depth) {
        ASSERT_EQ(mkdir("d", 0700), 0);
        ASSERT_EQ(chdir("d"), 0);
    }
    fs::current_path(start);
    EXPECT_EQ(filesOf("d/*.*", "*"), StringVector());
    StringVector folders;
    EXPECT_TRUE(FileSystem::getDirectories("d/*.*", folders, "*", true));
    EXPECT_EQ(folders.size(), 257u);
}

TEST(FileSystem, BuildsRelativePathsAsText)
{
    struct {
        char const *target;
        char const *base;
        char const *path;
    } const rows[] = {
        {"c:\\a\\c\\f.txt", "c:\\a\\b", "..\\c\\f.txt"},
        {"c:/a/c/f.txt", "c:/a/b/", "..\\c\\f.txt"},
        {"C:\\A\\B\\File.txt", "c:\\a", "B\\File.txt"}, // only what was compared is lowered
        {"C:\\A\\C\\D", "c:\\a\\b\\e", "..\\..\\c\\D"},
        {"D:\\X\\Y", "c:\\a\\b", "d:\\X\\Y"},
        {"c:\\a\\b", "C:\\A\\B", ""},
        {"", "", ""},
        {"a\\b", "", "..\\a\\b"}, // an empty text is one component
        {"", "a\\b", "..\\..\\"},
        {"/data/u/f", "/data/w", "..\\u\\f"},
        {"a", "a\\b", "..\\"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(std::string(row.target) + " from " + row.base);
        EXPECT_STREQ(FileSystem::buildRelativePath(row.target, row.base).c_str(), row.path);
    }
}

TEST(FileSystem, FindsNamesThatAreNotTaken)
{
    struct {
        std::vector<char const *> taken;
        char const *name;
        char const *free;
    } const rows[] = {
        {{}, "a.txt", "a.txt"},
        {{"a.txt"}, "a.txt", "a1.txt"},
        {{"img007.tga"}, "img007.tga", "img008.tga"},
        {{"a9.txt", "a10.txt"}, "a9.txt", "a11.txt"},
        {{"123", "1230"}, "123", "12300"},
        {{".x"}, ".x", "0.x"},
        {{"a.b.c"}, "a.b.c", "a.b1.c"},
        {{"%n%s.txt"}, "%n%s.txt", "%n%s1.txt"},
        {{"v99999999999999999999"}, "v99999999999999999999", "v100000000000000000000"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.name);
        test::TempFolder const folder;
        fs::create_directory("d");
        for (char const *const name : row.taken) {
            test::writeFile(fs::path("d") / name, "");
        }
        EXPECT_EQ(FileSystem::getNextUniqueFilename("d/", row.name), String("d/") + row.free);
    }

    test::TempFolder const folder;
    std::string const longest(255, '1');
    test::writeFile(longest, "");
    EXPECT_EQ(FileSystem::getNextUniqueFilename("", longest), longest + "0")
        << "it cannot be made, so it is free";
    String const cut("a\0b", 3);
    test::writeFile("a", "");
    EXPECT_EQ(FileSystem::getNextUniqueFilename(cut, cut), "aa");
    EXPECT_EQ(FileSystem::getNextUniqueFilename("", cut), "a1") << "the rest is no part of the name";
}

TEST(FileSystem, TellsWhatAFileIs)
{
    test::TempFolder const folder;
    std::string const name = "Data.bin";
    test::writeFile(name, "12345");
    fs::create_directory("folder");
    EXPECT_TRUE(FileSystem::fileExist(".\\Data.bin"));
    EXPECT_TRUE(FileSystem::fileExist("folder"));
    EXPECT_FALSE(FileSystem::fileExist("missing"));
    EXPECT_FALSE(FileSystem::fileExist(""));
    EXPECT_EQ(FileSystem::fileSize("Data.bin"), 5);
    EXPECT_EQ(FileSystem::fileSize("missing"), 0);
    EXPECT_EQ(FileSystem::fileSize("folder"), 0);

    timespec const times[2] = {{0, UTIME_OMIT}, {1234567890, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, name.c_str(), times, 0), 0);
    std::string longPath = "./";
    while (longPath.size() < 300) {
        longPath += "./";
    }
    FileInfo info;
    info.handle = 7;
    EXPECT_TRUE(FileSystem::getFileInfo(longPath + name, info, 0));
    EXPECT_EQ(std::string(info.name), longPath.substr(0, 255));
    EXPECT_EQ(info.packedSize, 5u);
    EXPECT_EQ(info.size, 5u);
    EXPECT_EQ(info.modTime, 1234567890);
    EXPECT_EQ(info.handle, 0u);
    EXPECT_FALSE(FileSystem::getFileInfo("missing", info, 0));
    EXPECT_EQ(info.size, 5u);
    ASSERT_EQ(truncate(name.c_str(), 0x1'0000'0005), 0);
    EXPECT_FALSE(FileSystem::getFileInfo(name, info, 0)) << "4 GiB and 5 bytes are not 5 bytes";
    EXPECT_EQ(FileSystem::fileSize(name), 0x1'0000'0005);

    std::time_t const before = std::time(nullptr);
    EXPECT_TRUE(FileSystem::touch(name));
    EXPECT_TRUE(FileSystem::getFileInfo("folder", info, 0));
    ASSERT_EQ(truncate(name.c_str(), 1), 0);
    EXPECT_TRUE(FileSystem::touch(name) && FileSystem::getFileInfo(name, info, 0));
    EXPECT_GE(info.modTime, before - 1);
    EXPECT_FALSE(FileSystem::touch("folder"));
    EXPECT_FALSE(FileSystem::touch("missing"));
    EXPECT_FALSE(FileSystem::fileExist("missing"));
}

TEST(FileSystem, CopiesMovesAndDeletes)
{
    test::TempFolder const folder;
    test::writeFile("a", "new content");
    test::writeFile("b", "old");
    fs::create_directory("folder");
    ASSERT_EQ(chmod("a", 0640), 0);
    timespec const times[2] = {{0, UTIME_OMIT}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, "a", times, 0), 0);

    EXPECT_FALSE(FileSystem::copyFile("a", "b", true));
    EXPECT_EQ(test::readFile("b"), "old");
    EXPECT_TRUE(FileSystem::copyFile("a", "b", false));
    EXPECT_TRUE(FileSystem::copyFile("a", "folder\\c", true));
    for (char const *const copy : {"b", "folder/c"}) {
        EXPECT_EQ(test::readFile(copy), "new content");
        struct stat status {};
        ASSERT_EQ(stat(copy, &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0640u);
        EXPECT_EQ(status.st_mtime, 1000000000);
    }

    fs::create_symlink("b", "link");
    fs::create_hard_link("b", "twin");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_FALSE(FileSystem::copyFile("a", "./a", false)) << "nothing is emptied";
    EXPECT_FALSE(FileSystem::copyFile("b", "link", false));
    EXPECT_FALSE(FileSystem::copyFile("b", "twin", false));
    EXPECT_EQ(test::readFile("b"), "new content");
    test::writeFile("c", "third");
    EXPECT_TRUE(FileSystem::copyFile("c", "link", false));
    EXPECT_EQ(test::readFile("twin"), "third") << "both names lead to the one file";
    EXPECT_TRUE(fs::is_symlink("link"));
    for (char const *const from : {"folder", "pipe", "missing", ""}) {
        EXPECT_FALSE(FileSystem::copyFile(from, "none", false));
        EXPECT_FALSE(FileSystem::fileExist("none"));
    }
    EXPECT_FALSE(FileSystem::copyFile("a", "folder", false));
    EXPECT_FALSE(FileSystem::copyFile("a", "pipe", false));
    EXPECT_FALSE(FileSystem::copyFile("a", "missing/b", false));

    EXPECT_FALSE(FileSystem::moveFile("a", "b"));
    EXPECT_EQ(test::readFile("b"), "third");
    EXPECT_TRUE(FileSystem::moveFile("a", "folder/d"));
    EXPECT_TRUE(FileSystem::moveFile("folder", "moved"));
    EXPECT_FALSE(FileSystem::moveFile("moved", "moved/inside"));
    EXPECT_FALSE(FileSystem::fileExist("a"));
    EXPECT_EQ(test::readFile("moved/d"), "new content");
    EXPECT_TRUE(FileSystem::deleteFile("moved/d"));
    EXPECT_FALSE(FileSystem::deleteFile("moved/d"));
    EXPECT_FALSE(FileSystem::deleteFile("moved"));
    EXPECT_TRUE(FileSystem::deleteFile("link"));
    EXPECT_TRUE(FileSystem::fileExist("b"));
}

// As on a full disk.
TEST(FileSystem, ACopyThatDoesNotFitLeavesEverythingAsItWas)
{
    test::TempFolder const folder;
    test::writeFile("large", std::string(100'000, 'x'));
    test::writeFile("old", "old");
    auto *const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit const small{50'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    bool const asNew = FileSystem::copyFile("large", "new", true);
    bool const over = FileSystem::copyFile("large", "old", false);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(asNew);
    EXPECT_FALSE(over);
    EXPECT_EQ(test::readFile("old"), "old");
    EXPECT_EQ(filesOf("*.*", "*"), (StringVector{"large", "old"}));
}

TEST(FileSystem, MovesFilesBetweenDisks)
{
    test::TempFolder const folder;
    std::string other = "/dev/shm/qelXXXXXX";
    ASSERT_NE(mkdtemp(other.data()), nullptr);
    test::writeFile("a", "content");
    test::writeFile(other + "/taken", "old");
    fs::create_directory("folder");
    EXPECT_FALSE(FileSystem::moveFile("a", other + "/taken"));
    EXPECT_EQ(test::readFile(other + "/taken"), "old");
    EXPECT_TRUE(FileSystem::moveFile("a", other + "/b"));
    EXPECT_EQ(test::readFile(other + "/b"), "content");
    EXPECT_FALSE(FileSystem::fileExist("a"));
    fs::remove_all(other);
}

TEST(FileSystem, TellsWhyTheLastOperationFailed)
{
    test::TempFolder const folder;
    EXPECT_FALSE(FileSystem::deleteFile("missing"));
    EXPECT_EQ(FileSystem::getLastError(), WString(L"No such file or directory"));
    EXPECT_FALSE(FileSystem::copyFile("/dev/null", "b", false));
    EXPECT_EQ(FileSystem::getLastError(), WString(L"Invalid argument"));
    errno = 0;
    EXPECT_TRUE(FileSystem::getLastError().empty());
}

TEST(FileSystem, PreparesNamesForLookups)
{
    char name[] = "Data\\Sub/FILE.TGA";
    char out[sizeof name] = "untouched";
    FileSystem::prepareFileName(out, nullptr);
    EXPECT_STREQ(out, "untouched");
    FileSystem::prepareFileName(out, name);
    EXPECT_STREQ(out, "data/sub/file.tga");
    String text = name;
    FileSystem::prepareFileName(text);
    EXPECT_EQ(text, String(out));
}

} // namespace
} // namespace Qel
