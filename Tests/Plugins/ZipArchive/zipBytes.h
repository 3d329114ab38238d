#pragma once

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace test {

/// A member of a zip file, with what its headers say: the truth unless told otherwise.
struct ZipMember {
    std::string name;
    std::string content;
    bool deflated = false;
    std::uint16_t flags = 0x0800; // names are UTF-8
    std::optional<std::uint16_t> method = {};
    std::optional<std::uint32_t> size = {}, packedSize = {}, checksum = {}, offset = {};
};

inline std::string deflated(std::string const &content)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// The bytes of a zip file, written by hand.
inline std::string zipBytes(std::vector<ZipMember> const &members, std::string const &comment = {})
{
    std::string file, directory;
    auto const put = [](std::string &to, std::uint32_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8) {
            to += static_cast<char>(value & 255);
        }
    };
    for (ZipMember const &member : members) {
        std::string const packed = member.deflated ? deflated(member.content) : member.content;
        auto const crc =
            static_cast<std::uint32_t>(crc32(0, reinterpret_cast<Bytef const *>(member.content.data()),
                                             static_cast<uInt>(member.content.size())));
        auto const offset = static_cast<std::uint32_t>(file.size());
        std::string common;
        put(common, 20, 2); // version needed
        put(common, member.flags, 2);
        put(common, member.method.value_or(member.deflated ? 8 : 0), 2);
        put(common, 0x6000, 2); // 12:00:00
        put(common, 0x4EC1, 2); // 2019-06-01
        put(common, member.checksum.value_or(crc), 4);
        put(common, member.packedSize.value_or(static_cast<std::uint32_t>(packed.size())), 4);
        put(common, member.size.value_or(static_cast<std::uint32_t>(member.content.size())), 4);
        put(common, static_cast<std::uint32_t>(member.name.size()), 2);
        put(common, 0, 2); // extra field

        put(file, 0x04034B50, 4);
        file += common + member.name + packed;
        put(directory, 0x02014B50, 4);
        put(directory, 20, 2); // version made by
        directory += common;
        put(directory, 0, 2); // comment
        put(directory, 0, 2); // disk
        put(directory, 0, 2); // internal attributes
        put(directory, 0, 4); // external attributes
        put(directory, member.offset.value_or(offset), 4);
        directory += member.name;
    }
    auto const start = static_cast<std::uint32_t>(file.size());
    auto const count = static_cast<std::uint32_t>(members.size());
    file += directory;
    put(file, 0x06054B50, 4);
    put(file, 0, 4); // disks
    put(file, count, 2);
    put(file, count, 2);
    put(file, static_cast<std::uint32_t>(directory.size()), 4);
    put(file, start, 4);
    put(file, static_cast<std::uint32_t>(comment.size()), 2);
    return file + comment;
}

} // namespace test
