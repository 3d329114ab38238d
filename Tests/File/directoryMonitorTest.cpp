#include "System/File/directoryMonitorTask.h"

#include "Support/OS/thread.h"
#include "System/Thread/threaded.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Qel {
namespace {

namespace fs = std::filesystem;

constexpr char const *kinds[] = {"modified ", "added ", "old ", "new ", "removed "};

/// What the callbacks were told. Repeated modifications of one file count once.
class Changes {
public:
    static bool add(eDirectoryMonitor change, String const &name)
    {
        std::string text = kinds[change];
        text += name;
        std::lock_guard const guard(lock());
        if (list().empty() || list().back() != text) {
            list().push_back(text);
        }
        return true;
    }
    static std::vector<std::string> take()
    {
        std::lock_guard const guard(lock());
        return std::exchange(list(), {});
    }
    static bool has(std::string const &text)
    {
        std::lock_guard const guard(lock());
        return std::find(list().begin(), list().end(), text) != list().end();
    }

private:
    static std::mutex &lock()
    {
        static std::mutex only;
        return only;
    }
    static std::vector<std::string> &list()
    {
        static std::vector<std::string> only;
        return only;
    }
};

/// A temporary folder. Watches never end, so those of tests before are told that theirs is gone.
class WatchFolder {
public:
    WatchFolder()
    {
        while (os::sleepAlertable(20)) {
        }
        Changes::take();
    }

private:
    test::TempFolder m_folder;
};

// Sleeps alertably until a change has been told of; a last one of its own marks the end of all before it.
std::vector<std::string> takeUpTo(std::string const &marker)
{
    test::writeFile(marker, "");
    std::string const name = fs::path(marker).filename().string();
    EXPECT_TRUE(test::waitUntil([&] { return os::sleepAlertable(20), Changes::has("added " + name); }));
    std::vector<std::string> told = Changes::take();
    while (!told.empty() && told.back().find(name) != std::string::npos) {
        told.pop_back();
    }
    return told;
}

TEST(DirectoryMonitor, TellsWhatHappensToFiles)
{
    WatchFolder const folder;
    fs::create_directories("watched/sub");
    test::writeFile("watched/old", "x");
    ASSERT_LT(DirectoryMonitor::monitorDirectory("watched", &Changes::add, false), 32u);
    fs::path const start = fs::current_path();

    test::writeFile("watched/long name.txt", "x");
    fs::rename("watched/long name.txt", "watched/b");
    fs::current_path("/"); // nothing depends on it
    fs::rename(start / "watched/b", start / "outside");
    fs::rename(start / "outside", start / "watched/c");
    fs::current_path(start);
    fs::last_write_time("watched/c", fs::file_time_type::clock::now());
    fs::remove("watched/c");
    test::writeFile("watched/sub/unseen", "x");
    fs::create_directory("watched/folder");
    EXPECT_EQ(takeUpTo("watched/end"),
              (std::vector<std::string>{"added long name.txt", "modified long name.txt", "old long name.txt",
                                        "new b", "removed b", "added c", "modified c", "removed c"}));

    fs::permissions("watched/old", fs::perms::owner_read);
    fs::permissions("watched/end", fs::perms::owner_read);
    EXPECT_EQ(takeUpTo("watched/end1"), std::vector<std::string>()) << "rights are not content";
    fs::last_write_time("watched/old", fs::file_time_type());
    EXPECT_EQ(takeUpTo("watched/end2"), std::vector<std::string>{"modified old"});

    fs::rename("watched/end", "outside"); // and nothing comes behind it
    EXPECT_TRUE(test::waitUntil([] { return os::sleepAlertable(20), Changes::has("removed end"); }));
}

TEST(DirectoryMonitor, ARecursiveWatchFollowsFolders)
{
    WatchFolder const folder;
    fs::create_directories("watched/a/b");
    fs::create_directories("beside/in");
    test::writeFile("beside/in/brought", "");
    fs::create_directory_symlink("../beside", "watched/link");
    ASSERT_LT(DirectoryMonitor::monitorDirectory(".\\watched", &Changes::add, true), 32u);

    test::writeFile("watched/a/b/f", "");
    fs::create_directories("watched/new/deep");
    test::writeFile("watched/new/deep/g", "");
    test::writeFile("beside/unseen", "");
    EXPECT_EQ(takeUpTo("watched/end1"), (std::vector<std::string>{"added a/b/f", "added new/deep/g"}));

    fs::rename("watched/a", "watched/z");
    fs::rename("watched/z/b/f", "watched/f");
    test::writeFile("watched/z/b/h", "");
    fs::rename("beside/in", "watched/in");
    test::writeFile("watched/in/later", "");
    auto told = takeUpTo("watched/end2");
    std::sort(told.begin() + std::min<std::ptrdiff_t>(3, std::ssize(told)), told.end());
    EXPECT_EQ(told, (std::vector<std::string>{"old z/b/f", "new f", "added z/b/h", "added in/brought",
                                              "added in/later"}));

    fs::rename("watched/z", "beside/z");
    takeUpTo("watched/end3");
    test::writeFile("beside/z/b/unseen", "");
    fs::remove_all("watched/new");
    EXPECT_EQ(takeUpTo("watched/end4"), (std::vector<std::string>{"removed new/deep/g"}));
}

TEST(DirectoryMonitor, ARemovedDirectoryDoesNoHarm)
{
    WatchFolder const folder;
    fs::create_directories("gone/sub");
    fs::create_directory("kept");
    ASSERT_LT(DirectoryMonitor::monitorDirectory("gone", &Changes::add, true), 32u);
    ASSERT_LT(DirectoryMonitor::monitorDirectory("kept", &Changes::add, true), 32u);
    test::writeFile("gone/sub/f", "");
    fs::remove_all("gone");
    takeUpTo("kept/end1");
    fs::create_directory("gone");
    test::writeFile("gone/f", "");
    EXPECT_EQ(takeUpTo("kept/end2"), std::vector<std::string>());
    fs::rename("kept", "moved");
    fs::create_directory("moved/sub");
    test::writeFile("moved/sub/f", "");
    EXPECT_EQ(takeUpTo("moved/end3"), (std::vector<std::string>{"added sub/f"}))
        << "it is still the same one";
    EXPECT_LT(DirectoryMonitor::monitorDirectory("gone", &Changes::add, true), 32u);
}

// As many changes as no queue of the system holds.
TEST(DirectoryMonitor, GoesOnAfterChangesWereLost)
{
    WatchFolder const folder;
    fs::create_directories("watched/old");
    fs::create_directories("watched/leaves");
    ASSERT_LT(DirectoryMonitor::monitorDirectory("watched", &Changes::add, true), 32u);
    std::ifstream limit("/proc/sys/fs/inotify/max_queued_events");
    int most = 0;
    limit >> most;
    ASSERT_GT(most, 0);
    std::ofstream first("watched/first");
    std::ofstream second("watched/second");
    for (int i = 0; i <= most / 2; ++i) {
        first << 'x' << std::flush;
        second << 'x' << std::flush;
    }
    fs::create_directories("watched/fresh/deep");
    test::writeFile("watched/fresh/deep/f", "");
    fs::rename("watched/old", "watched/renamed");
    fs::rename("watched/leaves", "left");
    EXPECT_TRUE(test::waitUntil([] { return os::sleepAlertable(20), Changes::has("added fresh/deep/f"); }));
    Changes::take();
    test::writeFile("watched/renamed/g", "");
    test::writeFile("watched/fresh/h", "");
    test::writeFile("left/unseen", "");
    EXPECT_EQ(takeUpTo("watched/end"), (std::vector<std::string>{"added renamed/g", "added fresh/h"}));
}

std::atomic<int> calls{0};

TEST(DirectoryMonitor, ACallbackThatThrowsIsCalledAgain)
{
    calls = 0;
    WatchFolder const folder;
    ASSERT_LT(DirectoryMonitor::monitorDirectory(
                  ".",
                  [](eDirectoryMonitor, String const &) -> bool {
                      if (++calls == 1) {
                          throw std::runtime_error("first");
                      }
                      throw 5;
                  },
                  false),
              32u);
    test::writeFile("a", "");
    test::writeFile("b", "");
    EXPECT_TRUE(test::waitUntil([] { return os::sleepAlertable(20), calls >= 2; }));
    EXPECT_LT(DirectoryMonitor::monitorDirectory(".", &Changes::add, false), 32u);
    takeUpTo("end");
}

TEST(DirectoryMonitor, WatchesEndWithTheirThread)
{
    WatchFolder const folder;
    std::thread([] { EXPECT_LT(DirectoryMonitor::monitorDirectory(".", &Changes::add, false), 32u); }).join();
    test::writeFile("a", "");
    EXPECT_LT(DirectoryMonitor::monitorDirectory(".", &Changes::add, false), 32u);
    EXPECT_EQ(takeUpTo("end"), std::vector<std::string>());
}

TEST(DirectoryMonitorTask, WatchesForOtherThreads)
{
    WatchFolder const folder;
    fs::create_directory("one");
    fs::create_directory("two");
    tThreaded<DirectoryMonitorTask> task;
    task.monitorDirectory("missing", &Changes::add, true);
    std::thread other([&] { task.monitorDirectory("one", &Changes::add, true); });
    task.monitorDirectory("two", &Changes::add, true);
    other.join();
    // A watch begins at a moment that nobody is told, so that a change may come too early.
    int number = 0;
    for (char const *const name : {"one", "two"}) {
        EXPECT_TRUE(test::waitUntil([&] {
            test::writeFile(fs::path(name) / (name + std::to_string(++number)), "");
            test::pause(1);
            return Changes::has("added " + std::string(name) + std::to_string(number));
        }));
    }
}

TEST(DirectoryMonitorTask, EndsBehindTheCallbackInProgress)
{
    calls = 0;
    WatchFolder const folder;
    auto task = std::make_unique<tThreaded<DirectoryMonitorTask>>();
    task->monitorDirectory(
        ".",
        [](eDirectoryMonitor, String const &) {
            ++calls;
            test::pause(20);
            return true;
        },
        false);
    EXPECT_TRUE(test::waitUntil([] {
        for (int i = 0; i < 50; ++i) {
            test::writeFile(std::to_string(i), "");
        }
        return calls > 0;
    }));
    int const before = calls;
    task.reset();
    EXPECT_LE(calls, before + 3) << "some of the hundreds that wait";
    int const after = calls;
    test::writeFile("late", "");
    test::pause(5);
    EXPECT_EQ(calls, after);
}

// The last one, since it leaves no slot free.
TEST(DirectoryMonitorSlots, AreThirtyTwoAndOnlyTakenByWatches)
{
    WatchFolder const folder;
    test::writeFile("file", "");
    std::string longPath(511, '/');
    longPath[0] = '.';
    unsigned slot = DirectoryMonitor::monitorDirectory(longPath, &Changes::add, false);
    ASSERT_LT(slot, 32u);
    for (String const &path : {String("missing"), String("file"), String(""), String(longPath + "/")}) {
        EXPECT_EQ(DirectoryMonitor::monitorDirectory(path, &Changes::add, true), 32u) << path.c_str();
    }
    EXPECT_EQ(DirectoryMonitor::monitorDirectory(".", nullptr, true), 32u);
    while (++slot < 32) {
        EXPECT_EQ(DirectoryMonitor::monitorDirectory(longPath, &Changes::add, slot % 2 == 0), slot);
    }
    EXPECT_EQ(DirectoryMonitor::monitorDirectory(".", &Changes::add, false), 32u);
    takeUpTo("end");
}

} // namespace
} // namespace Qel
