// PLACEHOLDER: RUIYAN_RY_H15 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::RUIYAN_RY_H15::weight[228] = {};
double Quil_linear::RUIYAN_RY_H15::w0[19] = {};
bool Quil_linear::RUIYAN_RY_H15::fingerPinchDone[4] = {};

quil::TargetArray quil::hands::RUIYAN_RY_H15(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(RUIYAN_RY_H15, (quil::MemoryRef{Quil_linear::RUIYAN_RY_H15::fingerPinchDone, nullptr, nullptr}))
QUIL_DEFINE_GET_DATA1(RUIYAN_RY_H15)
