#include "System/System/globalStrings.h"

#include "System/System/stringTools.h"

namespace Qel {

char const *GlobalStrings::intern(char const *text)
{
    Node node{StringTools::calcHash(text), text};
    auto const place = m_nodes.lower_bound(node);
    if (place != m_nodes.end() && !(node < *place)) {
        return place->text;
    }
    node.text = m_pool.str_add(text);
    m_nodes.insert(place, node);
    return node.text;
}

} // namespace Qel
