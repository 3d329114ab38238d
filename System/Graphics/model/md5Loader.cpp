#include "System/Graphics/model/md5Loader.h"

#include "System/File/fileTempMem.h"
#include "System/File/textTokenizer.h"
#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Mesh.h"

#include "Support/OS/file.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace Qel {

namespace {

constexpr float radiansPerDegree = 0.017453292f;
constexpr float degreesPerRadian = 57.29578f;
constexpr float fullTurn = 6.2831855f;
constexpr std::size_t mostBones = 0xFFFF; // their indices have 16 bits

constexpr struct {
    char const *name;
    char const *capitals;
} attributeNames[] = {{"x", "X"},     {"y", "Y"},         {"z", "Z"},
                      {"yaw", "YAW"}, {"pitch", "PITCH"}, {"roll", "ROLL"}};

bool isAngle(std::uint32_t attribute)
{
    return attribute >= MD5_YAW && attribute <= MD5_ROLL;
}

// Takes tokens by position: inside a group nothing is compared.
class Reader {
public:
    explicit Reader(cFile &file)
        : m_tokens(file), m_token(m_tokens.getNextToken()), m_records(fewRecords + file.size() / leastBytes)
    {
    }

    bool hasMore() const { return !m_token.isEnd(); }
    void drop(int count = 1)
    {
        for (; count > 0 && hasMore(); --count) {
            m_token = m_tokens.getNextToken();
        }
    }
    TextToken next()
    {
        TextToken token = std::move(m_token);
        m_token = m_tokens.getNextToken();
        return token;
    }
    int integer() { return take(m_token.convertToInt32()); }
    std::uint16_t index() { return take(m_token.convertToU16()); }
    float number() { return take(m_token.convertToFloat32()); }
    String text() { return next().convertToString(); }
    void vector(D3DXVECTOR3 &v)
    {
        v.x = number();
        v.y = number();
        v.z = number();
    }

    /// Makes a list anew, of as many records as are announced: they are read later, each to its place. No
    /// more, over all lists of a file, than it has room for, and a few that a short file may leave empty.
    template <class Record>
    void announced(std::vector<Record> &records, std::size_t most = SIZE_MAX)
    {
        auto const asked = static_cast<std::size_t>(std::max(integer(), 0));
        std::size_t const count = std::min({asked, m_records, most});
        m_records -= count;
        records.assign(count, Record());
    }

    /// Reads a count and that many groups, or those that are there.
    template <class Group>
    void groups(Group group)
    {
        for (int left = integer(); left > 0 && hasMore(); --left) {
            group();
        }
    }

private:
    static constexpr std::size_t fewRecords = 1024;
    static constexpr std::size_t leastBytes = 16; // of a record's text

    template <class Value>
    Value take(Value value)
    {
        m_token = m_tokens.getNextToken();
        return value;
    }

    TextTokenizer m_tokens;
    TextToken m_token;     // the next one
    std::size_t m_records; // that may still be announced
};

// The record of a group's number, or one that is thrown away.
template <class Record>
Record &recordAt(std::vector<Record> &records, int index, Record &dropped)
{
    return index >= 0 && static_cast<std::size_t>(index) < records.size()
               ? records[static_cast<std::size_t>(index)]
               : dropped;
}

void readBone(Reader &reader, MD5Mesh &mesh)
{
    MD5Bone dropped;
    MD5Bone &bone = recordAt(mesh.bones, reader.integer(), dropped);
    reader.drop(2);
    bone.name = reader.text();
    reader.drop();
    reader.vector(bone.position);
    reader.drop();
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            bone.matrix.m[row][column] = reader.number();
        }
    }
    if (reader.next().isExactText("parent")) {
        bone.parent = reader.text();
        reader.drop();
    }
}

