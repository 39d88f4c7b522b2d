// PLACEHOLDER: LeadShine_DH116 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::LeadShine_DH116::weight[228] = {};
double Quil_linear::LeadShine_DH116::w0[19] = {};

quil::TargetArray quil::hands::LeadShine_DH116(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(LeadShine_DH116)
QUIL_DEFINE_GET_DATA1(LeadShine_DH116)
