// The hand API of quil_linear/hand.h: one handle per glove, each with its own memory, over the
// same mappings as the C exports.
#include "quil_linear/hand.h"

#include <array>
#include <cmath>
#include <cstring>
#include <new>

#include "api/hand_internal.h"
#include "api/state_codec.h"
#include "models/catalogue.h"
#include "models/slot_facts.h"

namespace {

using quil::HandModel;
using quil::kHandCount;
using quil::kHandModels;

const std::array<quil_hand_info, kHandCount>& infos() {
    static const std::array<quil_hand_info, kHandCount> table = [] {
        std::array<quil_hand_info, kHandCount> t{};
        for (std::size_t i = 0; i < kHandCount; ++i) {
            const HandModel& m = kHandModels[i];
            t[i].name = m.name;
            t[i].version = m.version;
            t[i].keeps_state = m.keeps_state ? 1 : 0;
            t[i].persistent_buffer = m.buffer == quil::BufferKind::persistent ? 1 : 0;
            for (int s = 0; s < 24; ++s) t[i].slot_roles[s] = quil::slot_role(m, s).name;
        }
        return t;
    }();
    return table;
}

const quil_hand_info* info_of(const HandModel* m) {
    return m ? &infos()[static_cast<std::size_t>(m - kHandModels)] : nullptr;
}

void start_up(quil_hand& h) {
    h.memory = quil::HandMemory{};
    for (double& r : h.last_finite) r = 0.0;
    if (h.stage) h.stage->reset();
}

// One sample through the handle's hand and memory, built directly in the caller's 24 doubles.
inline void map_sample(quil_hand& h, const quil::Readings& in, double* targets) {
    static_assert(sizeof(quil::Targets) == sizeof(double) * 24, "24 packed doubles");
    new (targets) quil::Targets(h.model->map(in, h.memory.ref(), *h.model->published));
}

// One sample: note the finite readings, hold the others if asked, map.
inline void map_one(quil_hand& h, const double* readings, double* targets) {
    quil::Readings in;
    for (int i = 0; i < 12; ++i) {
        double x = readings[i];
        if (std::isfinite(x))
            h.last_finite[i] = x;
        else if (h.dropout == QUIL_DROPOUT_HOLD)
            x = h.last_finite[i];
        in.x[i] = x;
    }
    map_sample(h, in, targets);
}

// Many samples. Passing readings through as they are, the batch need not note the finite ones
// sample by sample: the last finite reading of each channel in the batch is found afterwards.
void map_many(quil_hand& h, std::size_t n, const double* readings, double* targets) {
    if (h.dropout == QUIL_DROPOUT_HOLD) {
        for (std::size_t r = 0; r < n; ++r) map_one(h, readings + 12 * r, targets + 24 * r);
        return;
    }
    for (std::size_t r = 0; r < n; ++r) {
        quil::Readings in;
        std::memcpy(in.x.data(), readings + 12 * r, sizeof(double) * 12);
        map_sample(h, in, targets + 24 * r);
    }
    for (int i = 0; i < 12; ++i)
        for (std::size_t r = n; r-- > 0;)
            if (std::isfinite(readings[12 * r + i])) {
                h.last_finite[i] = readings[12 * r + i];
                break;
            }
}

}  // namespace

