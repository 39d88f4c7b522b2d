// PLACEHOLDER: PaXini_DexH13_GEN2 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::PaXini_DexH13_GEN2::weight[228] = {};
double Quil_linear::PaXini_DexH13_GEN2::w0[19] = {};

quil::TargetArray quil::hands::PaXini_DexH13_GEN2(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(PaXini_DexH13_GEN2)
