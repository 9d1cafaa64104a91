// The places of records among those of their list: what stands at the same place of models that say the same is the
// same thing.
#pragma once

#include <cstdint>

#include "foundation/keyed_list.h"

namespace pelt {

// How many elements stand before this one; -1 for one that is none of the list.
template <typename Element>
int32_t rank_in(const KeyedList& list, const Element* element) {
    int32_t rank = 0;
    for (const Element& each : list_elements<Element>(list)) {
        if (&each == element) { return rank; }
        ++rank;
    }
    return -1;
}

template <typename Element>
Element* at_rank(KeyedList& list, int32_t rank) {
    return list_at<Element>(&list, rank, 1);
}

}  // namespace pelt
