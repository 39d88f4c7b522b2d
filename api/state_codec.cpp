// The saved state of a hand handle, written and read back byte for byte.
#include "api/state_codec.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quil::state {
namespace {

// The saved state: a fixed little-endian record.
//   0  4  magic "QLHS"
//   4  2  format version (1)
//   6  2  record size (164)
//   8 32  hand name, NUL-padded
//  40  1  dropout policy
//  41  4  pinch latches, 0 or 1 each
//  45  3  zero
//  48  8  thumb1 reference (IEEE double)
//  56  8  thumb2 reference
//  64 96  last finite reading of x0..x11
// 160  4  CRC-32 of bytes 0..159
// A handle with a wiring profile saves format 2: bytes 0..159 as above (version 2, record size
// the whole record's), then the safety stage's memory:
// 160  8  fingerprint of the profile
// 168  1  a sample has been taken, 0 or 1
// 169  3  zero
// 172  4  output count n
// 176  8  the last sample's time
// 184 48n per output: last command, filter output, last raw command, smoothed derivative,
//         time of the last sample fed (doubles), filter started (1 byte), 7 zero bytes
// end-4 4 CRC-32 of everything before
constexpr unsigned char kMagic[4] = {'Q', 'L', 'H', 'S'};
constexpr std::uint16_t kFormatVersion = 1;
constexpr std::uint16_t kStageFormatVersion = 2;
constexpr std::size_t kNameField = 32;
constexpr std::size_t kStateSize = 164;
constexpr std::size_t kCrcAt = 160;
constexpr std::size_t kStageAt = 160;
constexpr std::size_t kStageOutputsAt = 184;
constexpr std::size_t kStageOutputSize = 48;

constexpr std::size_t stage_state_size(std::size_t outputs) { return kStageOutputsAt + kStageOutputSize * outputs + 4; }

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    static_assert(sizeof(#hand) <= kNameField, "a hand name must fit the state's name field");
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL

std::uint32_t crc32(const unsigned char* p, std::size_t n) {
    std::uint32_t c = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < n; ++i) {
        c ^= p[i];
        for (int b = 0; b < 8; ++b) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
    }
    return ~c;
}

void put_le(unsigned char* p, std::uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

std::uint64_t get_le(const unsigned char* p, int bytes) {
    std::uint64_t v = 0;
    for (int i = 0; i < bytes; ++i) v |= static_cast<std::uint64_t>(p[i]) << (8 * i);
    return v;
}

void put_double(unsigned char* p, double d) {
    std::uint64_t v;
    std::memcpy(&v, &d, sizeof v);
    put_le(p, v, 8);
}

double get_double(const unsigned char* p) {
    const std::uint64_t v = get_le(p, 8);
    double d;
    std::memcpy(&d, &v, sizeof d);
    return d;
}

// What a state holds once read and checked.
struct DecodedState {
    const HandModel* model;
    int dropout;
    bool latches[4];
    double thumb1, thumb2;
    double last_finite[12];
    const unsigned char* stage;  // format 2: the stage's memory at kStageAt; else NULL
    std::size_t size;
};

int decode_state(const void* state, std::size_t size, DecodedState& d) {
    if (size == 0) return QUIL_E_STATE_TRUNCATED;
    if (!state) return QUIL_E_NULL;
    const auto* p = static_cast<const unsigned char*>(state);
    if (std::memcmp(p, kMagic, size < 4 ? size : 4) != 0) return QUIL_E_STATE_NOT_A_STATE;
    if (size < 8) return QUIL_E_STATE_TRUNCATED;
    const std::uint64_t version = get_le(p + 4, 2), record = get_le(p + 6, 2);
    d.stage = nullptr;
    d.size = record;
    if (version == kFormatVersion) {
        if (record != kStateSize) return QUIL_E_STATE_DAMAGED;
        if (size < kStateSize) return QUIL_E_STATE_TRUNCATED;
        if (size > kStateSize) return QUIL_E_STATE_DAMAGED;
        if (get_le(p + kCrcAt, 4) != crc32(p, kCrcAt)) return QUIL_E_STATE_DAMAGED;
    } else if (version == kStageFormatVersion) {
        if (record < stage_state_size(1) || record > stage_state_size(QUIL_MAX_OUTPUTS)) return QUIL_E_STATE_DAMAGED;
        if (size < record) return QUIL_E_STATE_TRUNCATED;
        if (size > record) return QUIL_E_STATE_DAMAGED;
        if (get_le(p + record - 4, 4) != crc32(p, record - 4)) return QUIL_E_STATE_DAMAGED;
        const std::uint64_t outputs = get_le(p + 172, 4);
        if (record != stage_state_size(outputs) || p[168] > 1 || p[169] || p[170] || p[171])
            return QUIL_E_STATE_DAMAGED;
        for (std::uint64_t i = 0; i < outputs; ++i) {
            const unsigned char* o = p + kStageOutputsAt + kStageOutputSize * i;
            if (o[40] > 1) return QUIL_E_STATE_DAMAGED;
            for (int z = 41; z < 48; ++z)
                if (o[z]) return QUIL_E_STATE_DAMAGED;
            for (int k = 0; k < 5; ++k)
                if (!std::isfinite(get_double(o + 8 * k))) return QUIL_E_STATE_DAMAGED;
        }
        if (!std::isfinite(get_double(p + 176))) return QUIL_E_STATE_DAMAGED;
        d.stage = p;
    } else {
        return QUIL_E_STATE_VERSION;
    }

    const char* name = reinterpret_cast<const char*>(p + 8);
    const std::size_t len = strnlen(name, kNameField);
    if (len == kNameField) return QUIL_E_STATE_DAMAGED;
    for (std::size_t i = len; i < kNameField; ++i)
        if (name[i] != '\0') return QUIL_E_STATE_DAMAGED;
    d.model = nullptr;
    for (const HandModel& m : kHandModels)
        if (std::string_view(name, len) == m.name) d.model = &m;
    if (!d.model) return QUIL_E_STATE_DAMAGED;

    d.dropout = p[40];
    if (d.dropout != QUIL_DROPOUT_PASS && d.dropout != QUIL_DROPOUT_HOLD) return QUIL_E_STATE_DAMAGED;
    for (int i = 0; i < 4; ++i) {
        if (p[41 + i] > 1) return QUIL_E_STATE_DAMAGED;
        d.latches[i] = p[41 + i] == 1;
    }
    if (p[45] || p[46] || p[47]) return QUIL_E_STATE_DAMAGED;
    d.thumb1 = get_double(p + 48);
    d.thumb2 = get_double(p + 56);
    for (int i = 0; i < 12; ++i) {
        d.last_finite[i] = get_double(p + 64 + 8 * i);
        if (!std::isfinite(d.last_finite[i])) return QUIL_E_STATE_DAMAGED;
    }
    return QUIL_OK;
}

}  // namespace

std::size_t plain_size() { return kStateSize; }

std::size_t size_of(const quil_hand* hand) {
    if (!hand) return 0;
    return hand->stage ? stage_state_size(hand->stage->size()) : kStateSize;
}

std::size_t save(const quil_hand* hand, void* buffer, std::size_t capacity) {
    const std::size_t size = size_of(hand);
    if (!hand || !buffer || capacity < size) return 0;
    unsigned char p[stage_state_size(QUIL_MAX_OUTPUTS)] = {};
    std::memcpy(p, kMagic, 4);
    put_le(p + 4, hand->stage ? kStageFormatVersion : kFormatVersion, 2);
    put_le(p + 6, size, 2);
    std::memcpy(p + 8, hand->model->name, strnlen(hand->model->name, kNameField - 1));
    p[40] = static_cast<unsigned char>(hand->dropout);
    for (int i = 0; i < 4; ++i) p[41 + i] = hand->memory.pinch_latches[i] ? 1 : 0;
    put_double(p + 48, hand->memory.thumb_references[0]);
    put_double(p + 56, hand->memory.thumb_references[1]);
    for (int i = 0; i < 12; ++i) put_double(p + 64 + 8 * i, hand->last_finite[i]);
    if (const quil::SafetyStage* stage = hand->stage.get()) {
        put_le(p + kStageAt, stage->fingerprint(), 8);
        p[168] = stage->started ? 1 : 0;
        put_le(p + 172, stage->size(), 4);
        put_double(p + 176, stage->t_last);
        for (std::size_t i = 0; i < stage->size(); ++i) {
            unsigned char* o = p + kStageOutputsAt + kStageOutputSize * i;
            const quil::OutputMemory& m = stage->memory[i];
            put_double(o, m.last);
            put_double(o + 8, m.y_prev);
            put_double(o + 16, m.x_prev_raw);
            put_double(o + 24, m.edx_prev);
            put_double(o + 32, m.t_prev);
            o[40] = m.filtered ? 1 : 0;
        }
    }
    put_le(p + size - 4, crc32(p, size - 4), 4);
    std::memcpy(buffer, p, size);
    return size;
}

int load(quil_hand* hand, const void* state, std::size_t size) {
    if (!hand) return QUIL_E_NULL;
    DecodedState d;
    const int rc = decode_state(state, size, d);
    if (rc != QUIL_OK) return rc;
    if (d.model != hand->model) return QUIL_E_STATE_OTHER_HAND;
    quil::SafetyStage* stage = hand->stage.get();
    if (d.stage && (!stage || get_le(d.stage + kStageAt, 8) != stage->fingerprint() ||
                    get_le(d.stage + 172, 4) != stage->size()))
        return QUIL_E_STATE_PROFILE;
    if (d.stage) {
        // Commands the stage could never have emitted under this profile mean a forged state.
        for (std::size_t i = 0; i < stage->size(); ++i) {
            const double last = get_double(d.stage + kStageOutputsAt + kStageOutputSize * i);
            const quil::OutputWiring& w = stage->wiring().outputs[i];
            if (!(last >= w.min && last <= w.max)) return QUIL_E_STATE_DAMAGED;
        }
    }
    if (stage) {
        if (d.stage) {
            stage->started = d.stage[168] == 1;
            stage->t_last = get_double(d.stage + 176);
            for (std::size_t i = 0; i < stage->size(); ++i) {
                const unsigned char* o = d.stage + kStageOutputsAt + kStageOutputSize * i;
                quil::OutputMemory& m = stage->memory[i];
                m.last = get_double(o);
                m.y_prev = get_double(o + 8);
                m.x_prev_raw = get_double(o + 16);
                m.edx_prev = get_double(o + 24);
                m.t_prev = get_double(o + 32);
                m.filtered = o[40] == 1;
            }
        } else {
            stage->reset();  // a state saved without a profile: the stage starts afresh
        }
    }
    hand->dropout = d.dropout;
    for (int i = 0; i < 4; ++i) hand->memory.pinch_latches[i] = d.latches[i];
    hand->memory.thumb_references[0] = d.thumb1;
    hand->memory.thumb_references[1] = d.thumb2;
    for (int i = 0; i < 12; ++i) hand->last_finite[i] = d.last_finite[i];
    return QUIL_OK;
}

const HandModel* hand_of(const void* state, std::size_t size) {
    DecodedState d;
    return decode_state(state, size, d) == QUIL_OK ? d.model : nullptr;
}

}  // namespace quil::state
