#include "System/System/globalStrings.h"

#include "System/System/stringTools.h"

#include <new>

namespace Qel {

char const *GlobalStrings::intern(char const *text)
{
    Node node{StringTools::calcHash(text), text};
    auto const place = m_nodes.lower_bound(node);
    if (place != m_nodes.end() && !(node < *place)) {
        return place->text;
    }
    node.text = m_pool.str_add(text);
    if (node.text == nullptr) {
        throw std::bad_alloc();
    }
    m_nodes.insert(place, node);
    return node.text;
}

} // namespace Qel
