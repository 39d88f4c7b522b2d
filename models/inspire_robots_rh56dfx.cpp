// PLACEHOLDER: INSPIRE_ROBOTS_RH56DFX is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::INSPIRE_ROBOTS_RH56DFX::weight[228] = {};
double Quil_linear::INSPIRE_ROBOTS_RH56DFX::w0[19] = {};

quil::TargetArray quil::hands::INSPIRE_ROBOTS_RH56DFX(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(INSPIRE_ROBOTS_RH56DFX)
