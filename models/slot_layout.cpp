#include "models/slot_layout.h"

namespace quil {

namespace {
constexpr const char* kTip =
    "the finger's outermost joint; on most hands a fixed share of the distal joint (see kind)";
constexpr const char* kDistal = "the finger's middle joint, the one the pinch and curl rules call distal";
constexpr const char* kProximal = "the finger's base joint, the curl that the pinch gates test";
}  // namespace

const std::array<SlotRole, 24> kSlotRoles = {{
    {"thumb_base", "thumb",
     "the thumb's base bend; it bends with the thumb_proximal joint (the rules do not name this slot)"},
    {"thumb_proximal", "thumb", "the thumb's proximal bend, the one the pinch gates test to see that the thumb is in"},
    {"thumb_distal", "thumb", "the thumb's distal joint (its tip), the one the pinch rules push toward the finger"},
    {"thumb_abduction", "thumb",
     "a second thumb base joint, moved with the rotation or the fingers' spread, held at one target on some "
     "hands (the rules do not name this slot)"},
    {"index_tip", "index", kTip},
    {"index_distal", "index", kDistal},
    {"index_proximal", "index", kProximal},
    {"index_spread", "index", "the index finger's sideways spread"},
    {"middle_tip", "middle", kTip},
    {"middle_distal", "middle", kDistal},
    {"middle_proximal", "middle", kProximal},
    {"middle_spread", "middle", "the middle finger's sideways spread; on most hands set between the index and ring spreads"},
    {"ring_tip", "ring", kTip},
    {"ring_distal", "ring", kDistal},
    {"ring_proximal", "ring", kProximal},
    {"ring_spread", "ring", "the ring finger's sideways spread"},
    {"little_tip", "little", kTip},
    {"little_distal", "little", kDistal},
    {"little_proximal", "little", kProximal},
    {"little_spread", "little", "the little finger's sideways spread"},
    {"thumb_rotation", "thumb",
     "the thumb's rotation across the palm, the slot the pinch gates test to see that the thumb is turned "
     "toward a finger"},
    {"unused", "", "no joint: a row without weights, always the same constant; leave it unconnected"},
    {"unused", "", "no joint: a row without weights, always the same constant; leave it unconnected"},
    {"terminator", "", "the end marker -1.0, not a joint"},
}};

const SlotRole kGestureCodeRole = {
    "gesture_code", "", "not a joint: -1.0, or a code for a recognised gesture (0.0 pinch, 2.0 fist)"};

// Names from what the coefficient sets do with each reading: which finger's rows it drives, and
// whether it bends them or spreads them. The unit is the glove's: degrees, 0 for an open hand.
const std::array<ReadingRole, 12> kReadingRoles = {{
    {"thumb_base", "thumb", "bend", "the thumb's base: drives thumb_base and thumb_proximal"},
    {"thumb_middle", "thumb", "bend", "the thumb's middle: drives thumb_distal and thumb_rotation"},
    {"thumb_tip", "thumb", "bend", "the thumb's tip: drives thumb_distal and thumb_rotation"},
    {"index_bend", "index", "bend", "the index finger's bend: drives its tip, distal and proximal joints"},
    {"index_spread", "index", "spread", "the spread between index and middle finger: drives index_spread"},
    {"index_bend_2", "index", "bend",
     "a second index channel: the in-house hands drive index_proximal from it; a few hands add a little of it "
     "to other joints, the little finger's on some"},
    {"middle_bend", "middle", "bend", "the middle finger's bend: drives its tip, distal and proximal joints"},
    {"ring_spread", "ring", "spread", "the spread between middle and ring finger: drives ring_spread (and little_spread)"},
    {"middle_bend_2", "middle", "bend",
     "a second middle channel: the in-house hands drive middle_proximal from it; a few hands add a little of it "
     "to other joints"},
    {"ring_bend", "ring", "bend", "the ring finger's bend: drives its tip, distal and proximal joints"},
    {"little_spread", "little", "spread", "the spread between ring and little finger: drives little_spread"},
    {"little_bend", "little", "bend", "the little finger's bend: drives its tip, distal and proximal joints"},
}};

}  // namespace quil
