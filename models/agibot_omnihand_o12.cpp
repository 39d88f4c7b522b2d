// PLACEHOLDER: AgiBot_OmniHand_O12 is not mapped yet; this file is replaced by the real mapping.
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::AgiBot_OmniHand_O12::weight[228] = {};
double Quil_linear::AgiBot_OmniHand_O12::w0[19] = {};

quil::TargetArray quil::hands::AgiBot_OmniHand_O12(const InputAngles&, const MemoryRef&) {
    TargetArray out{};
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(AgiBot_OmniHand_O12)
QUIL_DEFINE_GET_DATA1(AgiBot_OmniHand_O12)