extern "C" {

size_t quil_hand_count(void) { return kHandCount; }

const quil_hand_info* quil_hand_at(size_t index) {
    return index < kHandCount ? &infos()[index] : nullptr;
}

const quil_hand_info* quil_hand_find(const char* name) {
    return name ? info_of(quil::find_hand_model(name)) : nullptr;
}

size_t quil_hand_suggest(const char* name, const quil_hand_info** out, size_t capacity) {
    if (!name || !out) return 0;
    const HandModel* best[kHandCount];
    const std::size_t n = quil::closest_hand_models(name, best, capacity < kHandCount ? capacity : kHandCount);
    for (std::size_t i = 0; i < n; ++i) out[i] = info_of(best[i]);
    return n;
}

quil_hand* quil_hand_open(const char* name) {
    const HandModel* model = name ? quil::find_hand_model(name) : nullptr;
    if (!model) return nullptr;
    quil_hand* h = new (std::nothrow) quil_hand;
    if (!h) return nullptr;
    h->model = model;
    h->info = info_of(model);
    h->dropout = QUIL_DROPOUT_PASS;
    start_up(*h);
    return h;
}

void quil_hand_close(quil_hand* hand) { delete hand; }

const quil_hand_info* quil_hand_about(const quil_hand* hand) { return hand ? hand->info : nullptr; }

void quil_hand_reset(quil_hand* hand) {
    if (hand) start_up(*hand);
}

void quil_hand_map(quil_hand* hand, const double readings[12], double targets[24]) {
    if (hand && readings && targets) map_one(*hand, readings, targets);
}

void quil_hand_map_n(quil_hand* hand, size_t n, const double* readings, double* targets) {
    if (hand && readings && targets) map_many(*hand, n, readings, targets);
}

int quil_hand_set_dropout(quil_hand* hand, int policy) {
    if (!hand) return QUIL_E_NULL;
    if (policy != QUIL_DROPOUT_PASS && policy != QUIL_DROPOUT_HOLD) return QUIL_E_DROPOUT_POLICY;
    hand->dropout = policy;
    return QUIL_OK;
}

int quil_hand_dropout(const quil_hand* hand) { return hand ? hand->dropout : QUIL_E_NULL; }

const char* quil_dropout_name(int policy) {
    switch (policy) {
        case QUIL_DROPOUT_PASS: return "pass";
        case QUIL_DROPOUT_HOLD: return "hold";
        default: return nullptr;
    }
}

int quil_dropout_from_name(const char* name) {
    if (!name) return QUIL_E_NULL;
    for (int policy : {QUIL_DROPOUT_PASS, QUIL_DROPOUT_HOLD})
        if (std::strcmp(name, quil_dropout_name(policy)) == 0) return policy;
    return QUIL_E_DROPOUT_POLICY;
}

int quil_hand_memory_of(const quil_hand* hand, quil_hand_memory* out) {
    if (!hand || !out) return QUIL_E_NULL;
    for (int i = 0; i < 4; ++i) out->pinch_latches[i] = hand->memory.pinch_latches[i] ? 1 : 0;
    out->thumb_references[0] = hand->memory.thumb_references[0];
    out->thumb_references[1] = hand->memory.thumb_references[1];
    for (int i = 0; i < QUIL_READINGS; ++i) out->held_readings[i] = hand->last_finite[i];
    out->dropout = hand->dropout == QUIL_DROPOUT_HOLD ? QUIL_DROPOUT_HOLD : QUIL_DROPOUT_PASS;
    return QUIL_OK;
}

size_t quil_hand_state_size(void) { return quil::state::plain_size(); }

size_t quil_hand_state_size_of(const quil_hand* hand) { return quil::state::size_of(hand); }

size_t quil_hand_save_state(const quil_hand* hand, void* buffer, size_t capacity) {
    return quil::state::save(hand, buffer, capacity);
}

int quil_hand_load_state(quil_hand* hand, const void* state, size_t size) { return quil::state::load(hand, state, size); }

const quil_hand_info* quil_state_hand(const void* state, size_t size) {
    return info_of(quil::state::hand_of(state, size));
}

const char* quil_error_text(int code) {
    switch (code) {
        case QUIL_OK: return "no error";
        case QUIL_E_NULL: return "a required pointer was NULL";
        case QUIL_E_DROPOUT_POLICY: return "unknown dropout policy (QUIL_DROPOUT_PASS or QUIL_DROPOUT_HOLD)";
        case QUIL_E_STATE_TRUNCATED: return "the hand state is truncated";
        case QUIL_E_STATE_NOT_A_STATE: return "not a saved hand state";
        case QUIL_E_STATE_VERSION: return "a hand state format this library does not know";
        case QUIL_E_STATE_OTHER_HAND: return "the hand state belongs to another hand";
        case QUIL_E_STATE_DAMAGED: return "the hand state is damaged";
        case QUIL_E_PROFILE: return "the wiring profile is refused";
        case QUIL_E_PROFILE_HAND: return "the wiring profile is for another hand";
        case QUIL_E_NO_PROFILE: return "the hand has no wiring profile";
        case QUIL_E_STATE_PROFILE: return "the hand state was saved under another wiring profile";
        default: return "unknown error code";
    }
}

const char* quil_linear_version(void) { return QUIL_LINEAR_VERSION_STRING; }

unsigned quil_linear_version_number(void) { return QUIL_LINEAR_VERSION_NUMBER; }

}  // extern "C"
