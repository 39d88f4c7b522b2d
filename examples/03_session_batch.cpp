// 03: a whole recorded session through one batch call: read a glove recording (CSV with a time
// column and x0..x11), map every sample in order with one call, and write the targets as CSV.
//   ./03_session_batch SESSION.csv [HAND] > targets.csv
// The same in Python: 03_session_batch.py.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <quil_linear/hand.hpp>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SESSION.csv [HAND]\n", argv[0]);
        return 2;
    }
    const char* hand_name = argc > 2 ? argv[2] : "LINKERBOT_LinkerHand_O6";

    // time,x0,...,x11 per line after a header line.
    std::ifstream in(argv[1]);
    std::string line;
    std::vector<double> times;
    std::vector<quil_linear::Readings> readings;
    std::getline(in, line);
    for (int number = 2; std::getline(in, line); ++number) {
        std::istringstream fields(line);
        std::string field;
        double t;
        quil_linear::Readings x;
        bool ok = std::getline(fields, field, ',') && std::sscanf(field.c_str(), "%lf", &t) == 1;
        for (double& v : x) ok = ok && std::getline(fields, field, ',') && std::sscanf(field.c_str(), "%lf", &v) == 1;
        if (!ok) {
            std::fprintf(stderr, "%s:%d: expected a time and 12 readings\n", argv[1], number);
            return 1;
        }
        times.push_back(t);
        readings.push_back(x);
    }

    try {
        quil_linear::Hand hand(hand_name);
        const auto start = std::chrono::steady_clock::now();
        const std::vector<quil_linear::Targets> targets = hand.map(readings);  // the whole session
        const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;

        const auto info = hand.info();
        std::printf("time");
        for (auto role : info.slot_roles) std::printf(",%.*s", static_cast<int>(role.size()), role.data());
        std::printf("\n");
        for (std::size_t r = 0; r < targets.size(); ++r) {
            std::printf("%g", times[r]);
            for (double v : targets[r]) std::printf(",%.17g", v);
            std::printf("\n");
        }
        std::fprintf(stderr, "%zu samples through %s in one call, %.0f ns per sample\n", targets.size(),
                     hand_name, targets.empty() ? 0.0 : took.count() / targets.size());
    } catch (const quil_linear::Error& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 2;
    }
    return 0;
}
