// PLACEHOLDER: PICO_PXRHand is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::PICO_PXRHand::weight[228] = {};
double Quil_linear::PICO_PXRHand::w0[19] = {};

quil::TargetArray quil::hands::PICO_PXRHand(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(PICO_PXRHand)
QUIL_DEFINE_GET_DATA1(PICO_PXRHand)
