// PLACEHOLDER: Proception is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::Proception::weight[228] = {};
double Quil_linear::Proception::w0[19] = {};

quil::TargetArray quil::hands::Proception(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(Proception)
QUIL_DEFINE_GET_DATA1(Proception)
