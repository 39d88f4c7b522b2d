// Wiring profiles on a handle (quil_linear/profile.h): the checks a profile must pass, and the
// handle's calls that go through its safety stage.
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "api/hand_internal.h"
#include "quil_linear/hand.h"

namespace {

struct Fault {
    long output;
    const char* field;
    const char* problem;
};

// A duration of stall handling: finite and >= 0, or +infinity for never.
bool duration_ok(double s) { return s == std::numeric_limits<double>::infinity() || (std::isfinite(s) && s >= 0.0); }

// A bound that may be absent (+infinity), else finite and >= 0.
bool bound_ok(double v) { return duration_ok(v); }

bool check_output(const quil_output& o, Fault& f) {
    auto bad = [&f](const char* field, const char* problem) {
        f.field = field;
        f.problem = problem;
        return false;
    };
    if (!o.name || !*o.name) return bad("name", "must be a non-empty name");
    if (std::strlen(o.name) > QUIL_OUTPUT_NAME_MAX) return bad("name", "is longer than 63 bytes");
    if (o.slot < 0 || o.slot >= QUIL_TARGETS) return bad("slot", "is not a slot of the hand (0..23)");
    if (!std::isfinite(o.scale)) return bad("scale", "must be a finite number");
    if (!std::isfinite(o.offset)) return bad("offset", "must be a finite number");
    if (!std::isfinite(o.min)) return bad("min", "must be a finite number");
    if (!std::isfinite(o.max)) return bad("max", "must be a finite number");
    if (o.min > o.max) return bad("min", "is greater than max");
    if (!std::isnan(o.safe)) {
        if (!std::isfinite(o.safe)) return bad("safe", "must be a finite number");
        if (o.safe < o.min || o.safe > o.max) return bad("safe", "is outside [min, max]");
    }
    const quil_smoothing& s = o.smoothing;
    switch (s.kind) {
        case QUIL_SMOOTHING_NONE: break;
        case QUIL_SMOOTHING_EMA:
            if (!(std::isfinite(s.alpha) && s.alpha > 0.0 && s.alpha <= 1.0))
                return bad("smoothing.alpha", "must be a number in (0, 1]");
            break;
        case QUIL_SMOOTHING_ONE_EURO:
            if (!(std::isfinite(s.min_cutoff) && s.min_cutoff > 0.0))
                return bad("smoothing.min_cutoff", "must be a finite number of hertz above 0");
            if (!(std::isfinite(s.beta) && s.beta >= 0.0)) return bad("smoothing.beta", "must be a finite number >= 0");
            if (!(std::isfinite(s.d_cutoff) && s.d_cutoff > 0.0))
                return bad("smoothing.d_cutoff", "must be a finite number of hertz above 0");
            break;
        default: return bad("smoothing.kind", "must be none, ema or one_euro");
    }
    if (!bound_ok(o.reject_above)) return bad("reject_above", "must be a finite number >= 0");
    if (!bound_ok(o.max_rate)) return bad("max_rate", "must be a finite number >= 0");
    return true;
}

int check(const quil_profile* p, Fault& f) {
    f = Fault{-1, "", ""};
    if (!p) return QUIL_E_NULL;
    if (!p->hand || !quil_hand_find(p->hand)) {
        f.field = "hand";
        f.problem = "is not a hand of the catalogue";
        return QUIL_E_PROFILE;
    }
    if (!duration_ok(p->hold_after)) {
        f.field = "hold_after";
        f.problem = "must be a finite number of seconds >= 0";
        return QUIL_E_PROFILE;
    }
    if (!duration_ok(p->safe_after)) {
        f.field = "safe_after";
        f.problem = "must be a finite number of seconds >= 0";
        return QUIL_E_PROFILE;
    }
    if (!p->outputs || p->output_count == 0 || p->output_count > QUIL_MAX_OUTPUTS) {
        f.field = "outputs";
        f.problem = "must list 1 to 64 outputs";
        return QUIL_E_PROFILE;
    }
    for (std::size_t i = 0; i < p->output_count; ++i) {
        f.output = static_cast<long>(i);
        if (!check_output(p->outputs[i], f)) return QUIL_E_PROFILE;
        for (std::size_t j = 0; j < i; ++j)
            if (std::strcmp(p->outputs[j].name, p->outputs[i].name) == 0) {
                f.field = "name";
                f.problem = "is the name of an earlier output";
                return QUIL_E_PROFILE;
            }
    }
    f.output = -1;
    return QUIL_OK;
}

void report(const Fault& f, quil_profile_fault* fault) {
    if (fault) *fault = quil_profile_fault{f.output, f.field, f.problem};
}

quil::Wiring wiring_of(const quil_profile& p) {
    quil::Wiring w;
    w.hold = std::isfinite(p.hold_after);
    w.hold_after = w.hold ? p.hold_after : 0.0;
    w.to_safe = std::isfinite(p.safe_after);
    w.safe_after = w.to_safe ? p.safe_after : 0.0;
    for (std::size_t i = 0; i < p.output_count; ++i) {
        const quil_output& o = p.outputs[i];
        quil::OutputWiring ow;
        ow.name = o.name;
        ow.slot = o.slot;
        ow.scale = o.scale;
        ow.offset = o.offset;
        ow.min = o.min;
        ow.max = o.max;
        ow.safe = std::isnan(o.safe) ? std::fmin(std::fmax(o.offset, o.min), o.max) : o.safe;
        ow.smoothing = static_cast<quil::Smoothing>(o.smoothing.kind);
        if (ow.smoothing == quil::Smoothing::ema) ow.alpha = o.smoothing.alpha;
        if (ow.smoothing == quil::Smoothing::one_euro) {
            ow.min_cutoff = o.smoothing.min_cutoff;
            ow.beta = o.smoothing.beta;
            ow.d_cutoff = o.smoothing.d_cutoff;
        }
        ow.reject = std::isfinite(o.reject_above);
        ow.reject_above = ow.reject ? o.reject_above : 0.0;
        ow.rate_limit = std::isfinite(o.max_rate);
        ow.max_rate = ow.rate_limit ? o.max_rate : 0.0;
        w.outputs.push_back(std::move(ow));
    }
    return w;
}

}  // namespace

