/* quil_linear hand API: one hand object per glove.
 *
 * A `quil_hand` is one robot hand driven by one glove. It maps each sample of the glove's twelve
 * finger-angle readings (x0..x11) to the hand's 24 joint targets, and it carries its own memory
 * from sample to sample: the pinch latches and thumb references of the hands that keep state,
 * and the last good reading of each glove channel. Open one handle per glove; two gloves on two
 * hands of the same model never disturb each other.
 *
 *     quil_hand* hand = quil_hand_open("RUIYAN_RY_H15");
 *     double readings[QUIL_READINGS], targets[QUIL_TARGETS];
 *     while (read_glove(readings)) {
 *         quil_hand_map(hand, readings, targets);
 *         send_to_robot(targets);
 *     }
 *     quil_hand_close(hand);
 *
 * Exactness. With the default dropout policy (QUIL_DROPOUT_PASS) a fresh handle gives, bit for
 * bit, what the hand's C export <name>_GetDataValue of quil_linear.h gives for the same
 * sequence of samples in a freshly loaded library, and quil_hand_map_n gives exactly what the
 * same samples through quil_hand_map give. Handles map with the hand's coefficients as
 * published; rewriting the exported class tables (Quil_linear::<hand>::weight and w0) changes
 * the C exports only.
 *
 * Memory. The library allocates only in quil_hand_open and quil_hand_set_profile (profile.h);
 * mapping, resetting and saving or loading a state allocate nothing. Catalogue entries and strings are owned by the library and live as
 * long as it stays loaded; never free them.
 *
 * Threads. The catalogue functions, quil_error_text, quil_dropout_name, quil_dropout_from_name
 * and the version functions may be called from any thread at any time. A handle belongs to one
 * thread at a time: calls on the same handle must not overlap, calls on different handles may
 * run on different threads at once. Handles share nothing with each other or with the C
 * exports: a handle never reads or writes the hand classes' statics (pinch latches, thumb
 * references), and the exports never touch a handle.
 *
 * Errors. Functions that can fail return 0 (QUIL_OK) or a negative QUIL_E_... code, described
 * by quil_error_text; functions returning pointers return NULL. A NULL handle is accepted
 * everywhere and does nothing. Every double is accepted as a reading.
 *
 * Slots and readings. Every hand puts the same joints at the same slots: the thumb in 0-3 and
 * 20, then tip, distal, proximal and spread of the index (4-7), middle (8-11), ring (12-15) and
 * little finger (16-19), two unused slots and the terminator. quil_hand_info.slot_roles names
 * them ("thumb_rotation", "index_proximal", ...); quil_hand_slot() tells for each slot of a hand
 * its kind (a joint moved by the readings, a follower computed from other slots, a joint held at
 * a fixed target, an unused slot, the terminator or a gesture code), the relation of a follower,
 * which way it moves as its finger bends, the range it spans and which readings move it.
 * quil_reading() names the twelve readings the hands expect, in degrees. All of it describes
 * the mapping of finite readings; on hands that let a NaN reading through (QUIL_DROPOUT_PASS), a
 * NaN can move any slot.
 */
#ifndef QUIL_LINEAR_HAND_H
#define QUIL_LINEAR_HAND_H

#include <stddef.h>

#include "quil_linear/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The library's version: this header's and, through quil_linear_version(), the loaded one's. */
#define QUIL_LINEAR_VERSION_MAJOR 1
#define QUIL_LINEAR_VERSION_MINOR 2
#define QUIL_LINEAR_VERSION_PATCH 0
#define QUIL_LINEAR_VERSION_STRING "1.2.0"
#define QUIL_LINEAR_VERSION_NUMBER \
    (QUIL_LINEAR_VERSION_MAJOR * 10000 + QUIL_LINEAR_VERSION_MINOR * 100 + QUIL_LINEAR_VERSION_PATCH)

#define QUIL_READINGS 12 /* glove readings per sample: x0..x11 */
#define QUIL_TARGETS 24  /* joint targets per sample, in the hand's slot order */

/* Dropout policies: what a handle does with a non-finite reading (NaN or +-infinity), as a
 * glove sends when a channel drops out. Functions take and give a policy as an `int` holding one
 * of these values, so that any other int can be refused (QUIL_E_DROPOUT_POLICY). */
typedef enum quil_dropout {
    QUIL_DROPOUT_PASS = 0, /* the reading goes to the hand as it is, exactly as the C export
                              takes it. On most hands a NaN then acts as a fully bent finger.
                              The default. */
    QUIL_DROPOUT_HOLD = 1  /* the reading is replaced by the last finite reading of that channel
                              seen by this handle, or 0.0 before the first one. The safe choice
                              for live teleoperation: a dropped channel holds the finger where
                              it was instead of closing it. */
} quil_dropout;

