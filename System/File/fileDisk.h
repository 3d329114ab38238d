#pragma once

#include "System/File/file.h"

#include <cstdint>
#include <cstdio>

namespace Qel {

class cFileMem;

/// How cFileDisk::open() opens a file.
enum eOpenMode : std::uint32_t {
    OPEN_READ = 0,      ///< an existing file, to read
    OPEN_READWRITE = 1, ///< a file to read and write, made if there is none; its content stays
    OPEN_WRITE = 2      ///< a file to write, made or emptied
};

/// A stream over a file on disk. Cannot be copied; moves.
///
/// A write has reached the operating system when it returns, so that a full disk shows in its result and not
/// later. Gather many small values in a cFileTempMem and write that.
///
/// @code
/// cFileDisk file("save.dat", OPEN_WRITE);
/// bool const saved = file.write(contents) == contents.size();
/// @endcode
///
/// @par Limits  Content beyond 4 GiB less one byte cannot be reached: reads end there, and so does size().
class QEL_API cFileDisk : public cFile {
public:
    cFileDisk() = default;
    cFileDisk(char const *path, eOpenMode mode); ///< open(); a failure shows in every later call
    cFileDisk(cFileDisk &&other) noexcept;       ///< leaves @p other closed
    cFileDisk &operator=(cFileDisk &&other) noexcept;
    cFileDisk(cFileDisk const &) = delete;
    cFileDisk &operator=(cFileDisk const &) = delete;
    ~cFileDisk() override; ///< closes

    unsigned int read(void *buffer, unsigned int size) override;

    /// @return @p size; 0 if not all of it reached the system, with the position as before
    unsigned int write(void const *buffer, unsigned int size) override;

    /// Any position may be sought: a write behind the end leaves zeros between.
    /// @return 0, also while closed; anything else is a failure
    unsigned int seek(unsigned int position) override;

    unsigned int size() const override;                       ///< 0 while closed
    unsigned int tell() const override { return m_position; } ///< 0 while closed
    eFileClass getType() const override { return FILECLASS_DISK; }

    virtual unsigned int
    write(cFileMem const &source); ///< Writes the whole contents, wherever @p source stands

    /// Closes what is open and opens @p path, whose separators may be of either kind. A folder, a pipe or a
    /// socket is refused.
    /// @return false if the file cannot be opened; the stream is then closed
    bool open(char const *path, eOpenMode mode);

    bool close(); ///< @return true

private:
    std::FILE *m_stream = nullptr;
    std::uint32_t m_position = 0; // known here, so that no transfer has to ask the system for it
    bool m_hasRead = false;       // since the stream was positioned: a write has to do that first
};

} // namespace Qel