void readMesh(Reader &reader, MD5Mesh &mesh)
{
    reader.drop(3);
    mesh.shader = reader.text();
    mesh.vertices.clear();
    mesh.triangles.clear();
    mesh.weights.clear();
    reader.drop();
    reader.groups([&] {
        MD5Vertex vertex;
        reader.drop(2);
        vertex.u = reader.number();
        vertex.v = reader.number();
        vertex.firstWeight = reader.index();
        vertex.weightCount = reader.index();
        mesh.vertices.push_back(vertex);
    });
    reader.drop();
    reader.groups([&] {
        MD5Triangle triangle;
        reader.drop();
        triangle.index = reader.index();
        triangle.a = reader.index();
        triangle.b = reader.index();
        triangle.c = reader.index();
        mesh.triangles.push_back(triangle);
    });
    reader.drop();
    reader.groups([&] {
        MD5Weight weight;
        reader.drop();
        weight.index = reader.index();
        weight.bone = reader.index();
        weight.weight = reader.number();
        reader.vector(weight.offset);
        mesh.weights.push_back(weight);
    });
    reader.drop();
}

void readChannel(Reader &reader, MD5Anim &anim)
{
    MD5Channel dropped;
    MD5Channel &channel = recordAt(anim.channels, reader.integer(), dropped);
    reader.drop(2);
    channel.joint = reader.text();
    reader.drop();
    String const attribute = reader.text();
    for (std::uint32_t i = 0; i < std::size(attributeNames); ++i) {
        if (attribute == attributeNames[i].name || attribute == attributeNames[i].capitals) {
            channel.attribute = i;
        }
    }
    reader.drop();
    channel.startTime = reader.number();
    reader.drop();
    channel.endTime = reader.number();
    reader.drop();
    channel.frameRate = reader.number();
    reader.drop();
    int const strings = reader.integer();
    channel.stringCount = static_cast<std::uint16_t>(strings);
    reader.drop(strings);
    reader.drop();
    channel.rangeStart = reader.index();
    channel.rangeEnd = reader.index();
    reader.drop();
    channel.keys.clear();
    reader.groups([&] {
        float const key = reader.number();
        channel.keys.push_back(isAngle(channel.attribute) ? key * radiansPerDegree + fullTurn : key);
    });
    reader.drop();
}

// Goes through a file's keywords: those that both formats have, and the format's own.
template <class Target, class Group>
bool readGroups(char const *path, Target &target, Group group)
{
    cFileTempMem file;
    if (!file.open(path)) {
        return false;
    }
    Reader reader(file);
    while (reader.hasMore()) {
        TextToken const keyword = reader.next();
        if (keyword.isExactText("MD5Version")) {
            target.version = reader.index();
        } else if (keyword.isExactText("commandline")) {
            target.commandLine = reader.text();
        } else {
            group(keyword, reader);
        }
    }
    return true;
}

// Builds the text of a file. Numbers come as printf's %d and %f give them.
class Writer {
public:
    Writer &operator<<(char const *text)
    {
        m_text += text;
        return *this;
    }
    Writer &operator<<(String const &text) { return *this << text.c_str(); }
    Writer &operator<<(std::size_t value) { return append(value); }
    Writer &operator<<(std::uint16_t value) { return append(value); }
    Writer &operator<<(float value) { return fixed(value, 6); }
    Writer &operator<<(D3DXVECTOR3 const &v) { return *this << v.x << " " << v.y << " " << v.z; }
    Writer &fixed(float value, int digits) { return append(double{value}, std::chars_format::fixed, digits); }

    void save(char const *path) const { os::replaceFile(path, m_text.data(), m_text.size()); }

private:
    template <class... Arguments>
    Writer &append(Arguments... arguments)
    {
        char digits[64];
        m_text.append(digits, std::to_chars(std::begin(digits), std::end(digits), arguments...).ptr);
        return *this;
    }

    std::string m_text;
};

} // namespace

