#include "System/Graphics/image/palette.h"

#include "Support/OS/file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace Qel {

namespace {

constexpr std::size_t riffHeadSize = 24;
constexpr std::size_t riffEntrySize = 4;
constexpr std::size_t riffTailSize = 4;
constexpr std::uint16_t riffVersion = 0x300;

void putWord(unsigned char *to, std::uint16_t value)
{
    std::memcpy(to, &value, sizeof value);
}

void putLong(unsigned char *to, std::uint32_t value)
{
    std::memcpy(to, &value, sizeof value);
}

std::uint16_t getWord(unsigned char const *from)
{
    std::uint16_t value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

// What is asked for need not be a byte; the sum of three stays inside 64 bits.
std::uint64_t square(unsigned int asked, unsigned char entry)
{
    auto const difference = static_cast<std::uint64_t>(asked > entry ? asked - entry : entry - asked);
    return std::min<std::uint64_t>(difference * difference, std::uint64_t{1} << 62);
}

bool writeFile(char const *path, void const *bytes, std::size_t size)
{
    os::FilePtr const file = os::openFile(path, "wb");
    return file != nullptr && os::writeThrough(file.get(), bytes, size);
}

} // namespace

void cPalette::setPalette(unsigned char const *bytes)
{
    if (bytes != nullptr) {
        std::memcpy(m_entries, bytes, sizeof m_entries);
    }
}

void cPalette::getPalette(unsigned char *bytes) const
{
    std::memcpy(bytes, m_entries, sizeof m_entries);
}

void cPalette::resetPalette()
{
    std::memset(m_entries, 0, sizeof m_entries);
}

void cPalette::setEntry(unsigned short i, unsigned char a, unsigned char b, unsigned char c)
{
    if (i < numEntries) {
        m_entries[i][2] = a;
        m_entries[i][1] = b;
        m_entries[i][0] = c;
    }
}

void cPalette::getEntry(unsigned short i, unsigned char &a, unsigned char &b, unsigned char &c) const
{
    if (i < numEntries) {
        a = m_entries[i][0];
        b = m_entries[i][1];
        c = m_entries[i][2];
    }
}

void cPalette::swapRedAndBlue()
{
    for (auto &entry : m_entries) {
        std::swap(entry[0], entry[2]);
    }
}

void cPalette::setDefaultGrayscale()
{
    for (unsigned int i = 0; i < numEntries; ++i) {
        std::memset(m_entries[i], static_cast<int>(i), sizeof m_entries[i]);
    }
}

bool cPalette::findColor(unsigned char a, unsigned char b, unsigned char c, unsigned short &index) const
{
    for (unsigned short i = 0; i < numEntries; ++i) {
        if (m_entries[i][0] == a && m_entries[i][1] == b && m_entries[i][2] == c) {
            index = i;
            return true;
        }
    }
    return false;
}

unsigned char cPalette::findNearestColor(unsigned int a, unsigned int b, unsigned int c) const
{
    bool const isKey = a == 0 && b == 255 && c == 0;
    std::uint64_t best = 1000000000;
    unsigned char bestIndex = 0;
    for (unsigned int i = 0; i + 1 < numEntries; ++i) {
        std::uint64_t const distance =
            square(a, m_entries[i][0]) + square(b, m_entries[i][1]) + square(c, m_entries[i][2]);
        if (distance == 0) {
            return static_cast<unsigned char>(i);
        }
        if (!isKey && (i == 0 || distance < best)) {
            best = distance;
            bestIndex = static_cast<unsigned char>(i);
        }
    }
    return bestIndex;
}

bool cPalette::saveJascPal(char const *path) const
{
    std::string text = "JASC-PAL\r\n0100\r\n256\r\n";
    for (auto const &entry : m_entries) {
        text += std::to_string(entry[0]) + ' ' + std::to_string(entry[1]) + ' ' + std::to_string(entry[2]) +
                "\r\n";
    }
    return writeFile(path, text.data(), text.size());
}

bool cPalette::loadJascPal(char const *)
{
    return false;
}

bool cPalette::saveMsPal(char const *path) const
{
    unsigned char bytes[riffHeadSize + numEntries * riffEntrySize + riffTailSize] = {};
    std::memcpy(bytes, "RIFF", 4);
    putLong(bytes + 4, sizeof bytes - 8);
    std::memcpy(bytes + 8, "PAL data", 8);
    putLong(bytes + 16, 0x408);
    putWord(bytes + 20, riffVersion);
    putWord(bytes + 22, numEntries);
    unsigned char *to = bytes + riffHeadSize;
    for (auto const &entry : m_entries) {
        std::reverse_copy(entry, entry + 3, to);
        to += riffEntrySize;
    }
    return writeFile(path, bytes, sizeof bytes);
}

bool cPalette::loadMsPal(char const *path)
{
    os::FilePtr const file = os::openFile(path, "rb");
    unsigned char head[riffHeadSize];
    if (file == nullptr || std::fread(head, 1, sizeof head, file.get()) != sizeof head) {
        return false;
    }
    if (std::memcmp(head, "RIFF", 4) != 0 || std::memcmp(head + 8, "PAL ", 4) != 0 ||
        getWord(head + 20) != riffVersion || getWord(head + 22) != numEntries) {
        return false;
    }
    unsigned char bytes[numEntries * riffEntrySize];
    std::size_t const whole = std::fread(bytes, 1, sizeof bytes, file.get()) / riffEntrySize;
    for (std::size_t i = 0; i < whole; ++i) {
        std::reverse_copy(bytes + i * riffEntrySize, bytes + i * riffEntrySize + 3, m_entries[i]);
    }
    return true;
}

} // namespace Qel
