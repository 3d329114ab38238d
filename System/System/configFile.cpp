#include "System/System/configFile.h"

#include "Support/OS/file.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

namespace Qel {

namespace {

constexpr std::size_t pieceRoom = 99; // characters of a line that are looked at together

// Hands out a text file's characters, with each pair of carriage return and newline as one newline.
class TextReader {
public:
    explicit TextReader(std::FILE *file) : m_file(file) {}

    int next()
    {
        int const c = nextRaw();
        if (c == '\r' && peekRaw() == '\n') {
            return nextRaw();
        }
        return c;
    }

private:
    int peekRaw()
    {
        if (m_at == m_size) {
            m_size = std::fread(m_bytes.data(), 1, m_bytes.size(), m_file);
            m_at = 0;
        }
        return m_at < m_size ? static_cast<unsigned char>(m_bytes[m_at]) : EOF;
    }

    int nextRaw()
    {
        int const c = peekRaw();
        m_at += c != EOF ? 1 : 0;
        return c;
    }

    std::FILE *m_file;
    std::array<char, 16384> m_bytes;
    std::size_t m_at = 0;
    std::size_t m_size = 0;
};

} // namespace

void ConfigFile::load(String const &fileName, String const &separators)
{
    m_settings.clear();
    m_fileName = fileName;

    os::FilePtr const file = os::openFile(fileName.c_str(), "r");
    if (!file) {
        if (LogManager *log = LogManager::InstancePtr()) {
            log->logMessage("ConfigFile::load() file not found: " + fileName + "\n", 2);
        }
        throw Exception(Exception::FileNotFound, "'" + fileName + "' file not found!", "ConfigFile::load",
                        __FILE__, __LINE__);
    }

    TextReader reader(file.get());
    std::array<char, pieceRoom> piece;
    std::size_t length = 0;
    for (int c = reader.next(); c != EOF; c = reader.next()) {
        piece[length++] = static_cast<char>(c);
        if (c == '\n') {
            readPiece(piece.data(), length, separators);
            length = 0;
        } else if (length == pieceRoom) {
            length = 0; // a piece without its newline has no value
        }
    }
}

// The piece ends in a newline.
void ConfigFile::readPiece(char const *piece, std::size_t length, String const &separators)
{
    if (std::memchr(piece, '\0', length) != nullptr) {
        return; // the newline stands behind the zero byte, where it is not seen
    }
    String line(piece, length);
    line.trim();
    if (line.empty() || std::string_view("#@\n").find(line[0]) != std::string_view::npos) {
        return;
    }
    std::size_t const separator = line.find_first_of(separators);
    if (separator == String::npos) {
        return;
    }
    std::size_t const newline = line.find('\n', separator + 1);
    if (newline == String::npos) {
        return;
    }
    String key = line.substr(0, separator);
    String value = line.substr(separator + 1, newline - separator - 1);
    if (key.empty() || value.empty()) {
        return;
    }
    key.trim();
    value.trim();
    m_settings.emplace(std::move(key), std::move(value));
}

String ConfigFile::getSetting(String const &key) const
{
    // Not find(), which may give any of the key's entries.
    auto const first = m_settings.lower_bound(key);
    return first != m_settings.end() && first->first == key ? first->second : String();
}

StringVector ConfigFile::getMultiSetting(String const &key) const
{
    StringVector values;
    auto const [first, last] = m_settings.equal_range(key);
    for (auto at = first; at != last; ++at) {
        values.push_back(at->second);
    }
    return values;
}

ConfigFile::SettingsIterator ConfigFile::getSettingsIterator()
{
    return SettingsIterator(m_settings);
}

void ConfigFile::setSetting(String const &key, String const &value)
{
    auto const first = m_settings.lower_bound(key);
    if (first != m_settings.end() && first->first == key) {
        first->second = value;
    } else {
        m_settings.emplace(key, value);
    }
}

void ConfigFile::setSetting(String const &key, unsigned int value)
{
    setSetting(key, String(static_cast<int>(value)));
}

void ConfigFile::save() const
{
    if (m_fileName.empty()) {
        return;
    }
    // As C texts: a zero byte in a value would end it for the next load() too.
    String text;
    for (auto const &[key, value] : m_settings) {
        text += key.c_str();
        text += " = ";
        text += value.c_str();
        text += "\n";
    }
    os::replaceFile(m_fileName.c_str(), text.data(), text.size());
}

} // namespace Qel
