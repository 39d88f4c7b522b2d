// Finger joint remap: on hands whose finger linkages cover a much wider range than the glove's
// joints, each proximal and distal finger slot is passed through its own three-piece gain curve
// (steep at the start of a bend, shallower or offset deeper in it) and then floored at the
// linkage's end stop.
#pragma once

#include <initializer_list>

#include "core/curves.h"
#include "core/records.h"
#include "core/slots.h"

namespace quil {

struct FingerRemap {
    Curve3 proximal;  // the knuckle joints
    Curve3 distal;    // the second copies of the doubled rows (the distal joints)
    double floor;     // end stop: a slot below it is set to it

    // Each slot reads only itself, so the proximal slots and the distal slots may be remapped in
    // either order.
    void apply(Targets& out, std::initializer_list<int> proximal_slots,
               std::initializer_list<int> distal_slots) const {
        for (int i : proximal_slots) out[i] = floored(proximal(out[i]));
        for (int i : distal_slots) out[i] = floored(distal(out[i]));
    }

  private:
    double floored(double v) const { return v < floor ? floor : v; }
};

}  // namespace quil