void MD5Loader::loadModel(char const *path, MD5Mesh &mesh)
{
    bool const isRead = readGroups(path, mesh, [&](TextToken const &keyword, Reader &reader) {
        if (keyword.isExactText("numbones")) {
            reader.announced(mesh.bones, mostBones);
        } else if (keyword.isExactText("bone")) {
            readBone(reader, mesh);
        } else if (keyword.isExactText("nummeshes")) {
            reader.drop();
        } else if (keyword.isExactText("mesh")) {
            readMesh(reader, mesh);
        }
    });
    if (isRead) {
        mesh.buildHierarchy();
        mesh.defaultPose();
    }
}

void MD5Loader::loadAnim(char const *path, MD5Anim &anim)
{
    bool const isRead = readGroups(path, anim, [&](TextToken const &keyword, Reader &reader) {
        if (keyword.isExactText("numchannels")) {
            reader.announced(anim.channels);
        } else if (keyword.isExactText("channel")) {
            readChannel(reader, anim);
        }
    });
    if (isRead) {
        anim.precalc();
    }
}

void MD5Loader::saveModel(char const *path, MD5Mesh &mesh)
{
    Writer out;
    out << "MD5Version " << mesh.version << "\ncommandline \"" << mesh.commandLine << "\"\nnumbones "
        << mesh.bones.size() << "\n";
    for (std::size_t i = 0; i < mesh.bones.size(); ++i) {
        MD5Bone const &bone = mesh.bones[i];
        out << "bone " << i << " {\n    name \"" << bone.name << "\"\n    bindpos " << bone.position
            << "\n    bindmat";
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                out << " " << bone.matrix.m[row][column];
            }
        }
        out << "\n";
        if (!bone.parent.empty()) {
            out << "    parent \"" << bone.parent << "\"\n";
        }
        out << "}\n\n";
    }
    out << "nummeshes 1\nmesh 0 { \n  shader \"" << mesh.shader << "\"\n\n  numverts " << mesh.vertices.size()
        << "\n";
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        MD5Vertex const &vertex = mesh.vertices[i];
        out << "    verts " << i << " " << vertex.u << " " << vertex.v << " " << vertex.firstWeight << " "
            << vertex.weightCount << "\n";
    }
    out << "\n  numtris " << mesh.triangles.size() << "\n";
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        MD5Triangle const &triangle = mesh.triangles[i];
        out << "    tri " << i << "  " << triangle.a << " " << triangle.b << " " << triangle.c << "\n";
    }
    out << "\n  numweights " << mesh.weights.size() << "\n";
    for (std::size_t i = 0; i < mesh.weights.size(); ++i) {
        MD5Weight const &weight = mesh.weights[i];
        out << "    weight " << i << " " << weight.bone << " " << weight.weight << " " << weight.offset
            << "\n";
    }
    out << "}\n";
    out.save(path);
}

void MD5Loader::saveAnim(char const *path, MD5Anim &anim)
{
    constexpr std::size_t keysPerLine = 8;
    Writer out;
    out << "MD5Version " << anim.version << "\ncommandline \"" << anim.commandLine << "\"\n\nnumchannels "
        << anim.channels.size() << "\n\n";
    for (std::size_t i = 0; i < anim.channels.size(); ++i) {
        MD5Channel const &channel = anim.channels[i];
        out << "channel " << i << " {\n        joint \"" << channel.joint << "\"\n";
        if (channel.attribute < std::size(attributeNames)) {
            out << "        attribute \"" << attributeNames[channel.attribute].name << "\"\n";
        }
        out << "        starttime " << channel.startTime << "\n        endtime " << channel.endTime
            << "\n        framerate " << channel.frameRate << "\n\n        strings 0\n\n        range "
            << channel.rangeStart << " " << channel.rangeEnd << "\n        keys " << channel.keys.size();
        for (std::size_t k = 0; k < channel.keys.size(); ++k) {
            if (k % keysPerLine == 0) {
                out << "\n                 ";
            }
            float const key = channel.keys[k];
            out.fixed(isAngle(channel.attribute) ? key * degreesPerRadian : key, 4) << " ";
        }
        out << "\n}\n\n";
    }
    out.save(path);
}

} // namespace Qel
