/* 05: the compatible interface: the plain C exports <hand>_GetDataValue, with the two kinds of
   result buffer. New hosts use the hand API (01-04). Map a few poses onto two hands.
   Build against an installed library with
     cc 05_c_exports.c $(pkg-config --cflags --libs quil_linear) -o 05_c_exports */
#include <stdio.h>

#include <quil_linear/quil_linear.h>

static void print_targets(const char* hand, const char* pose, const double* t) {
    printf("%-16s %-12s", hand, pose);
    for (int i = 0; i < 24; ++i) printf(" %g", t[i]);
    printf("\n");
}

int main(void) {
    static const struct { const char* name; double x[12]; } poses[] = {
        {"open", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"fist", {40, 30, 20, 90, 5, 0, 90, 0, 0, 90, 0, 90}},
        {"index-pinch", {35, 40, 30, 55, 0, 0, 5, 0, 0, 5, 0, 5}},
    };
    for (unsigned p = 0; p < sizeof poses / sizeof poses[0]; ++p) {
        const double* x = poses[p].x;
        /* A per-call hand: the buffer is ours to release. */
        double* aa = QUIL_linear_AA_GetDataValue(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7],
                                                 x[8], x[9], x[10], x[11]);
        print_targets("QUIL_linear_AA", poses[p].name, aa);
        FreeMemory(aa);
        /* A persistent hand: the buffer belongs to the library; never free it. */
        const double* xh = ROBOTERA_XHAND1_GetDataValue(x[0], x[1], x[2], x[3], x[4], x[5], x[6],
                                                        x[7], x[8], x[9], x[10], x[11]);
        print_targets("ROBOTERA_XHAND1", poses[p].name, xh);
    }
    printf("library versions: %s, %s\n", QUIL_linear_AA_GetVersion(), ROBOTERA_XHAND1_GetVersion());
    return 0;
}
