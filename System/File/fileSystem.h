#pragma once

#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/wString.h"

#include <vector>

namespace Qel {

struct FileInfo;

/// Files and paths of the disk. Both kinds of separator are taken everywhere; what is joined here is joined
/// with `/`, except in buildRelativePath().
///
/// @code
/// StringVector scripts;
/// if (FileSystem::getFiles("media/*.*", scripts, "*.particle", true)) {
///     ...
/// }
/// @endcode
///
/// @par Failures  By result; getLastError() then says why. Nothing is logged or thrown.
/// @par Threads   Any: there is no state.
class QEL_API FileSystem {
public:
    FileSystem() = delete;

    /// Lists the plain files in a folder and in all folders below it, each once.
    ///
    /// Names come sorted by their bytes, a folder's content in its place. Links to files count as files.
    /// Links to folders are followed after everything else, if what they lead to has not been listed already.
    /// Folders more than 256 levels down are left out.
    /// @param search      a folder and, behind the last separator, a wildcard for names, normally `*.*`,
    /// which
    ///                    is every name. Without a wildcard the one file that it names is looked at
    /// @param out         paths are appended, as @p search writes the folder
    /// @param pattern     what names must match besides, see String::match()
    /// @param ignoreCase  for both
    /// @return false if there is no such folder
    static bool getFiles(String const &search, std::vector<String> &out, String const &pattern,
                         bool ignoreCase);

    /// The same for folders: those whose names match, on all levels, without a separator at the end.
    static bool getDirectories(String const &search, std::vector<String> &out, String const &pattern,
                               bool ignoreCase);

    /// The way from the folder @p base to @p target, as text with backslashes; the disk is not looked at, and
    /// "." and ".." are names like any other. Case does not count, and names that were compared come lowered.
    /// A @p target with a drive of its own comes whole, and an empty @p base counts as one folder.
    /// @return empty if both are the same
    static String buildRelativePath(String const &target, String const &base);

    static bool fileExist(String const &path);     ///< Is there anything, also a folder?
    static long long fileSize(String const &path); ///< bytes of a plain file; 0 for anything else

    /// A name that is not taken: @p fileName itself or, before the extension, with a number that counts up:
    /// img007.tga, img008.tga; a.txt, a1.txt; a name of digits alone gets a 0.
    /// @param directory  with its separator: it only goes before the name
    /// @return @p directory and the name
    static String getNextUniqueFilename(String const &directory, String const &fileName);

    /// Fills @p info for a path: name (cut to 255 characters), both sizes, time of change.
    /// @return false if there is nothing, or it has 4 GiB or more; @p info is then as it was
    static bool getFileInfo(String const &path, FileInfo &info, unsigned int);

    static bool deleteFile(String const &path); ///< a file or a link, no folder

    /// Copies a plain file with its rights and time of change.
    /// @return false if it is not complete; there is then no copy
    static bool copyFile(String const &from, String const &to, bool failIfExists);

    /// Moves a file or a folder, a file also to another disk. Never replaces anything.
    static bool moveFile(String const &from, String const &to);

    /// Copies a name in normal form: lower case, with `/` between.
    /// @param out  room for the name and its terminator; may be @p in
    /// @param in   null does nothing
    static void prepareFileName(char *out, char const *in);
    static void prepareFileName(String &path); ///< in place

    /// Why the last operation on this thread that failed did so; empty if none has. Only good right behind
    /// it.
    static WString getLastError();

    static bool touch(String const &path); ///< Sets the time of change of a plain file to now
};

} // namespace Qel