/* Status codes: 0 is success, failures are negative. Functions return them as an `int`. */
typedef enum quil_status {
    QUIL_OK = 0,
    QUIL_E_NULL = -1,              /* a required pointer was NULL */
    QUIL_E_DROPOUT_POLICY = -2,    /* not a QUIL_DROPOUT_... value */
    QUIL_E_STATE_TRUNCATED = -3,   /* the state is shorter than a state is */
    QUIL_E_STATE_NOT_A_STATE = -4, /* the bytes are not a saved hand state */
    QUIL_E_STATE_VERSION = -5,     /* a state format this library does not know */
    QUIL_E_STATE_OTHER_HAND = -6,  /* the state belongs to another hand */
    QUIL_E_STATE_DAMAGED = -7,     /* the state's checksum or contents are wrong */
    QUIL_E_PROFILE = -8,           /* the wiring profile is refused; quil_profile_fault tells where */
    QUIL_E_PROFILE_HAND = -9,      /* the wiring profile is for another hand */
    QUIL_E_NO_PROFILE = -10,       /* the call needs a handle with a wiring profile */
    QUIL_E_STATE_PROFILE = -11     /* the state was saved under another wiring profile (or none) */
} quil_status;

/* A state saved without a wiring profile never takes more than this many bytes in this major
 * version; a buffer of this size always suffices for it. quil_hand_state_size() gives the exact
 * figure. A handle with a profile (profile.h) saves the safety stage's memory too:
 * quil_hand_state_size_of(hand) gives its size. */
#define QUIL_HAND_STATE_CAPACITY 256

/* One hand with its own memory. Opaque: create with quil_hand_open, free with quil_hand_close. */
typedef struct quil_hand quil_hand;

/* A hand of the catalogue. Owned by the library; valid as long as the library is loaded. */
typedef struct quil_hand_info {
    const char* name;              /* "RUIYAN_RY_H15": class name and C export prefix */
    const char* version;           /* what <name>_GetVersion() answers */
    int keeps_state;               /* 1: remembers pinches or thumb references between samples */
    int persistent_buffer;         /* 1: its C export reuses one buffer, never to be freed;
                                      0: its C export returns a buffer to free with FreeMemory */
    const char* slot_roles[QUIL_TARGETS]; /* what the hand's rules drive in each output slot */
} quil_hand_info;

/* ---- The catalogue ------------------------------------------------------------------------ */

/* The number of hands the library serves. */
QUIL_API size_t quil_hand_count(void);

/* The hand at `index` (0 <= index < quil_hand_count()), in catalogue order; NULL past the end. */
QUIL_API const quil_hand_info* quil_hand_at(size_t index);

/* The hand named exactly `name`, else the one whose name matches ignoring case; NULL if none or
 * if `name` is NULL. */
QUIL_API const quil_hand_info* quil_hand_find(const char* name);

/* The hands whose names are closest to `name`, best first, for a "did you mean" answer to an
 * unknown name: hands whose names contain `name` (ignoring case) come first, then the others,
 * each group by edit distance ignoring case. Writes up to `capacity` entries to `out` and returns how many it wrote (0 when
 * `name` or `out` is NULL). */
QUIL_API size_t quil_hand_suggest(const char* name, const quil_hand_info** out, size_t capacity);

/* ---- What each slot and reading means ---------------------------------------------------- */

/* The kinds of slot. */
#define QUIL_SLOT_JOINT 0        /* a joint the readings move */
#define QUIL_SLOT_FOLLOWER 1     /* a joint computed from other slots (quil_slot_info.relation) */
#define QUIL_SLOT_FIXED 2        /* a joint held at one target (quil_slot_info.value) */
#define QUIL_SLOT_UNUSED 3       /* no joint: a constant nobody drives; leave it unconnected */
#define QUIL_SLOT_TERMINATOR 4   /* the end marker -1.0 */
#define QUIL_SLOT_GESTURE_CODE 5 /* -1.0, or a code for a recognised gesture */

/* One slot of one hand. Owned by the library; valid as long as the library is loaded. The
 * facts after `value` are measured from the hand's mapping over a documented sweep of readings
 * (each finger and the spreads from open to fist and back, the whole hand, thumb-and-finger
 * pinch poses, and 20 000 random samples over [-20, 120]), and checked against it by the tests. */
