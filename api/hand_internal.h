// The handle behind quil_hand*, shared by the files of the hand API.
#ifndef QUIL_API_HAND_INTERNAL_H
#define QUIL_API_HAND_INTERNAL_H

#include <memory>

#include "core/safety_stage.h"
#include "models/catalogue.h"
#include "quil_linear/hand.h"

struct quil_hand {
    const quil::HandModel* model;
    const quil_hand_info* info;
    quil::HandMemory memory;
    double last_finite[12];  // per channel, the last finite reading seen; 0.0 before the first
    int dropout;
    std::unique_ptr<quil::SafetyStage> stage;  // the wiring profile's stage; none by default
};

#endif  // QUIL_API_HAND_INTERNAL_H
