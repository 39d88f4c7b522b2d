/* quil_linear wiring profiles: from a hand's 24 joint targets to the command vector its driver
 * takes, through a deterministic safety stage. Included by quil_linear/hand.h.
 *
 * A robot hand's driver does not take 24 slots: it takes its own joints, in its own order, units
 * and ranges. A wiring profile names those outputs; each is `scale * target[slot] + offset` (in
 * that order) and then goes through the safety stage, in this order:
 *
 *   1. non-finite guard: a NaN or infinite command is not fed to the filter; the last command is
 *      emitted again (counted as held). The stage never emits a non-finite value.
 *   2. smoothing: none; ema, y = alpha * x + (1 - alpha) * y_prev; or one_euro, with
 *      freq = 1.0 / (t - t_prev), te = 1.0 / freq, alpha(fc) = 1.0 / (1.0 + (1.0 / (2 * pi * fc)) / te),
 *      dx = (x - x_prev_raw) * freq (0 on the first sample),
 *      edx = alpha(d_cutoff) * dx + (1 - alpha(d_cutoff)) * edx_prev, fc = min_cutoff + beta * |edx|,
 *      y = alpha(fc) * x + (1 - alpha(fc)) * y_prev. The first sample passes through either filter.
 *   3. jump rejection: when the filtered value moved by more than reject_above since the previous
 *      sample's filtered value, the last command is emitted again (counted as rejected).
 *   4. rate limit: y = min(max(y, c - max_rate * dt), c + max_rate * dt), c the last command, dt
 *      the time since the previous sample, 0 on the first one: the first command is `safe` and
 *      later ones ramp from it (counted as limited when it moved y).
 *   5. clip to [min, max].
 *
 * "The last command" is what the stage last emitted for that output; `safe` before the first
 * sample and after a reset.
 *
 * Stall. The stage is a function of the sample times alone, so a session replayed offline with
 * its times gives, bit for bit, what a live loop sent. With t0 the last sample's time, from
 * t0 + hold_after the input is stale (quil_hand_tick says so and counts it); from
 * t0 + safe_after every command is the last command moved toward `safe` by
 * max_rate * (t - t0 - safe_after), never past it (straight to `safe` without a rate limit). A
 * sample arriving after a stall starts from that value as its last command. A tick emits that
 * value and changes nothing, so ticks never change what later samples give.
 *
 * Sample times are seconds, from the caller. A sample whose time is not finite or not after the
 * previous sample's time is not fed to the stage: every output emits its last command again
 * (counted as held).
 *
 * Memory. quil_hand_set_profile copies the profile (names included) into the handle and is,
 * with quil_hand_open, the only function that allocates. The stage's memory is part of the
 * handle's saved state.
 */
#ifndef QUIL_LINEAR_PROFILE_H
#define QUIL_LINEAR_PROFILE_H

#include <stddef.h>
#include <stdint.h>

#include "quil_linear/hand.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QUIL_MAX_OUTPUTS 64      /* outputs a profile may have */
#define QUIL_OUTPUT_NAME_MAX 63  /* bytes of an output name, without its NUL */

/* Smoothing kinds. */
#define QUIL_SMOOTHING_NONE 0
#define QUIL_SMOOTHING_EMA 1
#define QUIL_SMOOTHING_ONE_EURO 2

/* Its error codes, QUIL_E_PROFILE, QUIL_E_PROFILE_HAND, QUIL_E_NO_PROFILE and
 * QUIL_E_STATE_PROFILE, are among the status codes of hand.h (quil_status). */

typedef struct quil_smoothing {
    int kind;          /* QUIL_SMOOTHING_... */
    double alpha;      /* ema: weight of the new sample, 0 < alpha <= 1 */
    double min_cutoff; /* one_euro: Hz, > 0 */
    double beta;       /* one_euro: >= 0 */
    double d_cutoff;   /* one_euro: Hz, > 0 */
} quil_smoothing;

/* One output of the hand's driver. quil_output_init fills the optional fields with "not used". */
typedef struct quil_output {
    const char* name;         /* what the driver calls it; 1..QUIL_OUTPUT_NAME_MAX bytes, unique */
    int slot;                 /* the target slot it follows, 0..23 */
    double scale, offset;     /* command = scale * target[slot] + offset; finite */
    double min, max;          /* the command's range, finite, min <= max */
    double safe;              /* where the output rests before the first sample and after a
                                 stall; NaN: min(max(offset, min), max). Else within [min, max]. */
    quil_smoothing smoothing; /* kind QUIL_SMOOTHING_NONE: no smoothing */
    double reject_above;      /* +INFINITY: no jump rejection; else finite, >= 0 */
    double max_rate;          /* units per second; +INFINITY: no rate limit; else finite, >= 0 */
} quil_output;

typedef struct quil_profile {
    const char* hand;           /* the hand it wires (quil_hand_find matches it) */
    double hold_after;          /* seconds without a sample before the input is stale;
                                   +INFINITY: never. Else finite, >= 0 */
    double safe_after;          /* seconds without a sample before the commands go to safe;
                                   +INFINITY: never. Else finite, >= 0 */
    size_t output_count;        /* 1..QUIL_MAX_OUTPUTS */
    const quil_output* outputs; /* output_count outputs, in the driver's order */
} quil_profile;

