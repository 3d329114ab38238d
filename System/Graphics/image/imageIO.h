#pragma once

#include "System/System/export.h"

namespace Qel {

class cFile;
class cImage;
class cPalette;
class String;

/// A file format of images: reads a stream into an image, and writes one out.
///
/// The library keeps no list of formats and does not choose by a file's ending: a caller takes the class it
/// wants.
///
/// @code
/// cImage picture;
/// if (cIO_tga().loadEx("hero.tga", picture, 0)) {
///     cIO_bmp().saveEx("hero.bmp", picture, 0);
/// }
/// @endcode
///
/// Nothing here logs or throws. Any bytes may be given to load(): it never allocates by a header's word
/// alone, and what a short file does not define is zero.
class QEL_API iImageIO {
public:
    virtual ~iImageIO();

    /// Reads an image from the stream's position on; does not close the stream.
    /// @param flags  what it means is the format's
    /// @return false if the format refuses the bytes, or cannot read at all. The image may then have been
    ///         given a canvas
    virtual bool load(cFile &file, cImage &image, unsigned int flags) = 0;

    /// Writes an image at the stream's position; does not close the stream. The image is as before when it
    /// returns.
    /// @return false if the format refuses the image, cannot write at all, or not everything was written
    virtual bool save(cFile &file, cImage &image, unsigned int flags) = 0;

    /// Reads the whole file from the disk into memory and calls load().
    /// @return false if the file cannot be read, or what load() says
    virtual bool loadEx(String const &path, cImage &image, unsigned int flags);

    /// Calls save() on memory and puts the bytes at the start of the file on the disk, which is made if it is
    /// not there. A longer file keeps its tail.
    /// @return false if save() refuses, or if the file cannot be opened or written. On a full disk the new
    ///         bytes may then end in the midst of the old ones
    virtual bool saveEx(String const &path, cImage &image, unsigned int flags);

    virtual char const *get_type() const = 0; ///< the format's short name, as "TGA"
};

} // namespace Qel
