#include "System/Time/osInfo.h"
#include "Support/OS/process.h"
#include "Support/OS/thread.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <sys/utsname.h>

using namespace Qel;

namespace {

os::SystemVersion answered;
bool answers = true;

bool answer(os::SystemVersion &version)
{
    version = answered;
    return answers;
}

void forget()
{
    OsInfo::osType = OS_NOT_DETECTED;
    OsInfo::osBuild = {};
}

} // namespace

TEST(OsInfo, TellsTheSystemFromItsVersion)
{
    std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, char const *, int, char const *> const rows[] = {
        {0, 3, 10, "", 2, "Microsoft Windows 3.1"},
        {1, 4, 0, "", 3, "Microsoft Windows 95"},
        {1, 4, 0, " B", 4, "Microsoft Windows 95 osr2"},
        {1, 4, 0, " C", 4, "Microsoft Windows 95 osr2"},
        {1, 4, 0, "C", 3, "Microsoft Windows 95"}, // the second character counts
        {1, 4, 10, "", 6, "Microsoft Windows 98"},
        {1, 4, 10, " A", 7, "Microsoft Windows 98 se"},
        {1, 4, 90, " A", 8, "Microsoft Windows Millennium"},
        {1, 4, 1, "", 1, "Unknown"},
        {2, 4, 0, "", 5, "Microsoft Windows NT"},
        {2, 3, 51, "", 5, "Microsoft Windows NT"},
        {2, 5, 0, "", 9, "Microsoft Windows 2000"},
        {2, 5, 1, "", 10, "Microsoft Windows XP"},
        {2, 5, 2, "", 11, "Microsoft Windows Server"},
        {2, 5, 3, "", 1, "Unknown"},
        {2, 6, 0, "", 12, "Microsoft Windows Vista"},
        {2, 6, 1, "", 13, "Microsoft Windows"},
        {2, 10, 0, "", 13, "Microsoft Windows"},
        {3, 6, 1, "", 1, "Unknown"},
    };
    os::SystemVersionScope const scope(answer);
    answers = true;
    for (auto const &[platform, major, minor, servicePack, type, text] : rows) {
        SCOPED_TRACE(testing::Message() << platform << ' ' << major << '.' << minor);
        forget();
        answered = {platform, major, minor, 2600, 2, 1};
        std::strncpy(answered.servicePack, servicePack, sizeof answered.servicePack - 1);
        EXPECT_EQ(OsInfo::os_getVersion(), type);
        EXPECT_STREQ(OsInfo::os_getString(), text);
        sOsBuild const build = *OsInfo::os_getBuild();
        EXPECT_EQ(
            std::tuple(build.major, build.minor, build.build, build.servicePackMajor, build.servicePackMinor),
            std::tuple(major, minor, 2600u, 2u, 1u));
        EXPECT_TRUE(OsInfo::os_meetsRequirements(static_cast<OS_TYPE>(type)));
        EXPECT_FALSE(OsInfo::os_meetsRequirements(static_cast<OS_TYPE>(type + 1)));
    }
    forget();
}

TEST(OsInfo, AsksOnceItGotAnAnswerAndIsNothingBefore)
{
    os::SystemVersionScope const scope(answer);
    forget();
    answers = false;
    EXPECT_EQ(OsInfo::os_getVersion(), 0);
    EXPECT_STREQ(OsInfo::os_getString(), "Not Detected");
    EXPECT_TRUE(OsInfo::os_meetsRequirements(OS_NOT_DETECTED));
    EXPECT_FALSE(OsInfo::os_meetsRequirements(OS_UNKNOWN));
    answers = true;
    answered = {};
    answered.platform = os::SystemVersion::windowsNt;
    answered.major = 5;
    OsInfo const detects;
    EXPECT_EQ(OsInfo::osType, OS_WINDOWS_2000);
    answered.major = 4;
    EXPECT_EQ(OsInfo::os_getVersion(), OS_WINDOWS_2000);
    forget();
}

TEST(OsInfo, KnowsTheKernelOfThisMachine)
{
    forget();
    utsname name{};
    ASSERT_EQ(uname(&name), 0);
    sOsBuild const build = *OsInfo::os_getBuild();
    std::string const release =
        std::to_string(build.major) + '.' + std::to_string(build.minor) + '.' + std::to_string(build.build);
    EXPECT_EQ(std::string(name.release).substr(0, release.size()), release);
    EXPECT_EQ(OsInfo::os_getVersion(), OS_UNKNOWN);
}

TEST(OsInfo, FindsTheThreadsBetweenTwoSnapshots)
{
    std::vector<unsigned> before{1, 2};
    ASSERT_TRUE(OsInfo::getProcessThreadsSnapshot(before));
    EXPECT_EQ(before[0], 1u); // added to, not cleared
    EXPECT_NE(std::ranges::find(before, os::currentThreadId()), before.end());

    std::atomic<unsigned> id{0};
    std::atomic<bool> go{false};
    std::thread thread([&] {
        OsInfo::setThreadName(os::currentThreadId(), "a name longer than that");
        OsInfo::setThreadName(os::currentThreadId(), nullptr);
        id = os::currentThreadId();
        id.notify_all();
        go.wait(false);
    });
    id.wait(0);
    std::vector<unsigned> after;
    ASSERT_TRUE(OsInfo::getProcessThreadsSnapshot(after));
    std::vector<unsigned> const started = OsInfo::getProcessThreadsSnapshotDiff(before, after);
    EXPECT_NE(std::ranges::find(started, id.load()), started.end());
    EXPECT_EQ(test::readFile("/proc/self/task/" + std::to_string(id) + "/comm"), "a name longer t\n");
    OsInfo::setThreadName(0, "nobody");
    EXPECT_EQ(std::ranges::find(started, os::currentThreadId()), started.end());
    go = true;
    go.notify_all();
    thread.join();

    std::vector<unsigned> old{3, 1, 2};
    EXPECT_TRUE(OsInfo::getProcessThreadsSnapshotDiff(old, {1, 2, 3}).empty());
    EXPECT_EQ(OsInfo::getProcessThreadsSnapshotDiff(old, {9, 1, 7, 9}), (std::vector<unsigned>{9, 7, 9}));
}
