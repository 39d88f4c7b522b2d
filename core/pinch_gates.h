// When a pinch assist may act. The thumb must be bent toward the fingers but not folded into the
// palm, and the index finger must be bent into the band where its pad meets the thumb's, or be
// reaching for it with the thumb bent far enough that the two together close the gap.
#pragma once

#include "core/pinch.h"
#include "core/records.h"
#include "core/slots.h"

namespace quil {

// Thumb ready to pinch: its first joint (thumb_proximal) at or below [0], its tip
// (thumb_distal) at or above [1].
inline bool thumb_active(const Targets& out, const ThresholdPair& thumb) {
    return out[slot::thumb_proximal] <= double(thumb.at_or_below) &&
           out[slot::thumb_distal] >= double(thumb.at_or_above);
}

// Index knuckle (index_proximal) inside the pinch band of the index pair.
inline bool index_in_band(const Targets& out, const ThresholdPair& index) {
    return index.within(out[slot::index_proximal]);
}

// Index reaching for the thumb: thumb and index bends together at or below the sum of both pairs'
// [0] edges, the index not past the band's lower edge.
inline bool index_reaches(const Targets& out, const ThresholdPair& thumb, const ThresholdPair& index) {
    return out[slot::thumb_proximal] + out[slot::index_proximal] <= sum_of_upper_edges(index, thumb) &&
           out[slot::index_proximal] >= double(index.at_or_above);
}

}  // namespace quil
