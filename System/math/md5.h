#pragma once

#include "System/System/export.h"

#include <cstdint>
#include <cstring>

namespace Qel {

/// A digest of 128 bits, its bytes in the order in which it is written down.
class QEL_API MD5Hash {
public:
    MD5Hash() = default; ///< zeros

    bool operator==(MD5Hash const &other) const { return std::memcmp(hash, other.hash, sizeof hash) == 0; }
    bool operator!=(MD5Hash const &other) const { return !(*this == other); }

    unsigned char hash[16] = {};
};

/// The MD5 message digest of RFC 1321. Tells data apart; protects nothing.
///
/// @code
/// cMD5 md5;
/// md5.update(part, partBytes);
/// md5.update(rest, restBytes);
/// MD5Hash hash;
/// md5.final(hash);
/// @endcode
class QEL_API cMD5 {
public:
    cMD5() { init(); }
    ~cMD5()
    {
        if ((state[0] | state[1] | state[2] | state[3]) != 0) {
            wipe();
        }
    }
    cMD5(cMD5 const &) = default; ///< goes on from the same bytes
    cMD5 &operator=(cMD5 const &) = default;

    /// Starts a new message.
    void init()
    {
        state[0] = 0x67452301;
        state[1] = 0xEFCDAB89;
        state[2] = 0x98BADCFE;
        state[3] = 0x10325476;
        count[0] = count[1] = 0;
    }

    /// Adds bytes to the message.
    /// @param data  may be null if @p size is 0
    void update(unsigned char const *data, unsigned int size);

    /// Ends the message, writes its digest and wipes the object, which takes init() to be used again.
    /// @param digest  room for 16 bytes
    void final(unsigned char *digest);
    void final(unsigned int *digest); ///< the same sixteen bytes
    void final(MD5Hash &digest);      ///< the same

    /// The digest of @p data alone. Drops a message that was under way.
    void getMD5(unsigned char const *data, unsigned int size, MD5Hash &digest);

private:
    static void MD5Transform(std::uint32_t *state, unsigned char const *blocks, std::size_t count);
    void wipe();

    std::uint32_t state[4];
    std::uint32_t count[2]; // bits of the message, low word first
    unsigned char buffer[64];
};

} // namespace Qel
