#include "System/File/archiveContainer.h"

#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"

#include "Tests/Tools/logLines.h"
#include "Tests/Tools/memoryArchive.h"
#include "Tests/math/atEveryLevel.h"

#include "Support/PoolHeap/poolBlk.h"
#include "Support/PoolHeap/poolHeap.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>

namespace Qel {
namespace {

using test::MemoryArchive;

constexpr std::uint32_t context = 0x7E57C0;

class ArchiveContainer : public testing::Test {
protected:
    ~ArchiveContainer() override
    {
        cArchiveContainer::mCommonArchives.cleanupArchives();
        cArchiveContainer::mExternals = nullptr;
        cArchiveContainer::mInternals = nullptr;
        cArchiveContainer::setStreamingMgr(nullptr);
    }

    // The archive that a name is found in, or "".
    std::string ownerOf(char const *name)
    {
        FileInfo info;
        return files._findResource(name, &info) && info.archive != nullptr ? info.archive->getName().c_str()
                                                                           : "";
    }

    cArchiveContainer files;
};

TEST_F(ArchiveContainer, ResolvesInItsOrderWhateverTheSpelling)
{
    MemoryArchive base("base", {{"data/foo.tga", "1"}, {"both", "1"}, {"all", "1"}, {"loose", "1"}});
    MemoryArchive patch("patch", {{"both", "2"}, {"all", "2"}, {"loose2", "2"}});
    MemoryArchive common("common", {{"all", "3"}, {"shared", "3"}});
    MemoryArchive externals("externals", {{"loose", "4"}, {"loose2", "4"}, {"unlisted", "4"}});
    MemoryArchive internals("internals", {{"last", "5"}, {"both", "5"}});

    files.addArchive(base);
    cArchiveContainer::mExternals = &externals;
    files.addArchive(patch);
    cArchiveContainer::mCommonArchives.addArchive(common);

    EXPECT_EQ(ownerOf("Data\\Foo.TGA"), "base");
    EXPECT_EQ(ownerOf("both"), "patch") << "the one added last";
    EXPECT_EQ(ownerOf("all"), "common") << "the common container comes first";
    EXPECT_EQ(ownerOf("SHARED"), "common");
    EXPECT_EQ(ownerOf("loose2"), "externals") << "a loose file beats any archive";
    EXPECT_EQ(ownerOf("loose"), "base") << "mounted before there were loose files";
    EXPECT_EQ(ownerOf("unlisted"), "") << "a loose file that no archive has";
    EXPECT_EQ(ownerOf("last"), "");

    files.refreshArchive();
    EXPECT_EQ(ownerOf("loose"), "externals");

    cArchiveContainer::mInternals = &internals;
    EXPECT_EQ(ownerOf("last"), "internals") << "asked though never listed";
    EXPECT_TRUE(files._findResource("last", nullptr));
    EXPECT_FALSE(files._findResource("nowhere", nullptr));
    EXPECT_EQ(ownerOf("both"), "internals") << "the common container is asked whole, and that asks it";

    patch.answersNo = true;
    cArchiveContainer::mInternals = nullptr;
    EXPECT_FALSE(files._findResource("both", std::make_unique<FileInfo>().get())) << "no second try";
    EXPECT_TRUE(files._findResource("both", nullptr)) << "the table alone is asked";
}

TEST_F(ArchiveContainer, TakesNamesOfAnyLength)
{
    MemoryArchive archive("a");
    for (std::size_t const length : {1u, 254u, 255u, 256u, 258u, 259u, 260u, 5000u}) {
        archive.files.emplace_back(std::string(length, 'n'), "content");
    }
    files.addArchive(archive);

    for (auto const &[name, content] : archive.files) {
        SCOPED_TRACE(name.size());
        FileInfo info;
        EXPECT_EQ(files._findResource(name.c_str(), &info), name.size() <= 259);
        EXPECT_EQ(files._findResource(name.c_str(), nullptr), name.size() <= 259);
        if (name.size() <= 259) {
            EXPECT_EQ(std::string(info.name), name.substr(0, 255));
        }
        EXPECT_TRUE(files._findResource(HashConstCharPtr(name.c_str()), &info));
    }
    EXPECT_FALSE(files._findResource(static_cast<char const *>(nullptr), nullptr));
    EXPECT_FALSE(files._findResource(HashConstCharPtr(), nullptr));
    EXPECT_FALSE(files._findResource("", nullptr));
}

// Short names go through whole vectors, which must not be read beyond a page; and only the beginning of a
// name is compared first.
TEST_F(ArchiveContainer, FindsANameAsItIsWrittenWhereverItLies)
{
    MemoryArchive archive("a");
    std::string all;
    for (int i = 0; i < 200; ++i) {
        all += static_cast<char>(i % 7 == 6 ? '/' : 'a' + i * i % 26);
    }
    for (std::size_t length = 1; length <= all.size(); ++length) {
        archive.files.emplace_back(all.substr(0, length), "");
    }
    files.addArchive(archive);

    constexpr std::size_t page = 4096;
    std::vector<char> memory(3 * page, 'x');
    void *aligned = memory.data();
    std::size_t room = memory.size();
    char *const boundary = static_cast<char *>(std::align(page, 2 * page, aligned, room)) + page;
    atEveryLevel([&] {
        for (auto const &[name, content] : archive.files) {
            for (int const before : {0, 1, 31, 63, 64, 65, 200, 300}) {
                char *const written = boundary - before;
                std::size_t const end = name.size();
                for (std::size_t i = 0; i < end; ++i) {
                    char const c = name[i];
                    written[i] = c == '/' ? '\\' : i % 3 == 0 ? static_cast<char>(c - 'a' + 'A') : c;
                }
                written[end] = '\0';
                FileInfo info;
                EXPECT_TRUE(files._findResource(written, &info));
                EXPECT_STREQ(info.name, name.c_str()) << before;
                written[end - 1] = '#';
                EXPECT_FALSE(files._findResource(written, nullptr)) << name << before;
            }
        }
    });
}

// Against a map as the judge: three archives with a random part of one set of names each.
TEST_F(ArchiveContainer, FindsEveryNameOfManyAndNoOther)
{
    std::mt19937 random(7);
    std::map<std::string, std::string> owners;
    std::unique_ptr<MemoryArchive> archives[3];
    for (std::unique_ptr<MemoryArchive> &archive : archives) {
        std::string const name(1, static_cast<char>('0' + (&archive - archives)));
        archive = std::make_unique<MemoryArchive>(name.c_str());
        for (int i = 0; i < 300; ++i) {
            std::string const file = std::to_string(random() % 600) + "/file.dat";
            if (archive->indexOf(file.c_str()) == archive->files.size()) {
                archive->files.emplace_back(file, "x");
                owners[file] = name;
            }
        }
        files.addArchive(*archive);
    }
    for (int i = 0; i < 600; ++i) {
        std::string const file = std::to_string(i) + "/file.dat";
        ASSERT_EQ(ownerOf(file.c_str()), owners.contains(file) ? owners[file] : "") << file;
    }
    StringVector list;
    EXPECT_EQ(files.getFileList(list, "*"), owners.size());
}

// Hashes made to collide must not be mixed up, and the way to them must not be long.
TEST_F(ArchiveContainer, TellsNamesOfOneHashApart)
{
    class OneHash : public MemoryArchive {
    public:
        using MemoryArchive::MemoryArchive;
        HashConstCharPtr getFile(int index) override
        {
            return {MemoryArchive::getFile(index).text, 0x1234567};
        }
    } archive("one");
    for (int i = 0; i < 1000; ++i) {
        archive.files.emplace_back(std::to_string(i * 7), "x");
    }
    files.addArchive(archive);
    for (int i = 0; i < 7000; ++i) {
        std::string const name = std::to_string(i);
        ASSERT_EQ(files._findResource(HashConstCharPtr(name.c_str(), 0x1234567), nullptr), i % 7 == 0)
            << name;
    }
}

TEST_F(ArchiveContainer, ListsNamesByPattern)
{
    MemoryArchive archive("a", {{"a.tga", ""}, {"b/c.tga", ""}, {"d.txt", ""}});
    MemoryArchive common("common", {{"e.tga", ""}});
    files.addArchive(archive);
    cArchiveContainer::mCommonArchives.addArchive(common);

    struct {
        char const *pattern;
        unsigned int self, all;
    } const rows[] = {{nullptr, 3, 4}, {"*", 3, 4}, {"*.TGA", 2, 3}, {"B\\?.tga", 1, 1}, {"*x", 0, 0}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.pattern == nullptr ? "null" : row.pattern);
        StringVector list(3);
        EXPECT_EQ(files.getFileListSelf(list, row.pattern), row.self + 3);
        list.clear();
        EXPECT_EQ(files.getFileList(list, row.pattern), row.all);
    }
    StringVector list;
    EXPECT_EQ(cArchiveContainer::mCommonArchives.getFileList(list, nullptr), 1u);
}

TEST_F(ArchiveContainer, ForgetsAndRereads)
{
    struct Streamer : iArchiveStreaming {
        void flushRequests() override { ++flushes; }
        void requestFile(FileInfo *, StreamCallback, void *, unsigned int, ePriority) override {}
        void abortFile(char const *) override {}
        int flushes = 0;
    } streamer;
    cArchiveContainer::setStreamingMgr(&streamer);
    test::LogLines log(3);
    MemoryArchive first("first", {{"a", "1"}, {"gone", "1"}});
    MemoryArchive second("second", {{"a", "2"}});
    files.addArchive(first);
    files.addArchive(second);

    first.onDisk = {{"a", "1"}, {"new", "1"}};
    files.refreshArchive();
    EXPECT_EQ(ownerOf("a"), "second") << "the order holds";
    EXPECT_EQ(ownerOf("gone"), "");
    EXPECT_EQ(ownerOf("new"), "first");
    EXPECT_NE(log.take().find("cArchiveContainer::cleanupArchives() vfs=2 arcfs=2\n"), std::string::npos);

    files.cleanupArchives();
    EXPECT_EQ(ownerOf("a"), "");
    log.take();
    files.cleanupArchives();
    EXPECT_NE(log.take().find("vfs=0 arcfs=0\n"), std::string::npos);
    EXPECT_EQ(streamer.flushes, 3);
    cArchiveContainer::setStreamingMgr(nullptr);
}

TEST_F(ArchiveContainer, ForgetsAnArchiveThatDies)
{
    auto first = std::make_unique<MemoryArchive>("first", MemoryArchive::Files{{"a", "1"}, {"b", "1"}});
    auto second = std::make_unique<MemoryArchive>("second", MemoryArchive::Files{{"b", "2"}});
    auto loose = std::make_unique<MemoryArchive>("loose", MemoryArchive::Files{{"a", "3"}});
    cArchiveContainer::mExternals = loose.get();
    cArchiveContainer::mInternals = loose.get();
    files.addArchive(*first);
    files.addArchive(*second);
    EXPECT_EQ(ownerOf("a"), "loose");

    loose.reset();
    second.reset();
    EXPECT_EQ(cArchiveContainer::mExternals, nullptr);
    EXPECT_EQ(cArchiveContainer::mInternals, nullptr);
    EXPECT_EQ(ownerOf("a"), "");
    EXPECT_EQ(ownerOf("b"), "");
    files.refreshArchive();
    EXPECT_EQ(ownerOf("a"), "first");
    EXPECT_EQ(ownerOf("b"), "first");
    first.reset();
    files.refreshArchive();
    EXPECT_EQ(ownerOf("a"), "");
}

TEST_F(ArchiveContainer, PassesOverWhatAnArchiveOnlyClaimsToHold)
{
    MemoryArchive archive("a", {{"a", "1"}, {"b", "2"}});
    for (int const claimed : {-5, 100, 0x7FFFFFFF}) {
        SCOPED_TRACE(claimed);
        archive.countClaimed = claimed;
        files.cleanupArchives();
        files.addArchive(archive);
        StringVector list;
        EXPECT_EQ(files.getFileListSelf(list, nullptr), claimed < 0 ? 0u : 2u);
    }
}

TEST_F(ArchiveContainer, ReadsWhatIsThereAndNothingMore)
{
    MemoryArchive archive("a", {{"file", "0123456789"}});
    files.addArchive(archive);
    struct {
        char const *what;
        std::uint32_t size;
        unsigned int claimed;
        bool result;
        std::string content;
    } const rows[] = {
        {"honest", 10, 10, true, "0123456789"},
        {"says it has read more than there is room for", 4, 10, true, "0123"},
        {"shorter than its record said", 14, 10, true, std::string("0123456789\0\0\0\0", 14)},
        {"nothing read", 10, 0, false, ""},
        {"empty", 0, 0, false, ""},
        {"a size that is a lie", 0xFFFFFFFF, 10, false, ""},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        archive.sizeOf = [&](std::string const &) { return row.size; };
        archive.claims = [&](std::string const &) { return row.claimed; };
        PoolBlk block;
        EXPECT_EQ(files._findResourceData("FILE", block, context, nullptr), row.result);
        if (row.result) {
            EXPECT_EQ(std::string(static_cast<char const *>(block.data()), block.size()), row.content);
        }
    }
    PoolBlk block;
    EXPECT_FALSE(files._findResourceData("other", block, context, nullptr));

    archive.sizeOf = nullptr;
    archive.claims = [](std::string const &) { return 0u; };
    for (int i = 0; i < 10000; ++i) {
        PoolBlk failed;
        FileInfo info;
        EXPECT_FALSE(files._findResourceData("file", failed, context, &info));
    }
    PoolHeap::ContextCounts counts;
    ASSERT_TRUE(PoolHeap::context_counts(context, counts));
    EXPECT_EQ(counts.liveBlocks, 0u);
}

TEST_F(ArchiveContainer, LooksThingsUpWhileAnArchiveIsAdded)
{
    class Asking : public MemoryArchive {
    public:
        Asking(cArchiveContainer &asked, MemoryArchive &other)
            : MemoryArchive("asking", {{"a", "2"}, {"c", "2"}}), m_files(asked), m_other(other)
        {
        }
        HashConstCharPtr getFile(int index) override
        {
            EXPECT_TRUE(m_files._findResource("a", nullptr));
            EXPECT_FALSE(m_files._findResource("c", nullptr));
            if (index == 1) {
                m_files.addArchive(m_other);
            }
            return MemoryArchive::getFile(index);
        }

    private:
        cArchiveContainer &m_files;
        MemoryArchive &m_other;
    };
    MemoryArchive first("first", {{"a", "1"}});
    MemoryArchive other("other", {{"d", "1"}});
    Asking asking(files, other);
    files.addArchive(first);
    files.addArchive(asking);
    EXPECT_EQ(ownerOf("a"), "asking");
    EXPECT_EQ(ownerOf("c"), "asking");
    EXPECT_EQ(ownerOf("d"), "other");
}

TEST(FileInfoTest, CutsItsNameAndKnowsDates)
{
    FileInfo info;
    for (std::size_t const length : {0u, 254u, 255u, 256u, 5000u}) {
        info.setName(std::string(length, 'a').c_str());
        EXPECT_EQ(std::string(info.name), std::string(std::min<std::size_t>(length, 255), 'a'));
    }
    EXPECT_FALSE(info.getModDate(2000, 1, 1)) << "time unknown";
    info.modTime = 1000000000;
    EXPECT_TRUE(info.getModDate(0, 0, 0));
    info.modTime = INT64_MAX;
    EXPECT_FALSE(info.getModDate(2000, 1, 1)) << "no year for it";
    info.reset();
    EXPECT_EQ(info.modTime, 0);
    EXPECT_STREQ(info.name, "");
}

} // namespace
} // namespace Qel
