// PLACEHOLDER: TalentRobot_Pro is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::TalentRobot_Pro::weight[228] = {};
double Quil_linear::TalentRobot_Pro::w0[19] = {};

quil::TargetArray quil::hands::TalentRobot_Pro(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(TalentRobot_Pro)
QUIL_DEFINE_GET_DATA1(TalentRobot_Pro)
