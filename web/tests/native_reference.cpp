// The native side of the browser comparison: runs one file of glove samples through a fresh
// handle of every hand of the native library, once per dropout policy, and writes the raw
// targets, so the page's results can be compared with them bit for bit.
//
//   native_reference READINGS.f64 OUT_DIR
//
// READINGS.f64 holds n samples of 12 little-endian doubles. For each hand H and policy P
// (pass, hold) it writes OUT_DIR/H.P.f64 with n rows of 24 doubles and OUT_DIR/H.P.state, the
// handle's saved state after the last sample, and it lists the hands, one
// "name<TAB>version<TAB>keeps_state<TAB>roles..." line each, in OUT_DIR/hands.tsv, and what the
// library says of every slot, one "name<TAB>slot<TAB>role<TAB>kind<TAB>relation<TAB>departs<TAB>
// value<TAB>sign<TAB>min<TAB>max<TAB>moved_by" line each, in OUT_DIR/slots.tsv.
#include <cstdio>
#include <string>
#include <vector>

#include "quil_linear/hand.h"

namespace {

bool write_file(const std::string& path, const void* data, std::size_t bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(data, 1, bytes, f) == bytes;
    return std::fclose(f) == 0 && ok;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s READINGS.f64 OUT_DIR\n", argv[0]);
        return 2;
    }
    std::FILE* in = std::fopen(argv[1], "rb");
    if (!in) {
        std::perror(argv[1]);
        return 3;
    }
    std::vector<double> readings;
    double row[12];
    while (std::fread(row, sizeof row, 1, in) == 1) readings.insert(readings.end(), row, row + 12);
    std::fclose(in);
    const std::size_t n = readings.size() / 12;
    const std::string dir = argv[2];

    std::string table, slots;
    std::vector<double> targets(n * 24);
    for (std::size_t i = 0; i < quil_hand_count(); ++i) {
        const quil_hand_info* info = quil_hand_at(i);
        for (std::size_t s = 0; s < 24; ++s) {
            const quil_slot_info* f = quil_hand_slot(info, s);
            char numbers[160];
            std::snprintf(numbers, sizeof numbers, "%.17g\t%d\t%.17g\t%.17g\t%u", f->value, f->sign, f->range_min,
                          f->range_max, f->moved_by);
            slots += std::string(info->name) + "\t" + std::to_string(s) + "\t" + f->role + "\t" +
                     quil_slot_kind_name(f->kind) + "\t" + f->relation + "\t" + f->departs + "\t" + numbers + "\n";
        }
        table += std::string(info->name) + "\t" + info->version + "\t" + (info->keeps_state ? "1" : "0");
        for (const char* role : info->slot_roles) table += std::string("\t") + role;
        table += "\n";
        for (const int policy : {QUIL_DROPOUT_PASS, QUIL_DROPOUT_HOLD}) {
            quil_hand* hand = quil_hand_open(info->name);
            if (!hand || quil_hand_set_dropout(hand, policy) != QUIL_OK) {
                std::fprintf(stderr, "cannot open %s\n", info->name);
                return 1;
            }
            // One sample at a time, as a live host feeds the hand.
            for (std::size_t k = 0; k < n; ++k) quil_hand_map(hand, &readings[12 * k], &targets[24 * k]);
            unsigned char state[QUIL_HAND_STATE_CAPACITY];
            const std::size_t state_size = quil_hand_save_state(hand, state, sizeof state);
            quil_hand_close(hand);
            const std::string base = dir + "/" + info->name + "." + quil_dropout_name(policy);
            if (!write_file(base + ".f64", targets.data(), targets.size() * sizeof(double)) ||
                !write_file(base + ".state", state, state_size)) {
                std::perror(base.c_str());
                return 3;
            }
        }
    }
    if (!write_file(dir + "/hands.tsv", table.data(), table.size())) return 3;
    if (!write_file(dir + "/slots.tsv", slots.data(), slots.size())) return 3;
    return 0;
}
