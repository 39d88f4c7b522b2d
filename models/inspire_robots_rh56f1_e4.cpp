// PLACEHOLDER: INSPIRE_ROBOTS_RH56F1_E4 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::weight[228] = {};
double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::w0[19] = {};
bool Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone[4] = {};
double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val = 0.0;

quil::TargetArray quil::hands::INSPIRE_ROBOTS_RH56F1_E4(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(INSPIRE_ROBOTS_RH56F1_E4, (quil::MemoryRef{Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone, &Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val, nullptr}))