typedef struct quil_slot_info {
    const char* role;      /* "index_proximal": the same role is the same joint on every hand */
    const char* meaning;   /* what the role means for the robot, one sentence */
    int kind;              /* QUIL_SLOT_... */
    int follows[2];        /* a follower's source slots, -1 where none */
    const char* relation;  /* a follower's value from its sources, "min(0.8 * slot 5, 0)"; "" otherwise */
    const char* departs;   /* where a follower leaves its relation ("in pinches"); "" if never seen to */
    double value;          /* the value of a fixed, unused or terminator slot; NaN otherwise */
    int sign;              /* -1: smaller as its finger bends (or its spread opens), +1: larger, 0: neither */
    double range_min;      /* the least value seen over the sweep */
    double range_max;      /* the greatest value seen over the sweep */
    unsigned moved_by;     /* bit i set: reading x_i alone moves it, the others at 0 */
    int negative_zero;     /* 1: a zero comes out as -0.0 (the slot is mirrored last) */
} quil_slot_info;

/* Slot `slot` (0..23) of `hand`; NULL for a NULL hand or a slot past 23. */
QUIL_API const quil_slot_info* quil_hand_slot(const quil_hand_info* hand, size_t slot);

/* One of the twelve glove readings, as the hands read them. Owned by the library. */
typedef struct quil_reading_info {
    const char* name;    /* "index_bend" */
    const char* finger;  /* "thumb", "index", "middle", "ring" or "little" */
    const char* motion;  /* "bend" or "spread" */
    const char* unit;    /* "degrees": 0 is an open, flat hand; bending or spreading makes it larger */
    const char* meaning; /* what the hands do with it, one sentence */
    size_t hands;        /* how many hands of the catalogue it moves at least one slot of */
} quil_reading_info;

/* Reading x_index (0..11); NULL past 11. */
QUIL_API const quil_reading_info* quil_reading(size_t index);

/* 1 when reading x_reading moves at least one slot of `hand`, 0 when the hand ignores it or an
 * argument is out of range. */
QUIL_API int quil_hand_uses_reading(const quil_hand_info* hand, size_t reading);

/* "joint", "follower", "fixed", "unused", "terminator" or "gesture_code"; "unknown" otherwise. */
QUIL_API const char* quil_slot_kind_name(int kind);

/* ---- Handles ------------------------------------------------------------------------------ */

/* Opens a handle on the hand `name` (as quil_hand_find matches it), in its start-up state,
 * with QUIL_DROPOUT_PASS. The caller owns the handle and releases it with quil_hand_close.
 * Returns NULL for a NULL or unknown name, or when memory cannot be had; quil_hand_find(name)
 * tells which (and quil_hand_suggest offers the names closest to an unknown one). This is the
 * only function that allocates. */
QUIL_API quil_hand* quil_hand_open(const char* name);

/* Releases a handle. NULL is ignored. The handle must not be used afterwards. */
QUIL_API void quil_hand_close(quil_hand* hand);

/* The catalogue entry of the handle's hand; NULL for a NULL handle. */
QUIL_API const quil_hand_info* quil_hand_about(const quil_hand* hand);

/* Puts the handle back to its start-up state: pinch latches open, thumb references and held
 * readings 0.0, as a fresh handle. The dropout policy is kept, and so is a wiring profile, whose
 * safety stage starts afresh (every output at safe, counters 0). NULL is ignored. */
QUIL_API void quil_hand_reset(quil_hand* hand);

/* Maps one sample: `readings` holds x0..x11, `targets` receives the 24 joint targets. The
 * sample goes through the handle's memory, which it updates. Both arrays belong to the caller
 * and must not overlap. Any double is accepted; readings outside [-20, 120] act as the nearer
 * bound. With a NULL handle, readings or targets nothing is written. */
QUIL_API void quil_hand_map(quil_hand* hand, const double readings[QUIL_READINGS], double targets[QUIL_TARGETS]);

/* Maps `n` samples in order through the handle's memory: `readings` holds n rows of 12,
 * `targets` receives n rows of 24, both row-major and the caller's; they must not overlap.
 * Gives exactly what n calls of quil_hand_map give. n = 0 does nothing; with a NULL handle, or
 * NULL arrays and n > 0, nothing is written. */
QUIL_API void quil_hand_map_n(quil_hand* hand, size_t n, const double* readings, double* targets);

/* Sets what the handle does with non-finite readings from the next sample on: QUIL_DROPOUT_PASS
 * or QUIL_DROPOUT_HOLD. The handle notes the last finite reading of every channel under either
 * policy, so a switch to HOLD mid-session holds the fingers where they were. Returns QUIL_OK,
 * QUIL_E_NULL, or QUIL_E_DROPOUT_POLICY for any other value (the policy is then unchanged). */
QUIL_API int quil_hand_set_dropout(quil_hand* hand, int policy);

/* The handle's dropout policy; QUIL_E_NULL for a NULL handle. */
QUIL_API int quil_hand_dropout(const quil_hand* hand);

