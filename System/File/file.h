#pragma once

#include "System/System/export.h"

#include <bit>
#include <cstdint>

struct D3DXMATRIX;
struct D3DXVECTOR3;

namespace Qel {

class String;
class WString;

/// The families of streams, as cFile::getType() tells them.
enum eFileClass : std::uint32_t {
    FILECLASS_MEM = 0,   ///< cFileMem, cFileTempMem
    FILECLASS_DISK = 1,  ///< cFileDisk
    FILECLASS_BIT = 2,   ///< cFileBit
    FILECLASS_BITOLD = 3 ///< cFileBitOld
};

/// A stream of bytes: what every binary format of the library is read from and written to.
///
/// A class derived from this one supplies the transfer of bytes; the typed operations are built on that and
/// fix the layout of every value in a stream. Values stand one behind the other, least significant byte
/// first, with nothing between them:
///
/// | Operation       | Bytes                                                                              |
/// |-----------------|------------------------------------------------------------------------------------|
/// | `_8` to `_64`   | 1, 2, 4, 8                                                                         |
/// | `_float`        | 4, IEEE 754 single                                                                 |
/// | `_vec3d`        | 12: x, y, z                                                                        |
/// | `_mat4d`        | 64: the 16 floats row by row                                                       |
/// | `_string`       | 4 for the count of characters, then the characters; no terminator                  |
/// | `_wstring`      | 4 for the count of 16-bit units, then the text as UTF-16; no terminator            |
///
/// @code
/// cFileMem file;
/// file.write_string("level 1");
/// file << 42u << 0.5f;
/// file.seek(0);
/// String name;
/// bool const whole = file.read_string(name);
/// @endcode
///
/// Positions and sizes have 32 bits, so a stream ends at 4 GiB less one byte. Bit streams count both in bits.
///
/// @par Failures  By result alone: a short count, false or 0. Nothing is thrown or logged.
/// @par Threads   A stream belongs to one thread at a time.
class QEL_API cFile {
public:
    /// Told that an asynchronous transfer is done: the bytes moved, and the caller's own pointer.
    using AsyncCallback = void (*)(unsigned int bytes, void *user);

    cFile() = default;
    cFile(cFile const &) = default;
    cFile &operator=(cFile const &) = default;
    virtual ~cFile();

    /// Reads from the position on, and moves it.
    /// @param buffer  room for @p size bytes
    /// @return bytes delivered: fewer than asked at the end, 0 on failure
    virtual unsigned int read(void *buffer, unsigned int size) = 0;

    /// Writes at the position, and moves it.
    /// @param buffer  @p size bytes, not kept
    /// @return bytes taken, 0 on failure
    virtual unsigned int write(void const *buffer, unsigned int size) = 0;

    /// Moves to an absolute position. What is returned differs between the classes.
    virtual unsigned int seek(unsigned int position) = 0;

    virtual unsigned int size() const = 0; ///< length of the content
    virtual unsigned int tell() const = 0; ///< the position

    /// Makes room for @p size bytes of content ahead of time, where a stream has such a thing.
    /// @return false if the room is not there
    virtual bool reserve(unsigned int size);

    virtual eFileClass getType() const = 0; ///< which family of streams this is

    /// Reads as read() does and tells @p callback when the bytes are there. Here both happen before the call
    /// returns; a class with real asynchrony may deliver later, and @p buffer must live until then.
    /// @param callback  called once with the bytes read and @p user; null for none
    /// @return true if the request was taken
    virtual bool async_read(void *buffer, unsigned int size, AsyncCallback callback, void *user);

    /// As async_read(), through write().
    virtual bool async_write(void const *buffer, unsigned int size, AsyncCallback callback, void *user);

    bool eof() const { return tell() == size(); } ///< Is the position the end?

    // Each read gives true if the value is there in full. The integers are read in place, so that a short
    // read can change part of one.
    bool read_8(char &value) { return readInPlace(value); }
    bool read_8(signed char &value) { return readInPlace(value); }
    bool read_8(unsigned char &value) { return readInPlace(value); }
    bool read_16(short &value) { return readInPlace(value); }
    bool read_16(unsigned short &value) { return readInPlace(value); }
    bool read_32(int &value) { return readInPlace(value); }
    bool read_32(unsigned int &value) { return readInPlace(value); }
    bool read_64(long &value) { return readInPlace(value); }
    bool read_64(unsigned long &value) { return readInPlace(value); }
    bool read_64(long long &value) { return readInPlace(value); }
    bool read_64(unsigned long long &value) { return readInPlace(value); }
    bool read_float(float &value); ///< a short read leaves @p value as it is

