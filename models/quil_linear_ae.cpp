// PLACEHOLDER: QUIL_linear_AE is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::QUIL_linear_AE::weight[228] = {};
double Quil_linear::QUIL_linear_AE::w0[19] = {};

quil::TargetArray quil::hands::QUIL_linear_AE(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(QUIL_linear_AE)
QUIL_DEFINE_GET_DATA1(QUIL_linear_AE)
