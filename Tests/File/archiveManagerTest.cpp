#include "System/File/archiveManager.h"

#include "System/File/archiveFactory.h"
#include "System/File/archiveStreaming.h"
#include "System/System/pluginMgr.h"

#include "Tests/Tools/logLines.h"
#include "Tests/Tools/memoryArchive.h"
#include "Tests/virtualSlot.h"

#include "Support/PoolHeap/poolBlk.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Qel {
namespace {

using test::MemoryArchive;

class Factory : public ArchiveFactory {
public:
    explicit Factory(char const *type) : m_type(type) {}
    String getType() const override { return m_type; }
    iArchive *createInstance(String const &name) override
    {
        ++made;
        auto archive = std::make_unique<Counted>(*this, name);
        archive->loads = loads;
        return gives ? archive.release() : nullptr;
    }

    int made = 0;
    int alive = 0;
    bool loads = true;
    bool gives = true;

private:
    class Counted : public MemoryArchive {
    public:
        Counted(Factory &factory, char const *archiveName)
            : MemoryArchive(archiveName, {{"a.txt", "content"}}), m_factory(factory)
        {
            ++m_factory.alive;
        }
        ~Counted() override { --m_factory.alive; }

    protected:
        bool stream_callback(PoolBlk &data, eStreamCallback) override
        {
            size = data.size();
            loaded = true;
            return true;
        }

    private:
        Factory &m_factory;
    };

    String m_type;
};

struct ArchiveManagerTest : testing::Test {
    ~ArchiveManagerTest() override { cArchiveContainer::mCommonArchives.cleanupArchives(); }

    test::LogLines log;
    Factory pack{"PACK"};
    ArchiveManager manager;
};

TEST_F(ArchiveManagerTest, MakesAnArchiveOncePerName)
{
    Factory second("PACK");
    Factory other("OTHER");
    manager.addArchiveFactory(nullptr);
    manager.addArchiveFactory(&pack);
    EXPECT_EQ(log.take(), "ArchiveFactory type 'PACK' registered.\n");
    manager.addArchiveFactory(&second);
    manager.addArchiveFactory(&other);
    log.take();

    iArchive *const archive = manager.load("Media\\One.pak", "PACK");
    ASSERT_NE(archive, nullptr);
    EXPECT_STREQ(archive->getName(), "media/one.pak");
    EXPECT_STREQ(archive->getFactoryName(), "PACK");
    EXPECT_TRUE(archive->isLoaded());
    EXPECT_EQ(manager.load("MEDIA/one.PAK", "OTHER"), archive);
    EXPECT_EQ(second.made + other.made, 0) << "the first factory of a type stays";

    EXPECT_EQ(manager.load("x", "ZAP"), nullptr);
    EXPECT_EQ(log.take(), "ArchiveFactory type 'ZAP' Unknown!\n");
    pack.gives = false;
    EXPECT_EQ(manager.load("y", "PACK"), nullptr);
    EXPECT_EQ(manager.Register("a.txt", PRIORITY_MOST_URGENT, false, nullptr), 0u) << "not made by name";
}

TEST_F(ArchiveManagerTest, MountsByNameAndTypeAndSaysSo)
{
    manager.addArchiveFactory(&pack);
    log.take();
    cArchiveContainer files;
    testing::internal::CaptureStdout();
    files.addArchive("One", "PACK");
    files.addArchive("Two", "ZAP");
    cArchiveContainer::addCommonArchive("Three", "PACK");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "addArchive(One,PACK)\naddArchive(Two,ZAP)\naddArchive(Three,PACK)\n");
    EXPECT_EQ(log.take(), "ArchiveFactory type 'ZAP' Unknown!\n");
    EXPECT_EQ(pack.alive, 2);
    EXPECT_TRUE(files._findResource("A.txt", nullptr));

    cArchiveContainer::setInternals("three", "PACK");
    EXPECT_NE(cArchiveContainer::mInternals, nullptr);
    cArchiveContainer::setInternals("four", "ZAP");
    EXPECT_EQ(cArchiveContainer::mInternals, nullptr);
    cArchiveContainer::refreshExternals("loose");
    EXPECT_EQ(cArchiveContainer::mExternals, nullptr) << "there is no type FILESYSTEM";
    Factory loose("FILESYSTEM");
    manager.addArchiveFactory(&loose);
    cArchiveContainer::refreshExternals("loose");
    cArchiveContainer::refreshExternals("loose");
    EXPECT_NE(cArchiveContainer::mExternals, nullptr);
    EXPECT_EQ(loose.made, 1);
    manager.removeArchiveFactory(&loose);
    EXPECT_EQ(cArchiveContainer::mExternals, nullptr);
}

