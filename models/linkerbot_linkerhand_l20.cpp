// PLACEHOLDER: LINKERBOT_LinkerHand_L20 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::LINKERBOT_LinkerHand_L20::weight[228] = {};
double Quil_linear::LINKERBOT_LinkerHand_L20::w0[19] = {};

quil::TargetArray quil::hands::LINKERBOT_LinkerHand_L20(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(LINKERBOT_LinkerHand_L20)
