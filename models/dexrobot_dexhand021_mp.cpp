// PLACEHOLDER: DexRobot_DexHand021_MP is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::DexRobot_DexHand021_MP::weight[228] = {};
double Quil_linear::DexRobot_DexHand021_MP::w0[19] = {};

quil::TargetArray quil::hands::DexRobot_DexHand021_MP(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(DexRobot_DexHand021_MP)
