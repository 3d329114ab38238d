#pragma once

#include "System/File/archive.h"
#include "System/File/archiveContainer.h"
#include "System/File/archiveManager.h"
#include "System/File/fileInfo.h"
#include "System/System/pluginMgr.h"

#include "Tests/Tools/logLines.h"
#include "Tests/Tools/tempFolder.h"

#include "Support/PoolHeap/poolBlk.h"

#include <gtest/gtest.h>

#include <string>

namespace Qel {

/// A plugin that is loaded and started for a test, and comes off with it.
class StartedPlugin {
public:
    explicit StartedPlugin(char const *file) : m_plugin(PluginMgr::Instance().load(file))
    {
        call("dllStartPlugin");
    }
    ~StartedPlugin()
    {
        call("dllStopPlugin");
        PluginMgr::Instance().unload(m_plugin);
    }

    StartedPlugin(StartedPlugin const &) = delete;
    StartedPlugin &operator=(StartedPlugin const &) = delete;

private:
    void call(char const *name) { reinterpret_cast<void (*)()>(m_plugin->getSymbol(name))(); }

    Plugin *m_plugin;
};

/// What a test of a plugin with archives needs, in an empty folder.
class ArchivePlugin : public testing::Test {
protected:
    /// @param options  content of its file of options, if it has one
    explicit ArchivePlugin(char const *file, char const *optionsFile = nullptr, char const *options = nullptr)
        : folder(optionsFile, options), plugin(file)
    {
    }

    /// A file's content by its name in an archive; "(none)" if it is not found, "(unread)" if that fails.
    static std::string contentOf(iArchive &archive, char const *name)
    {
        FileInfo info;
        HashConstCharPtr const file(name);
        bool const found = archive.findFile(name, &info, file.hash);
        EXPECT_EQ(archive.exists(file), found);
        if (!found) {
            return "(none)";
        }
        EXPECT_STREQ(info.name, name);
        EXPECT_EQ(info.archive, &archive);
        PoolBlk block;
        if (cArchiveContainer::_readResourceData(info, block, 0) == 0) {
            return info.size == 0 ? "" : "(unread)";
        }
        return {static_cast<char const *>(block.data()), block.size()};
    }

    /// What an archive tells of a file that it has.
    static FileInfo lookUp(iArchive &archive, char const *name)
    {
        FileInfo info;
        EXPECT_TRUE(archive.findFile(name, &info, HashConstCharPtr(name).hash)) << name;
        return info;
    }

    struct PreparedFolder : test::TempFolder {
        PreparedFolder(char const *file, char const *content)
        {
            if (file != nullptr) {
                test::writeFile(file, content);
            }
        }
    };

    PreparedFolder folder;
    test::LogLines log;
    PluginMgr plugins;
    ArchiveManager manager;
    StartedPlugin plugin;
};

/// Spellings of a way out, and of the working folder's own files by a detour. None of them is ever a name.
inline char const *const waysOut[] = {
    "../secret.txt",
    "..\\secret.txt",
    "sub/../../secret.txt",
    "sub\\..\\..\\secret.txt",
    "./a.txt",
    "sub/./../a.txt",
    "sub/..",
    "..",
    ".",
    "",
    "/etc/passwd",
    "\\etc\\passwd",
    "//etc/passwd",
    "\\\\server\\share\\a.txt",
    "c:/a.txt",
    "c:\\a.txt",
    "c:a.txt",
    "sub//b.txt",
    "a.txt/",
    "a.txt/.",
    "sub/../a.txt",
    "...//a.txt",
    "%2e%2e/secret.txt",
    "../media/a.txt",
};

} // namespace Qel
