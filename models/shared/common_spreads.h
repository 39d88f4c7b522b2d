// The spread coupling most linkage hands share (the AgiBot O12, the LeadShine DH116, the RUIYAN
// RY_H2, the TalentRobot Pro, the PaXini DexH13, the LinkerHand O6 and Proception): index and
// little spreads at most 30, ring at most 20; a narrow little spread scaled by 1.5, a wider one
// lifted by 3.5; each spread closed by its finger's distal curl (0.15, 0.15, 0.25); the middle
// spread at 0.24 of the index spread less 0.32 of the ring spread.
#pragma once

#include "core/spread_coupling.h"

namespace quil {

constexpr SpreadCoupling kCommonSpreads{30, 20, 30, 1.5, 3.5, 0.15, 0.15, 0.25, 0.24, 0.32};

}  // namespace quil
