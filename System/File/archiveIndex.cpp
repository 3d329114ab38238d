#include "System/File/archiveIndex.h"

#include "System/File/archive.h"
#include "System/File/fileInfo.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <string_view>

namespace Qel {

namespace {

constexpr std::size_t longestName = sizeof FileInfo::name - 1;

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

bool ArchiveIndex::isSafeName(char const *name)
{
    if (name == nullptr) {
        return false;
    }
    std::size_t const length = strnlen(name, longestName + 1);
    if (length == 0 || length > longestName || (isLetter(name[0]) && name[1] == ':')) {
        return false;
    }
    std::string_view left(name, length);
    for (;;) {
        std::size_t const end = std::min(left.find_first_of("/\\"), left.size());
        std::string_view const element = left.substr(0, end);
        if (element.empty() || element == "." || element == "..") {
            return false;
        }
        if (end == left.size()) {
            return true;
        }
        left.remove_prefix(end + 1);
    }
}

bool ArchiveIndex::add(char const *name, Entry entry)
{
    if (!isSafeName(name) || m_names.size() > std::numeric_limits<std::uint32_t>::max() - longestName - 1) {
        return false;
    }
    char normal[longestName + 1];
    StringTools::remap(normal, name, StringTools::getMapTable(MAP_PATH));
    entry.hash = StringTools::calcHash(normal);
    entry.name = static_cast<std::uint32_t>(m_names.size());
    m_names.append(normal, std::strlen(normal) + 1);
    m_entries.push_back(entry);
    return true;
}

std::vector<ArchiveIndex::Double> ArchiveIndex::finish()
{
    std::stable_sort(m_entries.begin(), m_entries.end(), [this](Entry const &a, Entry const &b) {
        return a.hash != b.hash ? a.hash < b.hash : std::strcmp(nameOf(a), nameOf(b)) < 0;
    });
    std::vector<Double> doubles;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        Entry const &last = m_entries[kept > 0 ? kept - 1 : 0];
        if (kept > 0 && last.hash == m_entries[i].hash &&
            std::strcmp(nameOf(last), nameOf(m_entries[i])) == 0) {
            doubles.push_back({last, m_entries[i]});
        } else {
            m_entries[kept++] = m_entries[i];
        }
    }
    m_entries.resize(kept);
    m_index.build(m_entries, [](Entry const &entry) { return entry.hash; });
    return doubles;
}

std::size_t ArchiveIndex::find(HashConstCharPtr const &file) const
{
    if (file.text == nullptr) {
        return npos;
    }
    HashIndex::Range const range = m_index.find(file.hash);
    auto const last = m_entries.begin() + static_cast<std::ptrdiff_t>(range.last);
    auto const place = std::lower_bound(
        m_entries.begin() + static_cast<std::ptrdiff_t>(range.first), last, file.text,
        [this](Entry const &entry, char const *text) { return std::strcmp(nameOf(entry), text) < 0; });
    return place != last && std::strcmp(nameOf(*place), file.text) == 0
               ? static_cast<std::size_t>(place - m_entries.begin())
               : npos;
}

std::size_t ArchiveIndex::find(FileInfo const &info) const
{
    if (info.handle < size() && std::strcmp(nameOf(m_entries[info.handle]), info.name) == 0) {
        return info.handle;
    }
    return find(HashConstCharPtr(info.name));
}

HashConstCharPtr ArchiveIndex::file(int index) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= size()) {
        return HashConstCharPtr();
    }
    Entry const &entry = m_entries[static_cast<std::size_t>(index)];
    return {nameOf(entry), entry.hash};
}

void ArchiveIndex::fill(std::size_t index, iArchive &archive, FileInfo &info) const
{
    Entry const &entry = m_entries[index];
    info.reset();
    std::memcpy(info.name, nameOf(entry), std::strlen(nameOf(entry)) + 1);
    info.packedSize = entry.packedSize;
    info.size = entry.size;
    info.modTime = entry.modTime;
    info.handle = static_cast<std::uint32_t>(index);
    info.archive = &archive;
}

unsigned int ArchiveIndex::listFolder(char const *folder, StringVector &out) const
{
    std::string prefix = folder == nullptr ? "" : folder;
    if (!prefix.empty()) {
        prefix += '/';
    }
    std::set<std::string_view> names;
    for (Entry const &entry : m_entries) {
        std::string_view const name = nameOf(entry);
        if (name.starts_with(prefix)) {
            std::string_view const rest = name.substr(prefix.size());
            names.insert(rest.substr(0, rest.find('/') == rest.npos ? rest.size() : rest.find('/') + 1));
        }
    }
    for (std::string_view const name : names) {
        out.emplace_back(name);
    }
    return static_cast<unsigned int>(names.size());
}

} // namespace Qel
