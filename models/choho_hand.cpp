// PLACEHOLDER: CHOHO_Hand is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::CHOHO_Hand::weight[228] = {};
double Quil_linear::CHOHO_Hand::w0[19] = {};
bool Quil_linear::CHOHO_Hand::fingerPinchDone[4] = {};

quil::TargetArray quil::hands::CHOHO_Hand(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(CHOHO_Hand, (quil::MemoryRef{Quil_linear::CHOHO_Hand::fingerPinchDone, nullptr, nullptr}))
