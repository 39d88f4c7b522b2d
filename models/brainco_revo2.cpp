// PLACEHOLDER: BrainCo_Revo2 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::BrainCo_Revo2::weight[228] = {};
double Quil_linear::BrainCo_Revo2::w0[19] = {};

quil::TargetArray quil::hands::BrainCo_Revo2(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(BrainCo_Revo2)
