// PLACEHOLDER: OYMotion_ROH_A001 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::OYMotion_ROH_A001::weight[228] = {};
double Quil_linear::OYMotion_ROH_A001::w0[19] = {};

quil::TargetArray quil::hands::OYMotion_ROH_A001(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(OYMotion_ROH_A001)
