/* A host that knows the library only by its exported names, as a C program loading it at run
   time would: every export is resolved with dlsym, called, and its buffer handled as the header
   says (per-call buffers freed, persistent ones never); the hand API is resolved the same way and
   its catalogue and first sample checked against the exports. */
#include <dlfcn.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

typedef double* (*get_data_value_fn)(double, double, double, double, double, double, double,
                                      double, double, double, double, double);
typedef const char* (*get_version_fn)(void);
typedef void (*free_memory_fn)(double*);
typedef int (*get_data1_fn)(int, int);

/* The hand API of quil_linear/hand.h, as dlsym finds it. */
#include "quil_linear/hand.h"
typedef size_t (*hand_count_fn)(void);
typedef const quil_hand_info* (*hand_at_fn)(size_t);
typedef quil_hand* (*hand_open_fn)(const char*);
typedef void (*hand_map_fn)(quil_hand*, const double*, double*);
typedef void (*hand_close_fn)(quil_hand*);
typedef const quil_slot_info* (*hand_slot_fn)(const quil_hand_info*, size_t);
typedef const quil_reading_info* (*reading_fn)(size_t);

enum { PER_CALL, PERSISTENT };

static const struct hand {
    const char* name;
    const char* version;
    int buffer;
    int keeps_state;
} hands[] = {
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) {#hand, version, buffer, keeps_state},
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
};
enum { hand_count = sizeof hands / sizeof hands[0] };

/* Hands whose class carries the host-side GetData1 helper, and those with pinch memory. */
static const char* const with_get_data1[] = {
    "QUIL_linear_AA", "QUIL_linear_AD", "QUIL_linear_AE", "ROBOTERA_XHAND1",
    "PICO_PXRHand", "Proception", "AgiBot_OmniHand_O10", "AgiBot_OmniHand_O12",
    "LeadShine_DH116", "RUIYAN_RY_H2", "RUIYAN_RY_H15", "TalentRobot_Pro"};
static const struct { const char* hand; const char* member; } statics[] = {
    {"INSPIRE_ROBOTS_RH56F1_E4", "fingerPinchDone"}, {"INSPIRE_ROBOTS_RH56F1_E4", "thumb1_ref_val"},
    {"RUIYAN_RY_H15", "fingerPinchDone"},           {"CHOHO_Hand", "fingerPinchDone"},
    {"TetherIA_AeroHandOpen", "fingerPinchDone"},   {"TetherIA_AeroHandOpen", "thumb1_ref_val"},
    {"TetherIA_AeroHandOpen", "thumb2_ref_val"}};

static int failures = 0, checks = 0;

static void check(int ok, const char* what, const char* hand) {
    ++checks;
    if (!ok) {
        ++failures;
        fprintf(stderr, "FAILED: %s: %s\n", hand, what);
    }
}

/* The Itanium C++ ABI name of Quil_linear::<hand>::<member>, with `suffix` for functions. */
static void member_symbol(char* buf, size_t size, const char* hand, const char* member,
                          const char* suffix) {
    snprintf(buf, size, "_ZN11Quil_linear%zu%s%zu%sE%s", strlen(hand), hand, strlen(member), member,
             suffix);
}

static void* resolve(void* lib, const char* symbol, const char* hand) {
    void* p = dlsym(lib, symbol);
    char what[256];
    snprintf(what, sizeof what, "resolve %s", symbol);
    check(p != NULL, what, hand);
    return p;
}

static const double poses[3][12] = {
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {40, 30, 20, 90, 5, 0, 90, 0, 0, 90, 0, 90},
    {35, 40, 30, 55, 0, 0, 5, 0, 0, 5, 0, 5},
};

static double* call(get_data_value_fn f, const double* x) {
    return f(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], x[8], x[9], x[10], x[11]);
}