/* Where a refused profile is wrong: output is the index of the faulty output, or -1 for a
 * field of the profile itself; field is the field's name as a profile file spells it
 * ("slot", "smoothing.alpha", "hand", ...). The strings are the library's, constant. */
typedef struct quil_profile_fault {
    long output;
    const char* field;
    const char* problem; /* "must be finite", "min is greater than max", ... */
} quil_profile_fault;

/* What the stage did since the profile was set or the handle reset, in samples (a sample in
 * which any output was held counts once). */
typedef struct quil_counters {
    uint64_t samples;  /* samples through the stage */
    uint64_t held;     /* a non-finite command, or a sample time not after the previous one */
    uint64_t rejected; /* a jump over reject_above */
    uint64_t limited;  /* the rate limit moved a command */
    uint64_t stale;    /* ticks that found the input stale */
} quil_counters;

/* Fills `output` with the defaults of the optional fields: safe NaN, no smoothing, no jump
 * rejection, no rate limit; name NULL, slot 0, scale 1, offset 0, min and max 0. NULL ignored. */
QUIL_API void quil_output_init(quil_output* output);

/* Fills `profile` with no hand, no outputs and no stall handling. NULL ignored. */
QUIL_API void quil_profile_init(quil_profile* profile);

/* Checks a profile without a handle: QUIL_OK, QUIL_E_NULL, or QUIL_E_PROFILE with `fault` (if
 * not NULL) saying where. The hand must be one of the catalogue. */
QUIL_API int quil_profile_check(const quil_profile* profile, quil_profile_fault* fault);

/* Wires the handle: from now on quil_hand_map_at gives the profile's outputs, starting from
 * `safe`. The profile is copied; the caller keeps its own. NULL removes the profile (back to
 * the 24 targets). Returns QUIL_OK, QUIL_E_NULL (no handle), QUIL_E_PROFILE (with `fault`),
 * QUIL_E_PROFILE_HAND (the profile names another hand) or, out of memory, QUIL_E_NULL with the
 * handle unchanged. On any error the handle keeps its previous profile. */
QUIL_API int quil_hand_set_profile(quil_hand* hand, const quil_profile* profile, quil_profile_fault* fault);

/* 1 when the handle has a profile, 0 when not (and for NULL). */
QUIL_API int quil_hand_has_profile(const quil_hand* hand);

/* What quil_hand_map_at writes per sample: the profile's output count, or 24 (the targets)
 * without a profile; 0 for NULL. */
QUIL_API size_t quil_hand_output_count(const quil_hand* hand);

/* The name of output `index`: the profile's name, or the slot role without a profile; NULL past
 * the end. Owned by the handle, valid until the profile changes or the handle is closed. */
QUIL_API const char* quil_hand_output_name(const quil_hand* hand, size_t index);

/* Maps one sample taken at time `t` (seconds): `outputs` receives quil_hand_output_count(hand)
 * values. Without a profile it writes the 24 targets, exactly as quil_hand_map (t unused). With
 * a NULL pointer nothing is written. */
QUIL_API void quil_hand_map_at(quil_hand* hand, double t, const double readings[QUIL_READINGS], double* outputs);

/* `n` samples in order, times[i] the time of row i: exactly what n calls of quil_hand_map_at
 * give. Rows of 12 readings in, rows of quil_hand_output_count(hand) out, row-major; the
 * arrays must not overlap. Without a profile `times` may be NULL (it is not read); with one, a
 * NULL `times` writes nothing. */
QUIL_API void quil_hand_map_n_at(quil_hand* hand, size_t n, const double* times, const double* readings,
                                 double* outputs);

/* The watchdog: what the outputs are at time `t` without a new sample (the last commands,
 * held or moving toward safe). Writes quil_hand_output_count(hand) values and changes nothing
 * but the stale counter. Returns 1 when the input is stale at `t` (from t0 + hold_after or
 * t0 + safe_after, whichever comes first; or when no sample came yet), 0 when fresh,
 * QUIL_E_NULL, or QUIL_E_NO_PROFILE (nothing written). */
QUIL_API int quil_hand_tick(quil_hand* hand, double t, double* outputs);

/* The stage's counters; QUIL_OK, or QUIL_E_NULL (nothing written). All zero without a profile. */
QUIL_API int quil_hand_counters(const quil_hand* hand, quil_counters* counters);

/* The exact size of this handle's saved state: quil_hand_state_size() without a profile, more
 * with one (the stage's memory); 0 for NULL. Saved with a profile, a state loads only into a
 * handle with the same profile (QUIL_E_STATE_PROFILE otherwise); a state saved without one
 * loads into any handle of the hand, the stage then starting afresh. */
QUIL_API size_t quil_hand_state_size_of(const quil_hand* hand);

#ifdef __cplusplus
}
#endif

#endif /* QUIL_LINEAR_PROFILE_H */
