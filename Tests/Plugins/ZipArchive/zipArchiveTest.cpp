#include "Tests/Plugins/ZipArchive/zipBytes.h"
#include "Tests/Plugins/archivePlugin.h"

#include <atomic>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <random>
#include <sstream>
#include <thread>

namespace Qel {
namespace {

using test::writeFile;
using test::zipBytes;
using test::ZipMember;

std::string noise(std::size_t size)
{
    std::mt19937 random(static_cast<std::uint32_t>(size));
    std::string text(size, '\0');
    for (char &c : text) {
        c = static_cast<char>(random() % 11);
    }
    return text;
}

class ZipArchive : public ArchivePlugin {
protected:
    ZipArchive() : ArchivePlugin("plugin_zip.dll") {}

    iArchive &mount(std::string const &bytes)
    {
        std::string const name = "Pack" + std::to_string(m_packs++) + ".Zip";
        writeFile(name, bytes);
        log.take();
        return *manager.load(name, "ZIP");
    }

private:
    int m_packs = 0;
};

TEST_F(ZipArchive, ReadsStoredAndDeflatedMembers)
{
    std::vector<ZipMember> members{{"a.txt", "alpha"},
                                   {"Sub/", ""},
                                   {"Sub/Deep\\B.TXT", "beta", true},
                                   {"\u00c4pfel \U0001F34E.txt", "apples", true},
                                   {"empty", ""},
                                   {"empty2", "", true}};
    for (std::size_t const size : {1u, 4096u, 8191u, 8192u, 8193u, 100000u, 3000000u}) {
        members.push_back({std::to_string(size), noise(size)});
        members.push_back({std::to_string(size) + "d", noise(size), true});
    }
    iArchive &archive = mount(zipBytes(members, "made by hand"));
    EXPECT_EQ(log.take(), "") << "nothing to complain of";
    EXPECT_EQ(archive.getNumFiles(), static_cast<int>(members.size() - 1));
    EXPECT_STREQ(archive.getComment(), "made by hand");
    EXPECT_EQ(contentOf(archive, "sub/deep/b.txt"), "beta");
    EXPECT_EQ(contentOf(archive, "\u00e4pfel \U0001F34E.txt"), "(none)") << "only the case of ASCII is one";
    EXPECT_EQ(contentOf(archive, "\u00c4pfel \U0001F34E.txt"), "apples");
    for (ZipMember const &member : members) {
        if (member.name.find_first_not_of("0123456789d") == std::string::npos) {
            EXPECT_EQ(contentOf(archive, member.name.c_str()), member.content) << member.name;
        }
    }
    EXPECT_EQ(contentOf(archive, "empty") + contentOf(archive, "empty2"), "");
    EXPECT_EQ(contentOf(archive, "sub/"), "(none)");

    StringVector names;
    EXPECT_EQ(archive.listFolder("sub", names), 1u);
    EXPECT_STREQ(names[0], "deep/");
    std::tm noon{};
    std::istringstream("2019-06-01 12") >> std::get_time(&noon, "%Y-%m-%d %H");
    noon.tm_isdst = -1;
    EXPECT_EQ(archive.getFileTime(HashConstCharPtr("a.txt")), std::mktime(&noon));

    FileInfo info = lookUp(archive, "4096d");
    std::string part(100, 'x');
    EXPECT_EQ(archive.readFile(&info, part.data(), 99, info.handle), 99u) << "no room for more";
    EXPECT_EQ(part, noise(4096).substr(0, 99) + "x");
}

// Each bad member stands between two good ones, which must stay usable.
TEST_F(ZipArchive, RefusesWhatIsNotAsItIsDeclared)
{
    struct {
        char const *what;
        void (*change)(ZipMember &);
        char const *content; // "(none)": refused when the archive is loaded; "(unread)": when it is read
        char const *line;
    } const rows[] = {
        {"encrypted", [](ZipMember &m) { m.flags |= 1; }, "(none)", "it is encrypted"},
        {"a method of its own", [](ZipMember &m) { m.method = 12; }, "(none)", "method 12 of compression"},
        {"more than deflate can make", [](ZipMember &m) { m.size = 0x7FFFFFFF; }, "(none)",
         "size 2147483647 of"},
        {"stored and longer than packed",
         [](ZipMember &m) {
             m.deflated = false;
             m.size = 5001;
         },
         "(none)", "size 5001 of a packed size of 5000"},
        {"longer than it is", [](ZipMember &m) { m.size = 5001; }, "(unread)",
         "5001 bytes expected, 5000 read"},
        {"shorter than it is", [](ZipMember &m) { m.size = 4999; }, "(unread)", "bad.txt': "},
        {"packed size beyond the archive", [](ZipMember &m) { m.packedSize = 0x10000000; }, "(none)",
         "packed size 268435456 in an archive"},
        {"packed size too short", [](ZipMember &m) { m.packedSize = 100; }, "(unread)", "bad.txt': "},
        {"another checksum", [](ZipMember &m) { m.checksum = 1; }, "(unread)", "CRC"},
        {"no deflated data",
         [](ZipMember &m) {
             m.deflated = false;
             m.method = 8;
         },
         "(unread)", "bad.txt': "},
        {"a header that is elsewhere", [](ZipMember &m) { m.offset = 0x7FFFFFF0; }, "(unread)", "bad.txt': "},
        {"a header that is no header", [](ZipMember &m) { m.offset = 7; }, "(unread)", "bad.txt': "},
        {"a name of 256 characters", [](ZipMember &m) { m.name = std::string(256, 'n'); }, "(none)",
         "its name cannot be looked up"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        ZipMember bad{"bad.txt", noise(5000), true};
        row.change(bad);
        iArchive &archive = mount(zipBytes({{"first", "1", true}, bad, {"last", "2"}}));
        EXPECT_EQ(contentOf(archive, "bad.txt"), row.content);
        std::string const lines = log.take();
        EXPECT_NE(lines.find(".Zip: member 1 '"), std::string::npos) << lines;
        EXPECT_NE(lines.find(row.line), std::string::npos) << lines;
        EXPECT_EQ(contentOf(archive, "first") + contentOf(archive, "last"), "12");
        EXPECT_EQ(contentOf(archive, "bad.txt"), row.content) << "and again";
    }
}

TEST_F(ZipArchive, LetsNoNameClimbOut)
{
    std::vector<ZipMember> members{{"sub/b.txt", "beta"}};
    for (char const *const name : waysOut) {
        members.push_back({name, "secret"});
    }
    members.push_back({"SUB/B.txt", "a second one"});
    iArchive &archive = mount(zipBytes(members));
    std::string const lines = log.take();
    EXPECT_NE(lines.find("left out, member 0 has its name, 'sub/b.txt'"), std::string::npos) << lines;
    EXPECT_EQ(archive.getNumFiles(), 2) << "the one good name, and one that only looks as if";
    EXPECT_EQ(contentOf(archive, "sub/b.txt"), "beta");
    EXPECT_EQ(contentOf(archive, "%2e%2e/secret.txt"), "secret");
    for (char const *const name : waysOut) {
        if (name[0] != '%') {
            EXPECT_EQ(contentOf(archive, name), "(none)") << name;
        }
    }
}

// Many megabytes of zeros in a few kilobytes: the room is what was asked for and no more.
TEST_F(ZipArchive, UnpacksABombOnlyIntoItsRoom)
{
    std::string const zeros(5000000, '\0');
    ZipMember lie{"lie", zeros, true};
    lie.size = 1000;
    iArchive &archive = mount(zipBytes({{"bomb", zeros, true}, lie}));
    EXPECT_EQ(contentOf(archive, "lie"), "(unread)");
    EXPECT_EQ(contentOf(archive, "bomb").size(), zeros.size());
    FileInfo info = lookUp(archive, "bomb");
    std::string room(16, 'x');
    EXPECT_EQ(archive.readFile(&info, room.data(), 8, info.handle), 8u);
    EXPECT_EQ(room, std::string(8, '\0') + std::string(8, 'x'));
}

TEST_F(ZipArchive, BearsAnArchiveThatIsDamagedAnywhere)
{
    std::string const whole =
        zipBytes({{"a", "alpha"}, {"b", "beta beta beta", true}, {"sub/c", noise(300), true}});
    std::string const contents[] = {"alpha", "beta beta beta", noise(300)};
    auto const load = [&](std::string const &bytes) -> iArchive & {
        std::filesystem::remove("damaged.zip"); // emptying it instead would wait for the disk
        writeFile("damaged.zip", bytes);
        iArchive &archive = *manager.load("damaged.zip", "ZIP");
        archive.refresh();
        return archive;
    };
    auto const look = [&](std::string const &bytes) {
        iArchive &archive = load(bytes);
        char const *const names[] = {"a", "b", "sub/c"};
        for (int i = 0; i < 3; ++i) {
            std::string const content = contentOf(archive, names[i]);
            ASSERT_TRUE(content == contents[i] || content == "(none)" || content == "(unread)" ||
                        content == "")
                << content;
        }
    };
    for (std::size_t length = 0; length < whole.size(); ++length) {
        look(whole.substr(0, length));
    }
    std::mt19937 random(1);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string bytes = whole;
        bytes[at] = static_cast<char>(random());
        // Names, and sizes that agree with each other, may change: what is read must be in its room.
        iArchive &archive = load(bytes);
        for (int i = 0; i < archive.getNumFiles(); ++i) {
            contentOf(archive, archive.getFile(i).text);
        }
    }
    look(std::string(1000, '\0'));
    look("PK\5\6");
    look(whole + "trailing bytes");
    EXPECT_FALSE(manager.load("nowhere.zip", "ZIP")->isLoaded());
    EXPECT_NE(log.take().find("ZIP 'nowhere.zip': there is no such file\n"), std::string::npos);
    EXPECT_FALSE(mount("no zip file").isLoaded());
}

TEST_F(ZipArchive, FollowsItsFileWhenItIsReread)
{
    iArchive &archive = mount(zipBytes({{"a", "old"}, {"b", "gone"}}));
    FileInfo info = lookUp(archive, "a");
    EXPECT_EQ(contentOf(archive, "a"), "old");
    std::filesystem::remove("Pack0.Zip");
    writeFile("Pack0.Zip", zipBytes({{"c", "c"}, {"d", "d"}, {"a", "new"}}));
    EXPECT_EQ(contentOf(archive, "a"), "old") << "the file that was loaded is still there";
    archive.refresh();
    EXPECT_EQ(contentOf(archive, "b"), "(none)");
    PoolBlk block;
    EXPECT_EQ(cArchiveContainer::_readResourceData(info, block, 0), 3u) << "a record outlives a refresh";
    EXPECT_EQ(std::string(static_cast<char *>(block.data()), 3), "new");
}

TEST_F(ZipArchive, IsReadOnManyThreads)
{
    std::vector<ZipMember> members;
    for (std::size_t i = 0; i < 8; ++i) {
        members.push_back({std::to_string(i), noise(20000 + i), i % 2 == 0});
    }
    iArchive &archive = mount(zipBytes(members));
    std::atomic<int> wrong{0};
    std::thread readers[3];
    for (std::thread &reader : readers) {
        reader = std::thread([&] {
            for (std::size_t i = 0; i < 80; ++i) {
                ZipMember const &member = members[i % 8];
                FileInfo info;
                HashConstCharPtr const file(member.name.c_str());
                std::string content(member.content.size(), '\0');
                if (archive.findFile(file.text, &info, file.hash)) {
                    archive.readFile(&info, content.data(), info.size, info.handle);
                }
                wrong += content != member.content;
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        archive.refresh();
    }
    for (std::thread &reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace Qel