static int same_bits(const double* a, const double* b) { return memcmp(a, b, 24 * sizeof(double)) == 0; }

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s path/to/libquil_linear.so\n", argv[0]);
        return 2;
    }
    void* lib = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!lib) {
        fprintf(stderr, "cannot load %s: %s\n", argv[1], dlerror());
        return 1;
    }
    free_memory_fn free_memory = (free_memory_fn)resolve(lib, "FreeMemory", "library");
    if (free_memory) free_memory(NULL); /* a null buffer is ignored */

    hand_count_fn hand_count_of = (hand_count_fn)resolve(lib, "quil_hand_count", "library");
    hand_at_fn hand_at = (hand_at_fn)resolve(lib, "quil_hand_at", "library");
    hand_open_fn hand_open = (hand_open_fn)resolve(lib, "quil_hand_open", "library");
    hand_map_fn hand_map = (hand_map_fn)resolve(lib, "quil_hand_map", "library");
    hand_close_fn hand_close = (hand_close_fn)resolve(lib, "quil_hand_close", "library");
    hand_slot_fn hand_slot = (hand_slot_fn)resolve(lib, "quil_hand_slot", "library");
    reading_fn reading = (reading_fn)resolve(lib, "quil_reading", "library");
    if (!hand_count_of || !hand_at || !hand_open || !hand_map || !hand_close || !hand_slot || !reading) return 1;
    for (size_t r = 0; r < 12; ++r)
        check(reading(r) && reading(r)->name && strcmp(reading(r)->unit, "degrees") == 0, "reading names", "library");
    check(hand_count_of() == (size_t)hand_count, "the hand API lists every hand", "library");

    char symbol[256];
    int exports = free_memory ? 1 : 0;
    for (int h = 0; h < hand_count; ++h) {
        const struct hand* hd = &hands[h];
        snprintf(symbol, sizeof symbol, "%s_GetVersion", hd->name);
        get_version_fn version = (get_version_fn)resolve(lib, symbol, hd->name);
        snprintf(symbol, sizeof symbol, "%s_GetDataValue", hd->name);
        get_data_value_fn map = (get_data_value_fn)resolve(lib, symbol, hd->name);
        if (!version || !map) continue;
        exports += 2;
        check(strcmp(version(), hd->version) == 0, "version string", hd->name);

        const quil_hand_info* info = hand_at((size_t)h);
        check(info && strcmp(info->name, hd->name) == 0 && strcmp(info->version, hd->version) == 0 &&
                  info->keeps_state == hd->keeps_state && info->persistent_buffer == (hd->buffer == PERSISTENT),
              "catalogue entry of the hand API", hd->name);
        quil_hand* handle = hand_open(hd->name);
        double from_handle[24];
        hand_map(handle, poses[1], from_handle);
        hand_close(handle);

        double first[24], second[24];
        double* a = call(map, poses[1]);
        memcpy(first, a, sizeof first);
        check(same_bits(first, from_handle), "a handle's first sample equals the export's", hd->name);
        double* b = call(map, poses[2]);
        memcpy(second, b, sizeof second);
        if (hd->buffer == PER_CALL) {
            check(a != b, "per-call buffers are distinct", hd->name);
            check(same_bits(a, first), "an earlier per-call buffer is left alone", hd->name);
            free_memory(a);
            free_memory(b);
        } else {
            check(a == b, "persistent buffer is the same pointer every call", hd->name);
            double* c = call(map, poses[1]);
            check(c == a, "persistent buffer is the same pointer every call", hd->name);
            if (!hd->keeps_state) {
                check(same_bits(c, first), "persistent buffer holds the latest result", hd->name);
                check(!same_bits(first, second), "distinct poses give distinct results", hd->name);
            }
        }
        for (int i = 0; i < 23; ++i) check(!isnan(first[i]), "finite targets for a normal pose", hd->name);
        for (int i = 0; i < 24; ++i) {
            const quil_slot_info* slot = hand_slot(info, (size_t)i);
            check(slot && strcmp(slot->role, info->slot_roles[i]) == 0, "slot facts name the slot's role", hd->name);
        }

        member_symbol(symbol, sizeof symbol, hd->name, "weight", "");
        resolve(lib, symbol, hd->name);
        member_symbol(symbol, sizeof symbol, hd->name, "w0", "");
        resolve(lib, symbol, hd->name);
        member_symbol(symbol, sizeof symbol, hd->name, "GetDataValue", "dddddddddddd");
        resolve(lib, symbol, hd->name);
    }

    for (size_t i = 0; i < sizeof with_get_data1 / sizeof with_get_data1[0]; ++i) {
        member_symbol(symbol, sizeof symbol, with_get_data1[i], "GetData1", "ii");
        get_data1_fn f = (get_data1_fn)resolve(lib, symbol, with_get_data1[i]);
        if (!f) continue;
        check(f(3, 4) == 22 && f(0, 5) == -2 && f(65536, 32768) == -2, "GetData1 arithmetic",
              with_get_data1[i]);
    }
    for (size_t i = 0; i < sizeof statics / sizeof statics[0]; ++i) {
        member_symbol(symbol, sizeof symbol, statics[i].hand, statics[i].member, "");
        resolve(lib, symbol, statics[i].hand);
    }

    /* Wiring profiles: every function resolves, and a one-output profile ramps from safe. */
    {
        typedef void (*output_init_fn)(quil_output*);
        typedef void (*profile_init_fn)(quil_profile*);
        typedef int (*profile_check_fn)(const quil_profile*, quil_profile_fault*);
        typedef int (*set_profile_fn)(quil_hand*, const quil_profile*, quil_profile_fault*);
        typedef void (*map_at_fn)(quil_hand*, double, const double*, double*);
        typedef int (*tick_fn)(quil_hand*, double, double*);
        typedef size_t (*count_fn)(const quil_hand*);
        typedef const char* (*name_fn)(const quil_hand*, size_t);
        static const char* const others[] = {"quil_hand_has_profile", "quil_hand_map_n_at", "quil_hand_counters",
                                             "quil_hand_state_size_of"};
        output_init_fn output_init = (output_init_fn)resolve(lib, "quil_output_init", "library");
        profile_init_fn profile_init = (profile_init_fn)resolve(lib, "quil_profile_init", "library");
        profile_check_fn profile_check = (profile_check_fn)resolve(lib, "quil_profile_check", "library");
        set_profile_fn set_profile = (set_profile_fn)resolve(lib, "quil_hand_set_profile", "library");
        map_at_fn map_at = (map_at_fn)resolve(lib, "quil_hand_map_at", "library");
        tick_fn tick = (tick_fn)resolve(lib, "quil_hand_tick", "library");
        count_fn output_count = (count_fn)resolve(lib, "quil_hand_output_count", "library");
        name_fn output_name = (name_fn)resolve(lib, "quil_hand_output_name", "library");
        for (size_t i = 0; i < sizeof others / sizeof others[0]; ++i) resolve(lib, others[i], "library");
        if (output_init && profile_init && profile_check && set_profile && map_at && tick && output_count && output_name) {
            quil_output out;
            quil_profile profile;
            quil_profile_fault fault;
            output_init(&out);
            out.name = "index";
            out.slot = 6;
            out.min = -1000;
            out.max = 1000;
            out.safe = 0;
            out.max_rate = 10;
            profile_init(&profile);
            profile.hand = "RUIYAN_RY_H15";
            profile.output_count = 1;
            profile.outputs = &out;
            check(profile_check(&profile, &fault) == QUIL_OK, "a good profile passes", "RUIYAN_RY_H15");
            quil_hand* h = hand_open("RUIYAN_RY_H15");
            check(set_profile(h, &profile, &fault) == QUIL_OK, "a profile is set", "RUIYAN_RY_H15");
            check(output_count(h) == 1 && strcmp(output_name(h, 0), "index") == 0, "the output is named",
                  "RUIYAN_RY_H15");
            double c0 = -1, c1 = -1, c2 = -1;
            map_at(h, 1.0, poses[2], &c0);
            map_at(h, 1.5, poses[2], &c1);
            check(c0 == 0.0 && fabs(c1) == 5.0, "the first command is safe and the next ramps at max_rate",
                  "RUIYAN_RY_H15");
            check(tick(h, 2.0, &c2) == 0 && c2 == c1, "a tick holds the last command", "RUIYAN_RY_H15");
            hand_close(h);
        }
    }

    printf("resolved and called %d plain exports of %d hands\n", exports, hand_count);
    printf("%d passed, %d failed\n", checks - failures, failures);
    /* The library stays loaded, as in a real host: persistent buffers live until the process
       ends, and unloading would turn them into leaks. */
    return failures == 0 ? 0 : 1;
}
