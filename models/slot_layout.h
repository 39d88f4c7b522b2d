// What the 24 output slots are. Every hand puts the same joints at the same places: the thumb in
// slots 0-3 and 20, then four slots per finger (tip, distal, proximal, spread) from the index to
// the little finger, two slots no hand drives, and the terminator. So the roles are written once,
// here, and a hand's file says only what is its own: which slots are computed from other slots
// (followers) and whether its last slot reports a gesture.
//
// What the library states of a slot beyond that (its kind, the value it is held at, its sign,
// range and the readings that move it) is measured from the mappings themselves and shipped in
// models/slot_facts_measured.inc, so it cannot drift from what the hands do.
#pragma once

#include <array>
#include <cstddef>
#include <limits>

#include "core/slots.h"

namespace quil {

enum class SlotKind : int { joint = 0, follower = 1, fixed = 2, unused = 3, terminator = 4, gesture_code = 5 };

// A follower: slot = scale[0] * slot[source[0]] (+ scale[1] * slot[source[1]]) (+ offset), then
// raised to `lower`, then lowered to `upper`, then its sign flipped if `negated`, all on the
// final values of the source slots and in that order, so that the relation reproduces the
// hand's own value bit for bit wherever it holds.
struct SlotRelation {
    int slot = -1;
    int source[2] = {-1, -1};
    double scale[2] = {0.0, 0.0};
    double offset = 0.0;
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    bool negated = false;
    // A relation the linear form above cannot write: the hand's own rule, evaluated on the final
    // targets, with a description of it (source[] still names the slots it reads).
    double (*rule)(const double* targets) = nullptr;
    const char* rule_text = nullptr;

    bool linear() const { return rule == nullptr; }

    // The value the relation gives from a sample's 24 targets.
    double apply(const double* targets) const {
        if (rule) return rule(targets);
        double v = scale[0] * targets[source[0]];
        if (source[1] >= 0) v = v + scale[1] * targets[source[1]];
        if (offset != 0.0) v = v + offset;
        if (v < lower) v = lower;
        if (v > upper) v = upper;
        return negated ? -v : v;
    }
};

// The finger tip joint driven at a fixed share of the distal joint next to it, never opening
// past 0: the coupling most hands give their finger tips.
constexpr SlotRelation tip_follows_distal(int tip, double share = 0.8, double offset = 0.0) {
    SlotRelation r;
    r.slot = tip;
    r.source[0] = tip + 1;
    r.scale[0] = share;
    r.offset = offset;
    r.upper = 0.0;
    return r;
}

// The middle finger's spread placed between the index and ring spreads. The index spread slot
// leaves the hand negated, so its gain appears here with the opposite sign.
constexpr SlotRelation middle_spread_between(double index_gain, double ring_gain) {
    SlotRelation r;
    r.slot = slot::middle_spread;
    r.source[0] = slot::index_spread;
    r.scale[0] = -index_gain;
    r.source[1] = slot::ring_spread;
    r.scale[1] = -ring_gain;
    return r;
}

// The thumb rotation rebuilt from the thumb tip as share * tip + offset, then mirrored.
constexpr SlotRelation rotation_follows_thumb_tip(double share, double offset) {
    SlotRelation r;
    r.slot = slot::thumb_rotation;
    r.source[0] = slot::thumb_distal;
    r.scale[0] = share;
    r.offset = offset;
    r.negated = true;
    return r;
}

// A follower given by a rule of the hand's own.
constexpr SlotRelation follows_by_rule(int slot, int source, double (*rule)(const double*), const char* text) {
    SlotRelation r;
    r.slot = slot;
    r.source[0] = source;
    r.rule = rule;
    r.rule_text = text;
    return r;
}

// The thumb tip rebuilt from the thumb's proximal joint at 0.9 (single precision), at most -75 deep.
inline double thumb_tip_from_proximal(const double* t) {
    double v = t[slot::thumb_proximal] * double(0.9f);
    if (v < -75) v = -75;
    return v;
}
constexpr SlotRelation kThumbTipFollowsProximal =
    follows_by_rule(slot::thumb_distal, slot::thumb_proximal, thumb_tip_from_proximal, "max(slot 1 * 0.9f, -75)");

constexpr std::size_t kMaxFollowers = 8;

// What a hand's file declares about its slots: its followers, and whether slot 23 reports a
// recognised gesture instead of holding the terminator.
struct SlotDeclaration {
    bool gesture_code = false;
    std::size_t count = 0;
    std::array<SlotRelation, kMaxFollowers> followers{};

    constexpr SlotDeclaration plus(const SlotRelation& r) const {
        SlotDeclaration d = *this;
        d.followers[d.count++] = r;
        return d;
    }
    constexpr SlotDeclaration with_gesture_code() const {
        SlotDeclaration d = *this;
        d.gesture_code = true;
        return d;
    }
    const SlotRelation* follower(int slot) const {
        for (std::size_t i = 0; i < count; ++i)
            if (followers[i].slot == slot) return &followers[i];
        return nullptr;
    }
};

// No slot computed from another.
constexpr SlotDeclaration kNoFollowers{};

// The four finger tips following their distal joints at 0.8, as most hands have them.
constexpr SlotDeclaration kTipsAtEightTenths = kNoFollowers.plus(tip_follows_distal(slot::index_tip))
                                                   .plus(tip_follows_distal(slot::middle_tip))
                                                   .plus(tip_follows_distal(slot::ring_tip))
                                                   .plus(tip_follows_distal(slot::little_tip));

// The role of each slot, and what it means for the robot.
struct SlotRole {
    const char* name;
    const char* finger;  // thumb, index, middle, ring, little, or "" for no finger
    const char* meaning;
};

// The roles of slots 0..23 on every hand (slot 23 is the terminator, or the gesture code on the
// hands that declare one).
extern const std::array<SlotRole, 24> kSlotRoles;
extern const SlotRole kGestureCodeRole;

// One glove reading: its name, the finger and motion it stands for, and what the hands do with it.
struct ReadingRole {
    const char* name;
    const char* finger;
    const char* motion;  // "bend" or "spread"
    const char* meaning;
};

extern const std::array<ReadingRole, 12> kReadingRoles;

}  // namespace quil
