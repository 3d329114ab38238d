#pragma once

#include "System/Graphics/model/md5Mesh.h"

#include <string_view>
#include <unordered_map>

namespace Qel {

/// Finds many bones by name; a search through the list for each would take quadratic time. Good while the
/// mesh's bones and their names stay.
class BoneNames {
public:
    explicit BoneNames(MD5Mesh const &mesh) : m_none(mesh.getBoneCount())
    {
        m_places.reserve(m_none);
        for (unsigned short i = 0; i < m_none; ++i) {
            m_places.emplace(mesh.bones[i].name, i); // the first of a name stays
        }
    }

    /// As MD5Mesh::getBoneIndex().
    unsigned short find(String const &name) const
    {
        auto const place = m_places.find(name);
        return place == m_places.end() ? m_none : place->second;
    }

private:
    unsigned short m_none;
    std::unordered_map<std::string_view, unsigned short> m_places;
};

} // namespace Qel
