#include "zipArchive.h"

#include "System/File/diskName.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using Qel::ArchiveIndex;
using Qel::String;

namespace {

constexpr std::uint64_t tooLong = std::uint64_t{1} << 32;
constexpr std::uint64_t mostOfOneByte = 1032; // bytes that deflate can make of one
constexpr std::size_t longestComment = 0xFFFF;

void report(String const &text)
{
    Qel::logMessage(text, 3);
}

// Why a member cannot be what it is declared to be; empty if it can.
std::string faultOf(zip_stat_t const &member, std::uint64_t archiveSize)
{
    constexpr zip_uint64_t needed = ZIP_STAT_NAME | ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE |
                                    ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    if ((member.valid & needed) != needed) {
        return "its entry is not complete";
    }
    if (member.encryption_method != ZIP_EM_NONE) {
        return "it is encrypted";
    }
    if (member.comp_method != ZIP_CM_STORE && member.comp_method != ZIP_CM_DEFLATE) {
        return "method " + std::to_string(member.comp_method) + " of compression is not known";
    }
    if (member.size >= tooLong) {
        return "4 GiB or longer";
    }
    if (member.comp_size > archiveSize) {
        return "packed size " + std::to_string(member.comp_size) + " in an archive of " +
               std::to_string(archiveSize);
    }
    std::uint64_t const most =
        member.comp_method == ZIP_CM_STORE ? member.comp_size : member.comp_size * mostOfOneByte;
    if (member.size > most) {
        return "size " + std::to_string(member.size) + " of a packed size of " +
               std::to_string(member.comp_size);
    }
    return {};
}

} // namespace

std::unique_ptr<ZipReader> ZipContents::take(std::string &error)
{
    {
        std::lock_guard const hold(lock);
        if (!idle.empty()) {
            std::unique_ptr<ZipReader> reader = std::move(idle.back());
            idle.pop_back();
            return reader;
        }
    }
    auto reader = std::make_unique<ZipReader>(file);
    if (!reader->open(error)) {
        return nullptr;
    }
    if (zip_get_num_entries(reader->zip(), 0) != members) {
        error = "it has changed since it was loaded";
        return nullptr;
    }
    return reader;
}

void ZipContents::giveBack(std::unique_ptr<ZipReader> reader)
{
    std::lock_guard const hold(lock);
    idle.push_back(std::move(reader));
}

void ZipContents::addMember(zip_t *zip, zip_uint64_t number)
{
    zip_stat_t member;
    zip_stat_init(&member);
    bool const known = zip_stat_index(zip, number, 0, &member) == 0 && member.name != nullptr;
    std::string const name = known ? member.name : "";
    if (known && (name.ends_with('/') || name.ends_with('\\'))) {
        return; // a folder
    }
    std::string fault = known ? faultOf(member, file.size()) : zip_strerror(zip);
    if (fault.empty()) {
        ArchiveIndex::Entry entry;
        entry.size = static_cast<std::uint32_t>(member.size);
        entry.packedSize = static_cast<std::uint32_t>(std::min<zip_uint64_t>(member.comp_size, tooLong - 1));
        entry.modTime = (member.valid & ZIP_STAT_MTIME) != 0 ? member.mtime : 0;
        entry.place = number;
        if (index.add(name.c_str(), entry)) {
            return;
        }
        fault = "its name cannot be looked up";
    }
    report(path + ": member " + std::to_string(number) + " '" + name.substr(0, 256) + "': left out, " +
           fault + "\n");
}

ZipArchive::ZipArchive(char const *fileName) : tIndexedArchive(fileName)
{
}

std::shared_ptr<ZipContents> ZipArchive::readContents() const
{
    auto fresh = std::make_shared<ZipContents>();
    fresh->path = Qel::findDiskName(getName());
    if (fresh->path.empty() || !fresh->file.open(fresh->path)) {
        report("ZIP '" + getName() + "': there is no such file\n");
        return nullptr;
    }
    auto reader = std::make_unique<ZipReader>(fresh->file);
    std::string error;
    if (!reader->open(error)) {
        report(fresh->path + ": " + error + "\n");
        return nullptr;
    }
    zip_t *const zip = reader->zip();
    fresh->members = zip_get_num_entries(zip, 0);
    for (zip_int64_t number = 0; number < fresh->members; ++number) {
        fresh->addMember(zip, static_cast<zip_uint64_t>(number));
    }
    for (ArchiveIndex::Double const &twice : fresh->index.finish()) {
        report(fresh->path + ": member " + std::to_string(twice.dropped.place) + ": left out, member " +
               std::to_string(twice.kept.place) + " has its name, '" + fresh->index.nameOf(twice.kept) +
               "'\n");
    }
    int length = 0;
    if (char const *const comment = zip_get_archive_comment(zip, &length, 0)) {
        fresh->comment.assign(comment, std::min(static_cast<std::size_t>(length), longestComment));
    }
    fresh->giveBack(std::move(reader));
    return fresh;
}

String ZipArchive::getComment() const
{
    auto const shown = contents();
    return shown ? shown->comment : String();
}

std::int64_t ZipArchive::getModTime()
{
    auto const shown = contents();
    return shown ? shown->file.modTime() : 0;
}

unsigned int ZipArchive::readEntry(ZipContents &contents, std::size_t at, void *buffer, unsigned int room)
{
    ArchiveIndex::Entry const &entry = contents.index[at];
    std::string error;
    std::uint32_t read = 0;
    if (std::unique_ptr<ZipReader> reader = contents.take(error)) {
        read = reader->read(entry.place, entry.size, buffer, room, error);
        contents.giveBack(std::move(reader));
    }
    if (!error.empty()) {
        report(contents.path + ": member " + std::to_string(entry.place) + " '" +
               contents.index.nameOf(entry) + "': " + error + "\n");
    }
    return read;
}
