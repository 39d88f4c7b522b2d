// quil-retarget map between its formats: every input format to every output format gives, for
// every hand, what the hand API and the C exports (loaded with dlopen and called once per hand
// with one sequence, as a fresh host would) give, bit for bit; NumPy files of every kind; and a
// session split into files that carries on through saved states.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "quil_linear/hand.hpp"
#include "retarget_test_support.h"

namespace {

using namespace retarget_test;

using ExportFn = double* (*)(double, double, double, double, double, double, double, double, double, double,
                             double, double);

class Formats : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        samples_ = varied_session();
        std::string csv = "t,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n", f64;
        std::vector<std::vector<double>> timed;
        for (std::size_t r = 0; r < samples_.size(); ++r) {
            csv += text(time_of(r));
            for (double v : samples_[r]) csv += "," + text(v);
            csv += "\n";
            f64.append(reinterpret_cast<const char*>(samples_[r].data()), sizeof(Sample));
            timed.push_back({time_of(r)});
            timed.back().insert(timed.back().end(), samples_[r].begin(), samples_[r].end());
        }
        write_file("session.csv", csv);
        write_file("session.f64", f64);
        write_file("session.npy", npy_file(timed, 13, "<f8", false, 1));
    }
    static std::vector<Sample> samples_;
};
std::vector<Sample> Formats::samples_;

// Every input format to every output format, for every hand, value for value and bit for bit.
TEST_F(Formats, EveryPairGivesTheHandApiAndTheExportsBitForBit) {
    void* lib = dlopen(g_library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    auto free_memory = reinterpret_cast<void (*)(double*)>(dlsym(lib, "FreeMemory"));
    ASSERT_NE(free_memory, nullptr);
    const std::size_t n = samples_.size();
    const char* formats[] = {"csv", "f64", "npy"};

    for (const quil_linear::HandInfo& hand : quil_linear::hands()) {
        SCOPED_TRACE(std::string(hand.name));
        const std::string name(hand.name);
        std::vector<double> expected(n * 24), api(n * 24);
        auto fn = reinterpret_cast<ExportFn>(dlsym(lib, (name + "_GetDataValue").c_str()));
        ASSERT_NE(fn, nullptr);
        for (std::size_t r = 0; r < n; ++r) {
            const Sample& s = samples_[r];
            double* p = fn(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10], s[11]);
            std::memcpy(&expected[r * 24], p, 24 * sizeof(double));
            if (!hand.persistent_buffer) free_memory(p);
        }
        quil_linear::Hand(name).map(n, samples_[0].data(), api.data());
        ASSERT_EQ(std::memcmp(api.data(), expected.data(), api.size() * sizeof(double)), 0) << "hand API vs export";

        for (const char* from : formats) {
            for (const char* to : formats) {
                SCOPED_TRACE(std::string(from) + " -> " + to);
                const bool timed = std::string(from) != "f64";
                const Result r = run("map -m " + name + " session." + from + " -o out." + to);
                ASSERT_EQ(r.status, 0) << r.err;
                std::vector<std::vector<double>> rows;  // time (when carried), then 24 targets
                std::vector<std::string> times;
                if (std::string(to) == "csv") {
                    const auto lines = read_csv(read_file("out.csv"));
                    ASSERT_EQ(lines.size(), n + 1);
                    EXPECT_EQ(lines[0][0], !timed ? "out0" : std::string(from) == "csv" ? "t" : "time");
                    for (std::size_t i = 1; i <= n; ++i) {
                        rows.emplace_back();
                        for (const std::string& f : lines[i]) rows.back().push_back(number(f));
                        times.push_back(lines[i][0]);
                    }
                } else if (std::string(to) == "npy") {
                    rows = read_npy(read_file("out.npy"), timed ? 25 : 24);
                } else {
                    const std::string b = read_file("out.f64");
                    ASSERT_EQ(b.size(), n * 24 * sizeof(double));
                    for (std::size_t i = 0; i < n; ++i) {
                        rows.emplace_back(24);
                        std::memcpy(rows.back().data(), b.data() + i * 192, 192);
                    }
                }
                ASSERT_EQ(rows.size(), n);
                const std::size_t first = timed && std::string(to) != "f64" ? 1 : 0;
                int mismatches = 0;
                for (std::size_t i = 0; i < n; ++i) {
                    ASSERT_EQ(rows[i].size(), 24 + first);
                    if (first) {
                        EXPECT_EQ(bits(rows[i][0]), bits(time_of(i))) << "time of row " << i;
                        if (std::string(from) == "csv" && std::string(to) == "csv") {
                            EXPECT_EQ(times[i], text(time_of(i)));
                        }
                    }
                    for (int k = 0; k < 24; ++k)
                        if (bits(rows[i][first + k]) != bits(expected[i * 24 + k]) && ++mismatches <= 3)
                            ADD_FAILURE() << "row " << i << " slot " << k << ": " << text(rows[i][first + k])
                                          << ", expected " << text(expected[i * 24 + k]);
                }
                EXPECT_EQ(mismatches, 0);
            }
        }
    }
}