    bool read_vec3d(D3DXVECTOR3 &value); ///< stops at the first short float; those before it are stored
    bool read_mat4d(D3DXMATRIX &value);  ///< stops at the first short float; those before it are stored

    /// Reads a text. One that is not there in full, by what its count says, gives false and leaves @p text as
    /// it is; the position is then somewhere behind the count. Memory is taken for what the stream holds
    /// only, whatever the count says.
    bool read_string(String &text);

    /// The same for UTF-16. A surrogate that has no partner becomes one wide character of its value.
    bool read_wstring(WString &text);

    // Each write gives the number of bytes stored.
    unsigned int write_8(char value) { return write(&value, sizeof(value)); }
    unsigned int write_8(signed char value) { return write(&value, sizeof(value)); }
    unsigned int write_8(unsigned char value) { return write(&value, sizeof(value)); }
    unsigned int write_16(short value) { return write(&value, sizeof(value)); }
    unsigned int write_16(unsigned short value) { return write(&value, sizeof(value)); }
    unsigned int write_32(int value) { return write(&value, sizeof(value)); }
    unsigned int write_32(unsigned int value) { return write(&value, sizeof(value)); }
    unsigned int write_64(long value) { return write(&value, sizeof(value)); }
    unsigned int write_64(unsigned long value) { return write(&value, sizeof(value)); }
    unsigned int write_64(long long value) { return write(&value, sizeof(value)); }
    unsigned int write_64(unsigned long long value) { return write(&value, sizeof(value)); }
    unsigned int write_float(float value) { return write(&value, sizeof(value)); }

    unsigned int write_vec3d(D3DXVECTOR3 const &value);
    unsigned int write_mat4d(D3DXMATRIX const &value);

    /// A text too long for a stream is not written: 0. If the count is not stored, nothing follows it.
    unsigned int write_string(String const &text);

    /// The same as UTF-16. A value beyond 0x10FFFF becomes U+FFFD.
    unsigned int write_wstring(WString const &text);

    // The operators have the same layout and tell of no failure.
    cFile &operator>>(char &value) { return readInPlace(value), *this; }
    cFile &operator>>(signed char &value) { return readInPlace(value), *this; }
    cFile &operator>>(unsigned char &value) { return readInPlace(value), *this; }
    cFile &operator>>(short &value) { return readInPlace(value), *this; }
    cFile &operator>>(unsigned short &value) { return readInPlace(value), *this; }
    cFile &operator>>(int &value) { return readInPlace(value), *this; }
    cFile &operator>>(unsigned int &value) { return readInPlace(value), *this; }
    cFile &operator>>(long &value) { return readInPlace(value), *this; }
    cFile &operator>>(unsigned long &value) { return readInPlace(value), *this; }
    cFile &operator>>(long long &value) { return readInPlace(value), *this; }
    cFile &operator>>(unsigned long long &value) { return readInPlace(value), *this; }
    cFile &operator>>(float &value) { return read_float(value), *this; }

    cFile &operator<<(char value) { return write_8(value), *this; }
    cFile &operator<<(signed char value) { return write_8(value), *this; }
    cFile &operator<<(unsigned char value) { return write_8(value), *this; }
    cFile &operator<<(short value) { return write_16(value), *this; }
    cFile &operator<<(unsigned short value) { return write_16(value), *this; }
    cFile &operator<<(int value) { return write_32(value), *this; }
    cFile &operator<<(unsigned int value) { return write_32(value), *this; }
    cFile &operator<<(long value) { return write_64(value), *this; }
    cFile &operator<<(unsigned long value) { return write_64(value), *this; }
    cFile &operator<<(long long value) { return write_64(value), *this; }
    cFile &operator<<(unsigned long long value) { return write_64(value), *this; }
    cFile &operator<<(float value) { return write_float(value), *this; }

private:
    static_assert(std::endian::native == std::endian::little, "values go into streams as they lie in memory");
    static_assert(sizeof(short) == 2 && sizeof(int) == 4 && sizeof(long) == 8 && sizeof(float) == 4);

    template <typename T>
    bool readInPlace(T &value)
    {
        return read(&value, sizeof(T)) == sizeof(T);
    }

    std::uint64_t bytesLeft() const;
    bool holdsText(std::uint64_t bytes) const;
    bool readWholeString(String &text, std::uint32_t count);
    bool readWholeWString(WString &text, std::uint32_t units);
};

} // namespace Qel