/* The names of the dropout policies, as the tools, the Python module and the page take them:
 * "pass" for QUIL_DROPOUT_PASS, "hold" for QUIL_DROPOUT_HOLD; NULL for any other int. The string
 * is the library's, constant. */
QUIL_API const char* quil_dropout_name(int policy);

/* The policy named `name` ("pass" or "hold", exactly); QUIL_E_DROPOUT_POLICY for any other name,
 * QUIL_E_NULL for NULL. */
QUIL_API int quil_dropout_from_name(const char* name);

/* ---- A handle's memory -------------------------------------------------------------------- */

/* What a handle remembers between samples, as quil_hand_memory_of copies it out to show it: what
 * its saved state holds besides a wiring profile's stage. A saved state's bytes are for loading
 * back only; their layout is the library's own. Hands that keep no state leave the latches and
 * references as a fresh handle has them. */
typedef struct quil_hand_memory {
    int pinch_latches[4];        /* 1 while a pinch is latched, else 0: [0] the index pinch (thumb
                                    to index), [1] the middle pinch (thumb to middle); no hand of
                                    the catalogue latches [2] or [3], which stay 0 */
    double thumb_references[2];  /* the thumb targets the hands that keep them remember from
                                    earlier samples; 0.0 on other hands and on a fresh handle */
    double held_readings[QUIL_READINGS]; /* per channel x0..x11, the last finite reading seen, 0.0
                                    before the first: what QUIL_DROPOUT_HOLD sends in its place */
    quil_dropout dropout;        /* the handle's dropout policy */
} quil_hand_memory;

/* Copies the handle's memory to `*out`. Returns QUIL_OK, or QUIL_E_NULL (nothing written) for a
 * NULL handle or `out`. Reads the handle only: like any call on a handle, not while another call
 * on the same handle runs. */
QUIL_API int quil_hand_memory_of(const quil_hand* hand, quil_hand_memory* out);

/* ---- Saved states ------------------------------------------------------------------------- */
/* A saved state is a small portable byte string: little-endian, with a format version, the
 * hand's name and a checksum, holding all of the handle's memory (pinch latches, thumb
 * references, the last finite reading of each channel) and its dropout policy. Save after
 * sample k, load into a handle of the same hand, carry on: the results are bit-identical to
 * never stopping, in this or another process or machine. */

/* The bytes a state saved without a profile takes (at most QUIL_HAND_STATE_CAPACITY). */
QUIL_API size_t quil_hand_state_size(void);

/* Writes the handle's state to `buffer` and returns the number of bytes written
 * (quil_hand_state_size_of(hand)); returns 0 and writes nothing when `capacity` is smaller than
 * the state or a pointer is NULL. */
QUIL_API size_t quil_hand_save_state(const quil_hand* hand, void* buffer, size_t capacity);

/* Loads a state written by quil_hand_save_state of a handle of the same hand. Returns QUIL_OK,
 * or, leaving the handle unchanged: QUIL_E_NULL (a NULL handle, or a NULL state with size > 0),
 * QUIL_E_STATE_TRUNCATED (fewer bytes than a state, none included), QUIL_E_STATE_NOT_A_STATE, QUIL_E_STATE_VERSION (a format this library does not know),
 * QUIL_E_STATE_OTHER_HAND (quil_state_hand names it), or QUIL_E_STATE_DAMAGED (checksum,
 * contents, or bytes beyond the state). */
QUIL_API int quil_hand_load_state(quil_hand* hand, const void* state, size_t size);

/* The hand a saved state belongs to, for a message such as "this state is of CHOHO_Hand";
 * NULL unless the bytes are a complete, undamaged state of a hand in the catalogue. */
QUIL_API const quil_hand_info* quil_state_hand(const void* state, size_t size);

/* ---- Errors and version ------------------------------------------------------------------- */

/* A short English description of a QUIL_OK or QUIL_E_... code ("unknown error code" for any
 * other value). The string is the library's, constant. */
QUIL_API const char* quil_error_text(int code);

/* The loaded library's version, "MAJOR.MINOR.PATCH"; compare with QUIL_LINEAR_VERSION_STRING
 * to detect a header/library mismatch. */
QUIL_API const char* quil_linear_version(void);

/* The loaded library's version as a number, QUIL_LINEAR_VERSION_NUMBER's formula
 * (MAJOR * 10000 + MINOR * 100 + PATCH): 10200 for "1.2.0". */
QUIL_API unsigned quil_linear_version_number(void);

#ifdef __cplusplus
}
#endif

/* Wiring profiles and the safety stage: the hand's own command vector instead of 24 targets. */
#include "quil_linear/profile.h"

#endif /* QUIL_LINEAR_HAND_H */