// NumPy inputs of every version, type, byte order and layout give the same targets, and a
// header or data problem stops the run before any output, naming the problem.
TEST_F(Formats, NpyVariantsReadAlikeAndBadOnesAreRefused) {
    const std::string hand = "RUIYAN_RY_H15";
    std::vector<std::vector<double>> rows12, rows13;
    for (std::size_t r = 0; r < 300; ++r) {
        rows12.emplace_back(samples_[r].begin(), samples_[r].end());
        rows13.push_back({time_of(r)});
        rows13.back().insert(rows13.back().end(), samples_[r].begin(), samples_[r].end());
    }
    for (const char* descr : {"<f8", ">f8", "<f4", ">f4"}) {
        // float32 readings are the float32-rounded samples, widened exactly.
        std::vector<double> flat;
        for (const auto& row : rows12)
            for (double v : row) flat.push_back(descr[2] == '4' ? static_cast<double>(static_cast<float>(v)) : v);
        std::vector<double> expected(300 * 24);
        quil_linear::Hand(hand).map(300, flat.data(), expected.data());
        for (int version : {1, 2, 3}) {
            for (bool fortran : {false, true}) {
                for (std::size_t cols : {12, 13}) {
                    SCOPED_TRACE(std::string(descr) + " v" + std::to_string(version) + (fortran ? " F" : " C") +
                                 " cols " + std::to_string(cols));
                    write_file("in.npy", npy_file(cols == 12 ? rows12 : rows13, cols, descr, fortran, version));
                    // From the file, and from a pipe (a Fortran array is then held whole).
                    for (const bool piped : {false, true}) {
                        const Result r = piped ? run_piped("map -m " + hand + " --from npy -o out.npy", "in.npy")
                                               : run("map -m " + hand + " in.npy -o out.npy");
                        ASSERT_EQ(r.status, 0) << r.err;
                        const auto out = read_npy(read_file("out.npy"), cols == 13 ? 25 : 24);
                        ASSERT_EQ(out.size(), 300u);
                        for (std::size_t i = 0; i < 300; ++i) {
                            if (cols == 13) {
                                const double t = descr[2] == '4' ? static_cast<float>(time_of(i)) : time_of(i);
                                ASSERT_EQ(bits(out[i][0]), bits(t));
                            }
                            ASSERT_EQ(std::memcmp(&out[i][cols - 12], &expected[i * 24], 192), 0) << "row " << i;
                        }
                    }
                }
            }
        }
    }

    const std::string good = npy_file(rows12, 12, "<f8", false, 1);
    std::string v4 = good, long_len = good;
    v4[6] = 4;
    long_len[8] = '\xff';
    long_len[9] = '\x7f';
    struct Case {
        const char* name;
        std::string bytes;
        const char* message;
    } cases[] = {
        {"not npy", "x0,x1\n", "in.npy: npy header: not a NumPy file"},
        {"version 4", v4, "in.npy: npy header: format version 4.0 is not one of 1.0, 2.0, 3.0"},
        {"integers", npy_file(rows12, 12, "<i8", false, 1), "dtype '<i8' is not float64 or float32"},
        {"eleven columns", npy_file(rows12, 11, "<f8", false, 1), "shape (300, 11): expected (N, 12)"},
        {"header past the end", long_len, "the file ends inside the header"},
        {"extra data", good + std::string(96, '\0'), "96 bytes follow the data that the header's shape (300, 12) announces"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        write_file("in.npy", c.bytes);
        std::remove(path("out.csv").c_str());
        const Result r = run("map -m " + hand + " in.npy -o out.csv");
        EXPECT_EQ(r.status, 1) << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_FALSE(exists("out.csv")) << "no output for a refused input";
    }
    // Data cut short: from a file as from a pipe, the whole rows before it are written, then
    // the place is named.
    write_file("in.npy", good.substr(0, good.size() - 100));
    const Result piped = run_piped("map -m " + hand + " --from npy", "in.npy");
    const Result filed = run("map -m " + hand + " in.npy");
    for (const Result* r : {&piped, &filed}) {
        EXPECT_EQ(r->status, 1);
        EXPECT_NE(r->err.find("byte offset 28828: short data: the file ends inside row 298 of the 300"), std::string::npos)
            << r->err;
        EXPECT_EQ(split(r->out, '\n').size(), 299u);
    }
    EXPECT_EQ(piped.out, filed.out);
}

// A session cut into three files converts as one through --state-out and --state-in, for every
// hand that keeps state, under both dropout policies; states that do not fit stop the run.
TEST_F(Formats, SplitSessionsConvertAsOneAndForeignStatesAreRefused) {
    std::vector<std::string> lines = split(read_file("session.csv"), '\n');
    const std::string heading = lines[0] + "\n";
    const std::size_t cut1 = 777, cut2 = 1555;
    std::string parts[3] = {heading, heading, heading};
    for (std::size_t i = 1; i < lines.size(); ++i) parts[i <= cut1 ? 0 : i <= cut2 ? 1 : 2] += lines[i] + "\n";
    for (int p = 0; p < 3; ++p) write_file("part" + std::to_string(p) + ".csv", parts[p]);

    for (const quil_linear::HandInfo& hand : quil_linear::hands()) {
        if (!hand.keeps_state) continue;
        const std::string name(hand.name);
        for (const quil_linear::Dropout policy : {quil_linear::Dropout::pass, quil_linear::Dropout::hold}) {
            const std::string dropout = quil_linear::dropout_name(policy);
            SCOPED_TRACE(name + " " + dropout);
            const Result whole = run("map -m " + name + " --dropout " + dropout + " session.csv -o whole.csv");
            ASSERT_EQ(whole.status, 0) << whole.err;
            std::string joined;
            for (int p = 0; p < 3; ++p) {
                std::string args = "map -m " + name + " part" + std::to_string(p) + ".csv -o out.csv";
                if (p == 0) args += std::string(" --dropout ") + dropout;  // later parts take it from the state
                if (p > 0) args += " --state-in s" + std::to_string(p - 1);
                args += " --state-out s" + std::to_string(p);
                const Result r = run(args);
                ASSERT_EQ(r.status, 0) << r.err;
                const std::string out = read_file("out.csv");
                joined += p == 0 ? out : out.substr(out.find('\n') + 1);
            }
            EXPECT_TRUE(joined == read_file("whole.csv"));
        }
    }

    // Another hand's state, a damaged one and a cut one: exit 4, before any output.
    run("map -m CHOHO_Hand part0.csv -o /dev/null --state-out choho.state");
    std::string damaged = read_file("s0");
    damaged[50] ^= 1;
    write_file("damaged.state", damaged);
    write_file("cut.state", read_file("s0").substr(0, 40));
    struct Case {
        const char* state;
        const char* message;
    } cases[] = {
        {"choho.state", "it is a state of CHOHO_Hand, this run is for RUIYAN_RY_H15"},
        {"damaged.state", "cannot continue from the state in 'damaged.state'"},
        {"cut.state", "cannot continue from the state in 'cut.state'"},
        {"session.csv", "cannot continue from the state in 'session.csv'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.state);
        std::remove(path("out.csv").c_str());
        const Result r = run(std::string("map -m RUIYAN_RY_H15 part1.csv -o out.csv --state-in ") + c.state);
        EXPECT_EQ(r.status, 4);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_FALSE(exists("out.csv"));
    }
}

}  // namespace