TEST_F(ArchiveManagerTest, GivesAnArchiveThatWouldNotLoadAndLooksForItInTheOthers)
{
    manager.addArchiveFactory(&pack);
    pack.loads = false;
    iArchive *const failed = manager.load("nowhere", "PACK");
    ASSERT_NE(failed, nullptr);
    EXPECT_FALSE(failed->isLoaded());

    MemoryArchive outer("outer", {{"inner.pak", "packed"}});
    manager.addArchive(outer);
    iArchive *const inner = manager.load("Inner.pak", "PACK");
    ASSERT_NE(inner, nullptr);
    EXPECT_TRUE(inner->isLoaded());
    EXPECT_EQ(inner->getSize(), 6u);
}

TEST_F(ArchiveManagerTest, DestroysWhatAFactoryMadeWhenItGoes)
{
    struct Streamer : iArchiveStreaming {
        explicit Streamer(Factory &watched) : factory(watched) {}
        void flushRequests() override { aliveAtFlush = factory.alive; }
        void requestFile(FileInfo *, StreamCallback, void *, unsigned int, ePriority) override {}
        void abortFile(char const *) override {}
        Factory &factory;
        int aliveAtFlush = -1;
    } streamer(pack);
    cArchiveContainer::setStreamingMgr(&streamer);
    Factory other("OTHER");
    manager.addArchiveFactory(&pack);
    manager.addArchiveFactory(&other);
    cArchiveContainer files;
    iArchive *const first = manager.load("one", "PACK");
    files.addArchive(*first);
    manager.load("two", "OTHER");
    first->incRefCount();

    manager.removeArchiveFactory(&pack);
    EXPECT_EQ(streamer.aliveAtFlush, 1) << "nobody may be reading when it goes";
    EXPECT_EQ(pack.alive, 0);
    EXPECT_EQ(other.alive, 1);
    EXPECT_FALSE(files._findResource("a.txt", nullptr));
    EXPECT_EQ(manager.load("one", "PACK"), nullptr);
    manager.removeArchiveFactory(&pack);
    manager.unloadAndDestroyAll();
    EXPECT_EQ(other.alive, 0);
    cArchiveContainer::setStreamingMgr(nullptr);
}

// A plugin that fails to start, or goes without cleaning up, leaves nothing that would call into it.
TEST_F(ArchiveManagerTest, TakesBackWhatAPluginHasRegistered)
{
    struct Streamer : iArchiveStreaming {
        void flushRequests() override {}
        void requestFile(FileInfo *, StreamCallback, void *, unsigned int, ePriority) override {}
        void abortFile(char const *) override {}
    } streamer;
    Factory host("HOST");
    PluginMgr plugins;
    Plugin plugin("some plugin");
    manager.addArchiveFactory(&host);
    plugins._beginStart(&plugin);
    manager.addArchiveFactory(&pack);
    cArchiveContainer::setStreamingMgr(&streamer);
    plugins._endStart();
    manager.load("one", "PACK");
    manager.load("two", "HOST");

    plugins._takeBack(&plugin);
    EXPECT_EQ(pack.alive, 0);
    EXPECT_EQ(host.alive, 1);
    EXPECT_EQ(cArchiveContainer::streamer, nullptr);
    EXPECT_EQ(manager.getArchiveFactories().size(), 1u);
    manager.unloadAndDestroyAll();
}

// Plugins are built against the places.
TEST(ArchiveSlots, StandInTheirOrder)
{
    // behind those of cResource; a destructor takes two places
    using A = iArchive;
    EXPECT_TRUE(standInOrder(8, &A::getComment, &A::isReadOnly, &A::getModTime, &A::exists, &A::openFile,
                             &A::closeFile, &A::findFile, &A::getFileInfo, &A::readFile, &A::writeFile,
                             &A::removeFile, &A::renameFile, &A::createFolder, &A::removeFolder,
                             &A::listFolder, &A::getFileTime, &A::setFileTime, &A::getNumFiles, &A::getFile,
                             &A::refresh));
    using S = iArchiveStreaming;
    EXPECT_TRUE(standInOrder(2, &S::flushRequests, &S::requestFile, &S::abortFile, &S::deliverFinished));
    EXPECT_TRUE(standInOrder(2, &ArchiveFactory::getType, &ArchiveFactory::createInstance));
}

TEST(ArchiveDefaults, SayNotSupported)
{
    MemoryArchive archive("a", {{"f", "1"}});
    HashConstCharPtr const file("f");
    StringVector names;
    FileInfo info;
    EXPECT_EQ(archive.openFile(file), nullptr);
    archive.closeFile(nullptr);
    EXPECT_EQ(archive.writeFile("f", "", 0), 0u);
    EXPECT_FALSE(archive.removeFile("f") || archive.renameFile("f", "g") || archive.createFolder("d") ||
                 archive.removeFolder("d") || archive.setFileTime("f", 1));
    EXPECT_EQ(archive.listFolder("", names), 0u);
    EXPECT_EQ(archive.getFileTime(file) + archive.getModTime(), 0);
    EXPECT_TRUE(archive.isReadOnly());
    EXPECT_TRUE(archive.getComment().empty());
    EXPECT_TRUE(archive.getFileInfo(0, &info));
    EXPECT_FALSE(archive.getFileInfo(1, &info));
}

} // namespace
} // namespace Qel
