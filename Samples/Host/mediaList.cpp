#include "mediaList.h"

#include "System/System/stringTools.h"

#include <zip.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

std::string normal(std::string name)
{
    Qel::StringTools::remap(name.data(), name.c_str(), Qel::StringTools::getMapTable(Qel::MAP_PATH));
    return name;
}

std::optional<MediaList::Contents> readContents(std::string const &path)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> const file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) {
        return std::nullopt;
    }
    MediaList::Contents contents{0, 0};
    std::vector<unsigned char> buffer(1u << 16);
    uLong crc = crc32(0, nullptr, 0);
    while (std::size_t const bytes = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        crc = crc32_z(crc, buffer.data(), bytes);
        contents.size += bytes;
    }
    contents.crc = static_cast<std::uint32_t>(crc);
    return contents;
}

} // namespace

void MediaList::addList(std::string const &file)
{
    std::ifstream list(file);
    std::string crc;
    std::uint64_t size = 0;
    std::string name;
    while (list >> crc >> size && std::getline(list >> std::ws, name)) {
        auto const value = static_cast<std::uint32_t>(std::stoul(crc, nullptr, 16));
        m_files[normal(name)] = {"", Contents{value, size}};
    }
    if (!list.eof()) {
        throw std::runtime_error(file + ": no list of checksums");
    }
}

void MediaList::addFolder(std::string const &folder)
{
    std::vector<std::filesystem::path> paths;
    std::error_code stop;
    std::filesystem::recursive_directory_iterator entry(
        folder, std::filesystem::directory_options::skip_permission_denied, stop);
    for (; !stop && entry != std::filesystem::recursive_directory_iterator(); entry.increment(stop)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown)) {
            paths.push_back(entry->path());
        }
    }
    std::sort(paths.begin(), paths.end()); // of names that differ in case alone the first one counts
    for (std::filesystem::path const &path : paths) {
        m_files.try_emplace(normal(path.lexically_relative(folder).generic_string()),
                            Entry{path.string(), std::nullopt});
    }
}

void MediaList::addZip(std::string const &file)
{
    int mistake = 0;
    std::unique_ptr<zip_t, void (*)(zip_t *)> const zip(zip_open(file.c_str(), ZIP_RDONLY, &mistake),
                                                        &zip_discard);
    if (!zip) {
        throw std::runtime_error(file + ": no zip file");
    }
    std::map<std::string, Entry> members;
    zip_int64_t const count = zip_get_num_entries(zip.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        zip_stat_t member;
        zip_stat_init(&member);
        if (zip_stat_index(zip.get(), static_cast<zip_uint64_t>(i), 0, &member) != 0 ||
            (member.valid & (ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_CRC)) !=
                (ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_CRC)) {
            continue;
        }
        std::string const name = normal(member.name);
        if (!name.empty() && name.back() != '/') {
            members.try_emplace(name, Entry{"", Contents{member.crc, member.size}});
        }
    }
    for (auto const &[name, entry] : members) {
        m_files[name] = entry;
    }
}

std::optional<MediaList::Contents> MediaList::find(std::string const &name)
{
    auto const place = m_files.find(name);
    if (place == m_files.end()) {
        return std::nullopt;
    }
    Entry &entry = place->second;
    if (!entry.contents) {
        entry.contents = readContents(entry.path);
    }
    return entry.contents;
}
