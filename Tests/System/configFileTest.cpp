#include "System/System/configFile.h"

#include "System/System/exception.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Qel {
namespace {

struct ConfigFiles : testing::Test {
    ~ConfigFiles() override { std::filesystem::remove_all(folder); }

    void write(std::string const &text) const { std::ofstream(path, std::ios::binary) << text; }

    std::string read() const
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // All settings as "<key|value>" in order.
    static std::string all(ConfigFile &config)
    {
        std::string text;
        for (auto it = config.getSettingsIterator(); it.hasMore(); it.next()) {
            text.append("<").append(it.key()).append("|").append(it.value()).append(">");
        }
        return text;
    }

    std::string folder =
        std::filesystem::temp_directory_path() /
        (std::string("qelConfigFile") + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::string path = (std::filesystem::create_directories(folder), folder + "/a.cfg");
};

TEST_F(ConfigFiles, ReadsALineAtATimeInPiecesOf99Characters)
{
    std::string const blanks(92, ' ');
    struct {
        char const *what;
        std::string text;
        std::string settings;
    } const rows[] = {
        {"separator again in the value", "a=b=c\n", "<a|b=c>"},
        {"another separator first", "a:b=c\n", "<a|b=c>"},
        {"blanks around", " \t key \t = \t value \t \n", "<key|value>"},
        {"blanks inside", "my key=my value\n", "<my key|my value>"},
        {"carriage returns", "a=b\r\n\r\nc=\r\nd=e \r\n", "<a|b><d|e>"},
        {"comments at the start of a line only", "#a=b\n@c=d\n  #e=f\ng=#h\n", "<g|#h>"},
        {"no key or no value", "key=\n=value\n =value\nkey\n\n", ""},
        {"a value of blanks is there, and empty", "key= \n", "<key|>"},
        {"no newline at the end", "a=b\nc=d", "<a|b>"},
        {"order by key, and as in the file within a key", "b=2\na=z\na=y\na=x\n", "<a|z><a|y><a|x><b|2>"},
        {"98 characters and the newline", "key=" + std::string(94, 'v') + "\n",
         "<key|" + std::string(94, 'v') + ">"},
        {"99 characters, and a newline of its own", "key=" + std::string(95, 'v') + "\n", ""},
        {"150 characters: the second piece counts by itself",
         "a=" + std::string(97, 'v') + "second=" + std::string(43, 'w') + "\n",
         "<second|" + std::string(43, 'w') + ">"},
        {"carriage returns do not count as characters", "key=x" + blanks + "v\r\n", "<key|x" + blanks + "v>"},
        {"a zero byte hides the rest of its line", std::string("a=b\0\nc\0=d\ne=f\n", 14), "<e|f>"},
        {"nothing but zero bytes", std::string(1000, '\0'), ""},
    };

    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        write(row.text);
        ConfigFile config;
        config.load(path, "=:");
        EXPECT_EQ(all(config), row.settings);
    }
}

TEST_F(ConfigFiles, GivesTheFirstValueOrAllOfThem)
{
    write("Plugin=one\nPlugin=two\nOther=x\nPlugin=three\n");
    ConfigFile config;
    config.load(path, "=");
    EXPECT_EQ(config.getSetting("Plugin"), "one");
    EXPECT_EQ(config.getSetting("plugin"), "") << "keys are told apart by case";
    EXPECT_EQ(config.getMultiSetting("Plugin"), (StringVector{"one", "two", "three"}));
    EXPECT_TRUE(config.getMultiSetting("Plug").empty());
}

TEST_F(ConfigFiles, WritesBackWhatItLoadsAgain)
{
    write("# gone\nb:two words\na:1\na:2\n");
    ConfigFile config;
    config.load(path, ":");
    config.setSetting("a", "first");
    config.setSetting("c", 4294967295u);
    config.setSetting("d", 7u);
    config.save();
    EXPECT_EQ(read(), "a = first\na = 2\nb = two words\nc = -1\nd = 7\n");

    ConfigFile again;
    again.load(path, "=");
    EXPECT_EQ(all(again), all(config));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << "nothing is left aside";
}

TEST_F(ConfigFiles, ThrowsForAMissingFileAndForAFolderAndIsEmptyThen)
{
    write("a=b\n");
    ConfigFile config;
    for (std::string const &missing : {folder + "/none.cfg", folder}) {
        SCOPED_TRACE(missing);
        config.load(path, "=");
        try {
            config.load(missing, "=");
            ADD_FAILURE() << "nothing thrown";
        } catch (Exception const &failure) {
            EXPECT_EQ(failure.getNumber(), 8);
            EXPECT_EQ(failure.description, "'" + missing + "' file not found!");
            EXPECT_EQ(failure.source, "ConfigFile::load");
        }
        EXPECT_EQ(all(config), "");
    }

    ConfigFile().save(); // no name: nothing to write to
    config.save();       // the name of a folder
}

TEST_F(ConfigFiles, PassesOverALineOf100Megabytes)
{
    {
        std::ofstream file(path, std::ios::binary);
        std::string const megabyte(1 << 20, '=');
        for (int i = 0; i < 100; ++i) {
            file << megabyte;
        }
        file << "\na=b\n";
    }
    ConfigFile config;
    config.load(path, "=");
    EXPECT_EQ(all(config), "<a|b>");
}

} // namespace
} // namespace Qel
