#pragma once

#include "System/System/export.h"

namespace Qel {

/// 256 entries of three bytes.
///
/// The bytes have no fixed colours: cImage::getImage() takes byte 0 as red, the RIFF palette file stores
/// byte 2 as red, and each image format says what it fills in.
class QEL_API cPalette {
public:
    static constexpr unsigned int numEntries = 256;

    cPalette() = default;                                                        ///< all zero
    explicit cPalette(unsigned char const *bytes) { setPalette(bytes); }         ///< copies 768 bytes
    explicit cPalette(unsigned char const (*bytes)[3]) { setPalette(bytes[0]); } ///< copies 768 bytes

    void setPalette(unsigned char const *bytes); ///< copies 768 bytes in; null: no change
    void getPalette(unsigned char *bytes) const; ///< copies 768 bytes out
    void resetPalette();                         ///< all zero

    /// Byte 2 = @p a, byte 1 = @p b, byte 0 = @p c: the other order from getEntry(). Nothing for @p i above
    /// 255.
    void setEntry(unsigned short i, unsigned char a, unsigned char b, unsigned char c);

    /// @p a = byte 0, @p b = byte 1, @p c = byte 2. For @p i above 255 they keep what they hold.
    void getEntry(unsigned short i, unsigned char &a, unsigned char &b, unsigned char &c) const;

    void swapRedAndBlue();      ///< exchanges bytes 0 and 2 of all entries
    void setDefaultGrayscale(); ///< entry i becomes (i, i, i)

    /// Finds the first entry whose bytes 0, 1 and 2 are these.
    /// @return false if there is none; @p index is unchanged then
    bool findColor(unsigned char a, unsigned char b, unsigned char c, unsigned short &index) const;

    /// Finds the entry with the smallest sum of squared differences, the first of equals.
    ///
    /// Entry 255 is never given. (0, 255, 0) is the key of transparency: for it only an equal entry counts.
    /// @return the index; 0 where nothing counts
    unsigned char findNearestColor(unsigned int a, unsigned int b, unsigned int c) const;

    /// @name Palette files
    /// Paths as the disk has them; an existing file is replaced.
    /// @return false if the file cannot be opened, or not be written whole
    /// @{
    bool saveJascPal(char const *path) const; ///< text, "JASC-PAL": bytes 0, 1, 2 of each entry
    bool saveMsPal(char const *path) const;   ///< RIFF, 1052 bytes: bytes 2, 1, 0 of each entry
    /// @}

    /// There is no reader for the text form. @return false, always; nothing is read
    bool loadJascPal(char const *path);

    /// Reads a RIFF palette of 256 entries, as saveMsPal() writes it.
    /// @return false if the file cannot be opened or its head is another; nothing is changed then. In a file
    ///         that ends early the entries that did not arrive stay as they were, and the result is true
    bool loadMsPal(char const *path);

private:
    unsigned char m_entries[numEntries][3] = {};
};

static_assert(sizeof(cPalette) == 768);

} // namespace Qel
