// PLACEHOLDER: TetherIA_AeroHandOpen is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::TetherIA_AeroHandOpen::weight[228] = {};
double Quil_linear::TetherIA_AeroHandOpen::w0[19] = {};
bool Quil_linear::TetherIA_AeroHandOpen::fingerPinchDone[4] = {};
double Quil_linear::TetherIA_AeroHandOpen::thumb1_ref_val = 0.0;
double Quil_linear::TetherIA_AeroHandOpen::thumb2_ref_val = 0.0;

quil::TargetArray quil::hands::TetherIA_AeroHandOpen(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(TetherIA_AeroHandOpen, (quil::MemoryRef{Quil_linear::TetherIA_AeroHandOpen::fingerPinchDone, &Quil_linear::TetherIA_AeroHandOpen::thumb1_ref_val, &Quil_linear::TetherIA_AeroHandOpen::thumb2_ref_val}))
