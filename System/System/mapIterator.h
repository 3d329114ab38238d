#pragma once

#include "System/System/export.h"

#include <utility>

namespace Qel {

/// Walks a map from where it was made to the map's end, without showing the map.
///
/// @code
/// for (auto it = config.getSettingsIterator(); it.hasMore(); it.next()) {
///     show(it.key(), it.value());
/// }
/// @endcode
///
/// Valid until the map loses the entry it stands at.
///
/// @tparam Map  a standard map or multimap, const for reading only
template <class Map>
class MapIterator {
public:
    using Iterator = decltype(std::declval<Map &>().begin());

    explicit MapIterator(Map &map) : m_current(map.begin()), m_end(map.end()) {}
    MapIterator(Iterator current, Iterator end) : m_current(current), m_end(end) {}

    bool hasMore() const { return m_current != m_end; }

    // These three ask for an entry: hasMore() must be true.
    auto const &key() const { return m_current->first; }
    auto &value() const { return m_current->second; }
    void next() { ++m_current; }

private:
    Iterator m_current;
    Iterator m_end;
};

} // namespace Qel
