#include "System/File/file.h"

#include "Support/D3DX/d3dx9math.h"
#include "System/System/string.h"
#include "System/System/wString.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Qel {

namespace {

constexpr std::uint32_t shortText = 1023;       // characters that are read without heap traffic
constexpr std::uint32_t blindChunk = 64 * 1024; // bytes taken at first for a text that may not be there

bool isHighSurrogate(std::uint32_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isLowSurrogate(std::uint32_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

void appendUnits(WString &text, char16_t const *units, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t const unit = units[i];
        std::uint32_t const before = text.empty() ? 0 : static_cast<std::uint32_t>(text.back());
        if (isLowSurrogate(unit) && isHighSurrogate(before)) {
            text.back() = static_cast<wchar_t>(0x10000 + ((before - 0xD800) << 10) + (unit - 0xDC00));
        } else {
            text.push_back(static_cast<wchar_t>(unit));
        }
    }
}

} // namespace

cFile::~cFile() = default;

bool cFile::reserve(unsigned int)
{
    return false;
}

bool cFile::async_read(void *buffer, unsigned int size, AsyncCallback callback, void *user)
{
    unsigned int const bytes = read(buffer, size);
    if (callback != nullptr) {
        callback(bytes, user);
    }
    return true;
}

bool cFile::async_write(void const *buffer, unsigned int size, AsyncCallback callback, void *user)
{
    unsigned int const bytes = write(buffer, size);
    if (callback != nullptr) {
        callback(bytes, user);
    }
    return true;
}

bool cFile::read_float(float &value)
{
    float whole;
    if (!readInPlace(whole)) {
        return false;
    }
    value = whole;
    return true;
}

bool cFile::read_vec3d(D3DXVECTOR3 &value)
{
    return read_float(value.x) && read_float(value.y) && read_float(value.z);
}

bool cFile::read_mat4d(D3DXMATRIX &value)
{
    for (auto &row : value.m) {
        for (float &element : row) {
            if (!read_float(element)) {
                return false;
            }
        }
    }
    return true;
}

unsigned int cFile::write_vec3d(D3DXVECTOR3 const &value)
{
    return write_float(value.x) + write_float(value.y) + write_float(value.z);
}

unsigned int cFile::write_mat4d(D3DXMATRIX const &value)
{
    unsigned int bytes = 0;
    for (auto const &row : value.m) {
        for (float const element : row) {
            bytes += write_float(element);
        }
    }
    return bytes;
}

std::uint64_t cFile::bytesLeft() const
{
    std::uint64_t const position = tell();
    std::uint64_t const end = size();
    std::uint64_t const left = end > position ? end - position : 0;
    eFileClass const type = getType();
    return type == FILECLASS_BIT || type == FILECLASS_BITOLD ? left / 8 : left;
}

// Other streams tell by a short read. A bit stream delivers zeros for ever.
bool cFile::holdsText(std::uint64_t bytes) const
{
    eFileClass const type = getType();
    return (type != FILECLASS_BIT && type != FILECLASS_BITOLD) || bytes <= bytesLeft();
}

bool cFile::read_string(String &text)
{
    std::uint32_t count = 0;
    if (!read_32(count) || !holdsText(count)) {
        return false;
    }
    try {
        if (count > shortText) {
            return readWholeString(text, count);
        }
        char characters[shortText + 1];
        if (count > 0 && read(characters, count) != count) {
            return false;
        }
        text.assign(characters, count);
        return true;
    } catch (std::bad_alloc const &) {
        return false;
    }
}

bool cFile::readWholeString(String &text, std::uint32_t count)
{
    // size() may be less than what a stream delivers, so it only says how much to take at once.
    std::uint64_t const expected = std::max<std::uint64_t>(bytesLeft(), blindChunk);
    String whole;
    for (std::uint32_t done = 0; done < count;) {
        auto const chunk = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(count - done, std::max<std::uint64_t>(expected, done)));
        whole.resize(std::size_t{done} + chunk);
        if (read(whole.data() + done, chunk) != chunk) {
            return false;
        }
        done += chunk;
    }
    text.swap(whole);
    return true;
}

bool cFile::read_wstring(WString &text)
{
    std::uint32_t units = 0;
    return read_32(units) && holdsText(2 * std::uint64_t{units}) && readWholeWString(text, units);
}

bool cFile::readWholeWString(WString &text, std::uint32_t units)
{
    try {
        WString whole;
        if (units > shortText) {
            whole.reserve(
                std::min<std::uint64_t>(units, std::max<std::uint64_t>(bytesLeft(), blindChunk) / 2));
        }
        for (std::uint32_t done = 0; done < units;) {
            char16_t buffer[shortText + 1];
            std::uint32_t const chunk = std::min(units - done, shortText);
            auto const bytes = static_cast<unsigned int>(chunk * sizeof(char16_t));
            if (read(buffer, bytes) != bytes) {
                return false;
            }
            appendUnits(whole, buffer, chunk);
            done += chunk;
        }
        text.swap(whole);
        return true;
    } catch (std::bad_alloc const &) {
        return false;
    }
}

unsigned int cFile::write_string(String const &text)
{
    std::size_t const count = text.size();
    if (count > std::numeric_limits<std::uint32_t>::max() - sizeof(std::uint32_t)) {
        return 0;
    }
    unsigned int const stored = write_32(static_cast<std::uint32_t>(count));
    if (stored != sizeof(std::uint32_t) || count == 0) {
        return stored;
    }
    return stored + write(text.data(), static_cast<unsigned int>(count));
}

unsigned int cFile::write_wstring(WString const &text)
{
    std::uint64_t count = 0;
    for (wchar_t const c : text) {
        auto const value = static_cast<std::uint32_t>(c);
        count += value > 0xFFFF && value <= 0x10FFFF ? 2 : 1;
    }
    if (count > (std::numeric_limits<std::uint32_t>::max() - sizeof(std::uint32_t)) / 2) {
        return 0;
    }
    unsigned int stored = write_32(static_cast<std::uint32_t>(count));
    if (stored != sizeof(std::uint32_t)) {
        return stored;
    }

    char16_t buffer[shortText + 1];
    std::size_t filled = 0;
    auto const writeOut = [&] {
        auto const bytes = static_cast<unsigned int>(filled * sizeof(char16_t));
        filled = 0;
        unsigned int const taken = bytes == 0 ? 0 : write(buffer, bytes);
        stored += taken;
        return taken == bytes;
    };
    for (wchar_t const c : text) {
        if (filled >= shortText && !writeOut()) {
            return stored;
        }
        auto const value = static_cast<std::uint32_t>(c);
        if (value <= 0xFFFF) {
            buffer[filled++] = static_cast<char16_t>(value);
        } else if (value <= 0x10FFFF) {
            buffer[filled++] = static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            buffer[filled++] = static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
        } else {
            buffer[filled++] = 0xFFFD;
        }
    }
    writeOut();
    return stored;
}

} // namespace Qel
