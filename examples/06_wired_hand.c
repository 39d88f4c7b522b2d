/* 06: wire a hand to its driver: two outputs in the driver's units, smoothed and rate-limited,
   fed at 100 Hz, then a glove that goes silent: the watchdog holds, then eases to safe.
     ./06_wired_hand
   The same in Python: 06_wired_hand.py. */
#include <stdio.h>

#include <quil_linear/hand.h>

int main(void) {
    quil_hand* hand = quil_hand_open("LINKERBOT_LinkerHand_O6");
    if (!hand) return 1;

    /* The driver takes radians, flexion positive; the targets are degrees, flexion negative. */
    quil_output outputs[2];
    quil_output_init(&outputs[0]);
    outputs[0].name = "index";
    outputs[0].slot = 6;
    outputs[0].scale = -0.017453292519943295;
    outputs[0].min = 0.0;
    outputs[0].max = 1.6;
    outputs[0].smoothing.kind = QUIL_SMOOTHING_ONE_EURO;
    outputs[0].smoothing.min_cutoff = 1.5;
    outputs[0].smoothing.beta = 0.3;
    outputs[0].smoothing.d_cutoff = 1.0;
    outputs[0].max_rate = 4.0; /* rad/s: a re-engage never slams the finger */
    outputs[1] = outputs[0];
    outputs[1].name = "middle";
    outputs[1].slot = 10;

    quil_profile profile;
    quil_profile_init(&profile);
    profile.hand = "LINKERBOT_LinkerHand_O6";
    profile.hold_after = 0.05; /* stale after 50 ms without a sample */
    profile.safe_after = 0.2;  /* back to safe (open) from 200 ms */
    profile.output_count = 2;
    profile.outputs = outputs;
    quil_profile_fault fault;
    int rc = quil_hand_set_profile(hand, &profile, &fault);
    if (rc != QUIL_OK) {
        fprintf(stderr, "%s: outputs[%ld].%s %s\n", quil_error_text(rc), fault.output, fault.field, fault.problem);
        return 1;
    }

    double commands[2];
    printf("%8s %8s %8s\n", "t", quil_hand_output_name(hand, 0), quil_hand_output_name(hand, 1));
    for (int i = 0; i <= 50; ++i) { /* half a second closing into a fist */
        const double t = 0.01 * i, bend = 90.0 * i / 50;
        const double readings[12] = {0, 0, 0, bend, 0, bend, bend, 0, bend, bend, 0, bend};
        quil_hand_map_at(hand, t, readings, commands);
        if (i % 10 == 0) printf("%8.2f %8.4f %8.4f\n", t, commands[0], commands[1]);
    }
    for (double t = 0.55; t < 1.2; t += 0.1) { /* the glove goes silent */
        const int stale = quil_hand_tick(hand, t, commands);
        printf("%8.2f %8.4f %8.4f%s\n", t, commands[0], commands[1], stale ? "  (watchdog: stale)" : "");
    }
    quil_counters counters;
    quil_hand_counters(hand, &counters);
    printf("samples %llu, rate-limited %llu, stale ticks %llu\n", (unsigned long long)counters.samples,
           (unsigned long long)counters.limited, (unsigned long long)counters.stale);
    quil_hand_close(hand);
    return 0;
}