extern "C" {

void quil_output_init(quil_output* o) {
    if (!o) return;
    *o = quil_output{};
    o->scale = 1.0;
    o->safe = std::numeric_limits<double>::quiet_NaN();
    o->smoothing.kind = QUIL_SMOOTHING_NONE;
    o->smoothing.alpha = 1.0;
    o->smoothing.min_cutoff = 1.0;
    o->smoothing.d_cutoff = 1.0;
    o->reject_above = std::numeric_limits<double>::infinity();
    o->max_rate = std::numeric_limits<double>::infinity();
}

void quil_profile_init(quil_profile* p) {
    if (!p) return;
    *p = quil_profile{};
    p->hold_after = std::numeric_limits<double>::infinity();
    p->safe_after = std::numeric_limits<double>::infinity();
}

int quil_profile_check(const quil_profile* profile, quil_profile_fault* fault) {
    Fault f;
    const int rc = check(profile, f);
    report(f, fault);
    return rc;
}

int quil_hand_set_profile(quil_hand* hand, const quil_profile* profile, quil_profile_fault* fault) {
    report(Fault{-1, "", ""}, fault);
    if (!hand) return QUIL_E_NULL;
    if (!profile) {
        hand->stage.reset();
        return QUIL_OK;
    }
    Fault f;
    const int rc = check(profile, f);
    report(f, fault);
    if (rc != QUIL_OK) return rc;
    if (quil_hand_find(profile->hand) != hand->info) {
        report(Fault{-1, "hand", "names another hand than the handle's"}, fault);
        return QUIL_E_PROFILE_HAND;
    }
    try {
        hand->stage = std::make_unique<quil::SafetyStage>(wiring_of(*profile));
    } catch (const std::bad_alloc&) {
        return QUIL_E_NULL;
    }
    return QUIL_OK;
}

int quil_hand_has_profile(const quil_hand* hand) { return hand && hand->stage ? 1 : 0; }

size_t quil_hand_output_count(const quil_hand* hand) {
    if (!hand) return 0;
    return hand->stage ? hand->stage->size() : QUIL_TARGETS;
}

const char* quil_hand_output_name(const quil_hand* hand, size_t index) {
    if (!hand || index >= quil_hand_output_count(hand)) return nullptr;
    return hand->stage ? hand->stage->wiring().outputs[index].name.c_str() : hand->info->slot_roles[index];
}

void quil_hand_map_at(quil_hand* hand, double t, const double readings[12], double* outputs) {
    if (!hand || !readings || !outputs) return;
    if (!hand->stage) {
        quil_hand_map(hand, readings, outputs);
        return;
    }
    double targets[QUIL_TARGETS];
    quil_hand_map(hand, readings, targets);
    hand->stage->step(t, targets, outputs);
}

void quil_hand_map_n_at(quil_hand* hand, size_t n, const double* times, const double* readings, double* outputs) {
    if (!hand || !readings || !outputs) return;
    if (!hand->stage) {
        quil_hand_map_n(hand, n, readings, outputs);
        return;
    }
    if (!times) return;
    const std::size_t width = hand->stage->size();
    for (std::size_t r = 0; r < n; ++r) quil_hand_map_at(hand, times[r], readings + 12 * r, outputs + width * r);
}

int quil_hand_tick(quil_hand* hand, double t, double* outputs) {
    if (!hand || !outputs) return QUIL_E_NULL;
    if (!hand->stage) return QUIL_E_NO_PROFILE;
    return hand->stage->tick(t, outputs) ? 1 : 0;
}

int quil_hand_counters(const quil_hand* hand, quil_counters* counters) {
    if (!hand || !counters) return QUIL_E_NULL;
    *counters = quil_counters{};
    if (hand->stage) {
        const quil::StageCounters& c = hand->stage->counters();
        *counters = quil_counters{c.samples, c.held, c.rejected, c.limited, c.stale};
    }
    return QUIL_OK;
}

}  // extern "C"
