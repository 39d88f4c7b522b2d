/* 01: open a hand by name, map a few glove samples, and print the targets with the role of each
   slot.
     ./01_one_hand [HAND]          HAND defaults to INSPIRE_ROBOTS_RH56DFX
   The same in Python: 01_one_hand.py. */
#include <stdio.h>
#include <string.h>

#include <quil_linear/hand.h>

int main(int argc, char** argv) {
    const char* name = argc > 1 ? argv[1] : "INSPIRE_ROBOTS_RH56DFX";
    quil_hand* hand = quil_hand_open(name);
    if (!hand) {
        const quil_hand_info* close[3];
        size_t n = quil_hand_suggest(name, close, 3);
        fprintf(stderr, "unknown hand %s; closest:", name);
        for (size_t i = 0; i < n; ++i) fprintf(stderr, " %s", close[i]->name);
        fprintf(stderr, "\n");
        return 1;
    }
    const quil_hand_info* info = quil_hand_about(hand);
    printf("%s %s (library %s)\n", info->name, info->version, quil_linear_version());

    /* Glove readings x0..x11, as the glove sends them. */
    static const struct {
        const char* pose;
        double readings[12];
    } samples[] = {
        {"open hand", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"fist", {40, 30, 20, 90, 5, 0, 90, 0, 0, 90, 0, 90}},
        {"index pinch", {35, 40, 30, 55, 0, 0, 5, 0, 0, 5, 0, 5}},
    };
    for (size_t s = 0; s < sizeof samples / sizeof samples[0]; ++s) {
        double targets[QUIL_TARGETS];
        quil_hand_map(hand, samples[s].readings, targets);
        printf("\n%s:\n", samples[s].pose);
        for (int slot = 0; slot < QUIL_TARGETS; ++slot)
            if (strcmp(info->slot_roles[slot], "unused") != 0)
                printf("  %2d %-22s %8.2f\n", slot, info->slot_roles[slot], targets[slot]);
    }
    quil_hand_close(hand);
    return 0;
}
