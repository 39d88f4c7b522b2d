// golden: makes and checks the golden record of every hand's behaviour.
//
//   golden regenerate [--record DIR]          remake the record from the C exports, each hand in
//                                             a fresh process (after a reviewed, deliberate change)
//   golden samples DIR --format f64|npy       write every hand's samples to DIR/HAND.f64|.npy
//   golden check HAND TARGETS [--record DIR] [--as NAME]
//                                             check a targets file (f64 with 24 doubles per
//                                             sample, or npy of shape (N, 24) or (N, 25))
#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

#include "golden/record.h"
#include "support/fresh_export.h"

namespace {

using namespace quil::golden;

std::vector<HandRecord> regenerate() {
    std::vector<HandRecord> hands;
    const auto& all = quil::test::exports();
    for (std::size_t h = 0; h < all.size(); ++h) {
        const std::vector<Sample> samples = samples_for_hand(h);
        hands.push_back(record_of(all[h].name, quil::test::fresh_export(all[h], samples)));
    }
    return hands;
}

void write_samples(const std::string& dir, const std::string& format) {
    const auto& all = quil::test::exports();
    for (std::size_t h = 0; h < all.size(); ++h) {
        const std::vector<Sample> samples = samples_for_hand(h);
        std::ofstream f(dir + "/" + all[h].name + "." + format, std::ios::binary);
        if (format == "npy") {
            std::string header = "{'descr': '<f8', 'fortran_order': False, 'shape': (" +
                                 std::to_string(samples.size()) + ", 12), }";
            header.append(64 - (10 + header.size() + 1) % 64, ' ');
            header += '\n';
            const unsigned char len[2] = {static_cast<unsigned char>(header.size() & 0xFF),
                                          static_cast<unsigned char>(header.size() >> 8)};
            f.write("\x93NUMPY\x01\x00", 8);
            f.write(reinterpret_cast<const char*>(len), 2);
            f << header;
        }
        f.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 96));
        if (!f.flush()) throw std::runtime_error("cannot write " + dir);
    }
}

// The targets in a file: raw f64 (24 per sample), or npy of little-endian doubles in C order
// with 24 columns, or 25 with the time first. Read here rather than with quil-retarget's npy
// code: this is what checks that code's output.
std::vector<double> read_targets(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    const std::string bytes = s.str();
    std::size_t at = 0, columns = 24;
    if (bytes.compare(0, 6, "\x93NUMPY") == 0) {
        const std::size_t len_bytes = bytes[6] == 1 ? 2 : 4;
        std::size_t len = 0;
        for (std::size_t i = 0; i < len_bytes; ++i) len |= static_cast<std::size_t>(static_cast<unsigned char>(bytes[8 + i])) << (8 * i);
        const std::string header = bytes.substr(8 + len_bytes, len);
        std::smatch m;
        if (header.find("'<f8'") == std::string::npos || header.find("False") == std::string::npos ||
            !std::regex_search(header, m, std::regex("\\(\\s*(\\d+)\\s*,\\s*(\\d+)\\s*,?\\s*\\)")))
            throw std::runtime_error(path + ": not an npy of <f8 in C order with two dimensions: " + header);
        columns = std::stoul(m[2]);
        at = 8 + len_bytes + len;
    }
    if (columns != 24 && columns != 25) throw std::runtime_error(path + ": " + std::to_string(columns) + " columns");
    const std::size_t rows = (bytes.size() - at) / (columns * 8);
    std::vector<double> targets(rows * 24);
    for (std::size_t r = 0; r < rows; ++r)
        std::memcpy(&targets[24 * r], bytes.data() + at + (r * columns + columns - 24) * 8, 24 * 8);
    return targets;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Makes and checks the golden record of every hand's behaviour."};
    app.require_subcommand(1);
    std::string record_dir = QUIL_GOLDEN_DIR;

    auto* regen = app.add_subcommand("regenerate", "remake the record from the C exports, each hand in a fresh process");
    regen->add_option("--record", record_dir, "directory of record.txt and samples.digest");

    std::string dir, format;
    auto* samples = app.add_subcommand("samples", "write every hand's samples to DIR/HAND.f64 or .npy");
    samples->add_option("DIR", dir)->required()->check(CLI::ExistingDirectory);
    samples->add_option("--format", format)->required()->check(CLI::IsMember({"f64", "npy"}));

    std::string hand, path, interface;
    auto* check = app.add_subcommand("check", "check a targets file of one hand against the record");
    check->add_option("HAND", hand)->required();
    check->add_option("TARGETS", path)->required()->check(CLI::ExistingFile);
    check->add_option("--as", interface, "the interface that made the file, for the message (default: its path)");
    check->add_option("--record", record_dir, "directory of record.txt and samples.digest");

    CLI11_PARSE(app, argc, argv);
    try {
        if (*regen) {
            write_record(record_dir, regenerate());
            std::cout << "wrote " << record_dir << "/record.txt and samples.digest\n";
        } else if (*samples) {
            write_samples(dir, format);
        } else {
            const auto& all = quil::test::exports();
            const std::vector<HandRecord> record = read_record(record_dir);
            for (std::size_t h = 0; h < all.size(); ++h) {
                if (hand != all[h].name) continue;
                const std::string problem =
                    compare(record.at(h), read_targets(path), samples_for_hand(h), interface.empty() ? path : interface);
                if (!problem.empty()) {
                    std::cerr << problem << '\n';
                    return 1;
                }
                return 0;
            }
            std::cerr << "unknown hand " << hand << '\n';
            return 2;
        }
    } catch (const std::exception& e) {
        std::cerr << "golden: " << e.what() << '\n';
        return 2;
    }
    return 0;
}
