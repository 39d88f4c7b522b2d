/* 04: a session recorded in two parts: map the first part, save the hand's state, close the
   hand (or end the process), then reopen it, load the state and carry on. The second part comes
   out exactly as if the session had never stopped.
     ./04_resume [STATE_FILE]      STATE_FILE defaults to hand.state in the current directory
   The same in Python: 04_resume.py; the two save the same state bytes. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <quil_linear/hand.h>

#define HAND "RUIYAN_RY_H15" /* a hand that remembers a closed pinch */
#define SAMPLES 400

/* A glove closing a thumb-to-index pinch and opening again, twice. */
static void glove_sample(int k, double readings[12]) {
    const double closing = 0.5 - 0.5 * cos(k * 3.14159265358979 / 100.0);
    const double pose[12] = {60, 40, 10, 62, 0, 0, 5, 0, 0, 5, 0, 5};
    for (int i = 0; i < 12; ++i) readings[i] = pose[i] * closing;
}

static int save(const quil_hand* hand, const char* path) {
    unsigned char state[QUIL_HAND_STATE_CAPACITY];
    size_t size = quil_hand_save_state(hand, state, sizeof state);
    FILE* f = fopen(path, "wb");
    int ok = f && size > 0 && fwrite(state, 1, size, f) == size;
    if (f && fclose(f) != 0) ok = 0;
    return ok;
}

static int load(quil_hand* hand, const char* path) {
    unsigned char state[QUIL_HAND_STATE_CAPACITY];
    FILE* f = fopen(path, "rb");
    if (!f) return QUIL_E_NULL;
    size_t size = fread(state, 1, sizeof state, f);
    fclose(f);
    return quil_hand_load_state(hand, state, size);
}

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "hand.state";
    double readings[12], targets[SAMPLES][24], uninterrupted[SAMPLES][24];

    /* The whole session in one go, for comparison. */
    quil_hand* hand = quil_hand_open(HAND);
    for (int k = 0; k < SAMPLES; ++k) {
        glove_sample(k, readings);
        quil_hand_map(hand, readings, uninterrupted[k]);
    }
    quil_hand_close(hand);

    /* First part, then save and close. */
    hand = quil_hand_open(HAND);
    for (int k = 0; k < SAMPLES / 2; ++k) {
        glove_sample(k, readings);
        quil_hand_map(hand, readings, targets[k]);
    }
    if (!save(hand, path)) {
        fprintf(stderr, "cannot write %s\n", path);
        return 1;
    }
    quil_hand_close(hand);

    /* Later: reopen, load, carry on. */
    hand = quil_hand_open(HAND);
    int rc = load(hand, path);
    if (rc != QUIL_OK) {
        fprintf(stderr, "%s: %s\n", path, quil_error_text(rc));
        return 1;
    }
    for (int k = SAMPLES / 2; k < SAMPLES; ++k) {
        glove_sample(k, readings);
        quil_hand_map(hand, readings, targets[k]);
    }
    quil_hand_close(hand);

    int same = memcmp(targets, uninterrupted, sizeof targets) == 0;
    printf("%s: saved after sample %d to %s, resumed: %s\n", HAND, SAMPLES / 2, path,
           same ? "identical to the uninterrupted session" : "DIFFERENT");
    return same ? 0 : 1;
}
