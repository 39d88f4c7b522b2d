// PLACEHOLDER: ROBOTERA_XHAND1 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::ROBOTERA_XHAND1::weight[228] = {};
double Quil_linear::ROBOTERA_XHAND1::w0[19] = {};

quil::TargetArray quil::hands::ROBOTERA_XHAND1(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(ROBOTERA_XHAND1)
QUIL_DEFINE_GET_DATA1(ROBOTERA_XHAND1)
