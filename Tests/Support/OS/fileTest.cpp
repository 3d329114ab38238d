#include "Support/OS/file.h"
#include "Support/OS/module.h"

#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(OsFile, ReplacingKeepsTheModeAndFollowsLinks)
{
    test::TempFolder const folder;
    ASSERT_TRUE(os::replaceFile("new.txt", "one", 3));
    EXPECT_EQ(test::readFile("new.txt"), "one");

    chmod("new.txt", 0640);
    fs::create_symlink("new.txt", "link.txt");
    fs::create_directory("sub");
    ASSERT_TRUE(os::replaceFile("link.txt", "two", 3));
    ASSERT_TRUE(os::replaceFile("sub\\..\\new.txt", "three", 5));
    EXPECT_TRUE(fs::is_symlink("link.txt"));
    EXPECT_EQ(test::readFile("link.txt"), "three");
    EXPECT_EQ(fs::status("new.txt").permissions(), static_cast<fs::perms>(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 3)
        << "nothing is left aside";

    EXPECT_FALSE(os::replaceFile("no/such/folder/x", "x", 1));
    EXPECT_FALSE(os::replaceFile("/dev/full", "x", 1));
    EXPECT_FALSE(os::replaceFile("sub", "x", 1));
}

TEST(OsFile, FoldersAreNoFiles)
{
    test::TempFolder const folder;
    EXPECT_EQ(os::openFile(".", "r"), nullptr);
    EXPECT_EQ(os::openFile("missing", "r"), nullptr);
    EXPECT_EQ(os::openFile(nullptr, "r"), nullptr);
    fs::create_directory("a");
    EXPECT_NE(os::openFile("a\\b", "w"), nullptr);
    EXPECT_TRUE(fs::exists("a/b"));
}

TEST(OsModule, AForeignEndingIsTriedAsItStandsThenAsOurs)
{
    test::TempFolder const folder;
    std::string error;
    EXPECT_EQ(os::openModule("none.dll", error), nullptr);
    std::size_t const foreign = error.find("./none.dll");
    std::size_t const ours = error.find("./none.so");
    ASSERT_NE(foreign, std::string::npos);
    ASSERT_NE(ours, std::string::npos);
    EXPECT_LT(foreign, ours);
    EXPECT_EQ(error.find("bin/none.dll") == std::string::npos, false) << "beside the program";
    EXPECT_LT(error.find("bin/none.dll"), error.find("lib/none.dll")) << "then beside the library";
    EXPECT_LT(error.find("lib/none.so"), foreign) << "then in the working folder";

    EXPECT_EQ(os::openModule("x/none.dll", error), nullptr);
    EXPECT_EQ(error.find("./"), std::string::npos) << "a name with a path is taken as it is";
    EXPECT_EQ(os::openModule("", error), nullptr);
    EXPECT_EQ(os::openModule(nullptr, error), nullptr);
}

TEST(OsModule, ASymbolOfADependencyIsNotTheModules)
{
    std::string error;
    void *const module = os::openModule("plugin_win32platform.DLL", error);
    ASSERT_NE(module, nullptr) << error;
    EXPECT_NE(os::findSymbol(module, "createPlatformErrorDialog"), nullptr);
    EXPECT_EQ(os::findSymbol(module, "malloc"), nullptr);
    EXPECT_EQ(os::findSymbol(module, "missing"), nullptr);
    EXPECT_TRUE(os::closeModule(module));
}

} // namespace
