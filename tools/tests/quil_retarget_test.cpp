// quil-retarget run as users run it: as a separate process on files and pipes. What it writes is
// checked against the hand API called in this process and against the shared library's C
// exports, loaded with dlopen and called once per hand with one sequence, as a fresh host would.
//
//   quil_retarget_test PATH/quil-retarget PATH/libquil_linear.so
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "quil_linear/hand.hpp"

namespace {

std::string g_tool, g_library, g_dir;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

using Sample = std::array<double, 12>;

std::uint64_t bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

std::string path(const std::string& name) { return g_dir + "/" + name; }

void write_file(const std::string& name, const std::string& content) {
    std::ofstream(path(name), std::ios::binary) << content;
}

std::string read_file(const std::string& name) {
    std::ifstream f(path(name), std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

bool exists(const std::string& name) { return access(path(name).c_str(), F_OK) == 0; }

struct Result {
    int status;
    std::string out, err;
};

// Runs the tool with `args` (shell words) in the scratch directory, standard input from the
// file `in` there (or none), standard output to the file "stdout".
Result run(const std::string& args, const std::string& in = "", const std::string& env = "") {
    const std::string cmd = "cd '" + g_dir + "' && " + env + " '" + g_tool + "' " + args + " <" +
                            (in.empty() ? "/dev/null" : "'" + in + "'") + " >stdout 2>stderr";
    const int raw = std::system(cmd.c_str());
    return Result{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, read_file("stdout"), read_file("stderr")};
}

// The same with standard input from a pipe, which cannot be read twice or measured beforehand.
Result run_piped(const std::string& args, const std::string& in) {
    const std::string cmd = "cd '" + g_dir + "' && cat '" + in + "' | '" + g_tool + "' " + args + " >stdout 2>stderr";
    const int raw = std::system(cmd.c_str());
    return Result{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, read_file("stdout"), read_file("stderr")};
}

std::vector<std::string> split(const std::string& s, char sep) {
    std::vector<std::string> parts;
    std::string cur;
    std::istringstream in(s);
    while (std::getline(in, cur, sep)) parts.push_back(cur);
    return parts;
}

std::string text(double v) {  // an input value as a recorder might print it, exactly
    if (std::isnan(v)) return std::signbit(v) ? "-nan" : "nan";
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

// A few thousand samples meant to reach every branch a hand has: slow moves between random
// poses (pinches close and open, so latches are set and cleared), uniform noise over and past
// the readings' range, and the awkward values (NaN, infinities, signed zeros, bounds).
std::vector<Sample> varied_session() {
    std::mt19937_64 rng(20240517);
    std::uniform_real_distribution<double> pose(-5.0, 110.0), wide(-40.0, 140.0);
    const double special[] = {kNaN, -kNaN, kInf, -kInf, 0.0, -0.0, 120.0, -20.0, 120.0000001, -20.0000001, 1e-310, 45.05};
    std::vector<Sample> samples;
    Sample from{}, to{};
    for (int move = 0; move < 24; ++move) {
        for (double& v : to) v = pose(rng);
        for (int k = 0; k < 60; ++k) {
            Sample s;
            const double w = 0.5 - 0.5 * std::cos(M_PI * k / 59.0);
            for (int i = 0; i < 12; ++i) s[i] = from[i] + (to[i] - from[i]) * w;
            samples.push_back(s);
        }
        from = to;
    }
    for (int k = 0; k < 700; ++k) {
        Sample s;
        for (double& v : s) v = wide(rng);
        if (k % 3 == 0) s[rng() % 12] = special[rng() % 12];
        samples.push_back(s);
    }
    return samples;
}

double time_of(std::size_t r) { return static_cast<double>(r) * 0.01 + 1e9; }

// An .npy file as NumPy writes it, of any version, type, byte order and layout.
std::string npy_file(const std::vector<std::vector<double>>& rows, std::size_t cols, const std::string& descr,
                     bool fortran, int version) {
    std::string dict = "{'descr': '" + descr + "', 'fortran_order': " + (fortran ? "True" : "False") +
                       ", 'shape': (" + std::to_string(rows.size()) + ", " + std::to_string(cols) + "), }";
    const std::size_t len_field = version == 1 ? 2 : 4;
    while ((8 + len_field + dict.size() + 1) % 64) dict += ' ';
    dict += '\n';
    std::string f = "\x93NUMPY";
    f += static_cast<char>(version);
    f += '\0';
    for (std::size_t i = 0; i < len_field; ++i) f += static_cast<char>((dict.size() >> (8 * i)) & 0xFF);
    f += dict;
    const bool big = descr[0] == '>';
    const bool f4 = descr[2] == '4';
    auto put = [&](double v) {
        unsigned char b[8];
        if (f4) {
            const float x = static_cast<float>(v);
            std::memcpy(b, &x, 4);
        } else {
            std::memcpy(b, &v, 8);
        }
        const int n = f4 ? 4 : 8;
        for (int i = 0; i < n; ++i) f += static_cast<char>(b[big ? n - 1 - i : i]);
    };
    if (fortran) {
        for (std::size_t c = 0; c < cols; ++c)
            for (const auto& r : rows) put(r[c]);
    } else {
        for (const auto& r : rows)
            for (std::size_t c = 0; c < cols; ++c) put(r[c]);
    }
    return f;
}

// The values of an npy output: checks its header and returns its rows.
std::vector<std::vector<double>> read_npy(const std::string& bytes, std::size_t cols) {
    EXPECT_GE(bytes.size(), 128u);
    if (bytes.size() < 128) return {};
    const std::string header = bytes.substr(0, 128);
    const std::size_t rows = (bytes.size() - 128) / (cols * 8);
    EXPECT_NE(header.find("'descr': '<f8', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " +
                          std::to_string(cols) + ")"),
              std::string::npos)
        << header;
    EXPECT_EQ((bytes.size() - 128) % (cols * 8), 0u);
    std::vector<std::vector<double>> out(rows, std::vector<double>(cols));
    for (std::size_t r = 0; r < rows; ++r) std::memcpy(out[r].data(), bytes.data() + 128 + r * cols * 8, cols * 8);
    return out;
}

// The rows of a CSV output, values read back with the C library's reader, not the tool's.
std::vector<std::vector<std::string>> read_csv(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : split(text, '\n')) rows.push_back(split(line, ','));
    return rows;
}
double number(const std::string& s) {
    char* end = nullptr;
    const double v = std::strtod(s.c_str(), &end);
    EXPECT_EQ(*end, '\0') << s;
    return v;
}

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
        quil_linear::Hand(name).map(samples_[0].data(), n, api.data());
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
        quil_linear::Hand(hand).map(flat.data(), 300, expected.data());
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
        for (const char* dropout : {"pass", "hold"}) {
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

// Each kind of malformed CSV: its exit status, its place, the rows written before it (none when
// the first row is at fault: then no output file at all), and the input left alone.
TEST(Csv, MalformedInputStopsAtItsPlace) {
    const std::string good = "0.00,1,2,3,4,5,6,7,8,9,10,11,12\n";
    const std::string row12 = "1,2,3,4,5,6,7,8,9,10,11,12";
    struct Case {
        const char* name;
        std::string input;
        int status;
        const char* message;
        int rows;  // rows written before the stop; -1: no output file
    } cases[] = {
        {"decimal commas, one row", "0,5;1,5;2;3;4;5;6;7;8;9;10;11\n", 1,
         "bad.csv:1:1: field 1 (x0): malformed number \"0,5\" (decimal commas: write numbers with a decimal point", -1},
        {"decimal commas under a heading", "a;b;c;d;e;f;g;h;i;j;k;l\n1;2;3;4;5;6;7;8;9;10;11,5;12\n", 1,
         "bad.csv:2:22: field 11 (x10): malformed number \"11,5\" (decimal commas", -1},
        {"decimal commas split by commas", "0,5,1,5,2,5,3,5,4,5,5,5,6,5,7,5,8,5,9,5,10,5,11,5\n", 1,
         "bad.csv:1:1: expected 12 fields (x0..x11) or 13 (time, x0..x11), found 24 (numbers with decimal commas", -1},
        {"short row", good + "0.01,1,2,3,4,5,6,7,8,9,10,11\n", 1,
         "bad.csv:2:29: short row: expected 13 fields (time, x0..x11), found 12", 1},
        {"long row", good + good + "0.02,1,2,3,4,5,6,7,8,9,10,11,12,13\n", 1,
         "bad.csv:3:33: long row: expected 13 fields (time, x0..x11), found 14", 2},
        {"letter in a number", good + "0.01,1,2,3,4,5,6,7,8,9,1O,11,12\n", 1,
         "bad.csv:2:24: field 11 (x9): malformed number \"1O\"", 1},
        {"empty field", good + "0.01,1,2,3,4,5,6,7,8,9,10,,12\n", 1, "bad.csv:2:27: field 12 (x10): empty field", 1},
        {"line too long", good + "0.01," + std::string(2 << 20, '1') + "\n", 1, "bad.csv:2:1: line longer than", 1},
        {"heading of the wrong width", "t,x0,x1\n" + good, 1, "bad.csv:1:1: the heading line has 3 fields", -1},
        {"heading of numbered columns", "time,0,1,2,3,4,5,6,7,8,9,10,11\n" + good, 1,
         "bad.csv:1:1: field 1 (time): \"time\" is not a time (it holds no digit); a heading line must hold names only", -1},
        {"trailing separator lost", row12 + ",\n" + row12 + ",\n" + row12 + "\n", 1,
         "bad.csv:3:27: the line does not end with a separator, as line 1 does", 2},
        {"trailing separator appears", row12 + "\n" + row12 + ",\n", 1,
         "bad.csv:2:28: long row: expected 12 fields (x0..x11), found 13 (a separator ends this line but not line 1)", 1},
        {"unclosed quote", good + "\"0.01,1,2,3,4,5,6,7,8,9,10,11,12\n", 1,
         "bad.csv:2:1: a quoted field is not closed on its line", 1},
        {"text after a quote", good + "\"0.01\"s,1,2,3,4,5,6,7,8,9,10,11,12\n", 1,
         "bad.csv:2:7: text after the closing quote of a field", 1},
        {"npy given as csv", std::string("\x93NUMPY\x01\x00v\x00{", 11), 1,
         "bad.csv:1:1: this is a NumPy file, not CSV (read it with --from npy)", -1},
        {"a time over twelve fields", "\"Time (ms)\",x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n" + row12 + "\n", 1,
         "bad.csv:1:1: the heading names field 1 \"Time (ms)\" as a time, but has 12 fields", -1},
        {"a clock over twelve fields", "timestamp;a;b;c;d;e;f;g;h;i;j;k\n" + row12 + "\n", 1, "as a time, but has 12", -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        write_file("bad.csv", c.input);
        std::remove(path("out.csv").c_str());
        const Result r = run("map -m QUIL_linear_AA bad.csv -o out.csv");
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        if (c.rows < 0) {
            EXPECT_FALSE(exists("out.csv"));
        } else {
            EXPECT_EQ(split(read_file("out.csv"), '\n').size(), static_cast<std::size_t>(c.rows) + 1);
        }
        EXPECT_EQ(read_file("bad.csv"), c.input);
    }
}

// What differs between CSV writers reads the same: separators, line ends, headings, quotes, a
// separator ending every line, byte-order marks, comments. Names are written back quoted.
TEST(Csv, EveryDialectReadsTheSameWay) {
    const std::string plain = "0.5,1,2,3,4,5,6,7,8,9,10,11\n-1,2,30,45,60,75,90,105,120,-20,0,12\n";
    write_file("plain.csv", plain);
    const Result reference = run("map -m QUIL_linear_AA plain.csv");
    ASSERT_EQ(reference.status, 0) << reference.err;
    const std::string targets = reference.out.substr(reference.out.find('\n') + 1);

    struct Dialect {
        const char* name;
        std::string input;
    } dialects[] = {
        {"semicolons", "0.5;1;2;3;4;5;6;7;8;9;10;11\n-1;2;30;45;60;75;90;105;120;-20;0;12\n"},
        {"tabs and CRLF", "0.5\t1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\r\n-1\t2\t30\t45\t60\t75\t90\t105\t120\t-20\t0\t12\r\n"},
        {"heading, blanks, comments, no final line end",
         "a,b,c,d,e,f,g,h,i,j,k,l\n\n# open hand\n 0.5 , +1,2e0,3,4,5,6,7,8,9,10,11\n-1,2,30,45,60,75,90,105,120,-20,0,12"},
        {"byte-order mark", "\xEF\xBB\xBF" + plain},
        {"quoted numbers", "\"0.5\",\"1\",2,3,4,5,6,7,8,9,10,11\n-1,2,30,45,60,75,90,105,120,-20,0,\"12\"\n"},
        {"a separator ending every line", "0.5;1;2;3;4;5;6;7;8;9;10;11;\n-1;2;30;45;60;75;90;105;120;-20;0;12;\n"},
        {"heading and rows ending in a separator",
         "a,b,c,d,e,f,g,h,i,j,k,l,\n0.5,1,2,3,4,5,6,7,8,9,10,11,\n-1,2,30,45,60,75,90,105,120,-20,0,12,\n"},
        {"a heading that names nan-like words", "nano,info,c,d,e,f,g,h,i,j,k,l\n" + plain},
        {"columns lined up with spaces", "# x0 .. x11\n  0.5 1  2 3 4 5 6 7 8 9 10 11\n-1 2 30 45 60 75 90 105 120 -20 0 12  \n"},
    };
    for (const Dialect& d : dialects) {
        SCOPED_TRACE(d.name);
        write_file("dialect.csv", d.input);
        const Result r = run("map -m quil_linear_aa", "dialect.csv");  // names match ignoring case
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out.substr(r.out.find('\n') + 1), targets);
    }

    // A time column is copied as it stands (quoted again where it needs), with its heading.
    write_file("timed.csv", "\"when, UTC\";x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11;\n"
                            "0.010;0.5;1;2;3;4;5;6;7;8;9;10;11;\n"
                            "\"2024-05-01 10:00:00,020\";-1;2;30;45;60;75;90;105;120;-20;0;12;\n");
    const Result timed = run("map -m QUIL_linear_AA", "timed.csv");
    ASSERT_EQ(timed.status, 0) << timed.err;
    const std::vector<std::string> rows = split(timed.out, '\n');
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].substr(0, 17), "\"when, UTC\",out0,");
    const std::vector<std::string> expected = split(targets, '\n');
    EXPECT_EQ(rows[1], "0.010," + expected[0]);
    EXPECT_EQ(rows[2], "\"2024-05-01 10:00:00,020\"," + expected[1]);
    // ... but an output that holds times as numbers needs numbers there.
    const Result npy = run("map -m QUIL_linear_AA --from csv -o timed.npy", "timed.csv");
    EXPECT_EQ(npy.status, 1);
    EXPECT_NE(npy.err.find("<stdin>:3:1: field 1 (time): \"2024-05-01 10:00:00,020\" is not a number"), std::string::npos)
        << npy.err;
    EXPECT_EQ(read_npy(read_file("timed.npy"), 25).size(), 1u);  // the header tells the rows written
}

TEST(Csv, SkipBadListsTheRowsAndExitsFive) {
    std::string input = "t,a,b,c,d,e,f,g,h,i,j,k,l\n";
    for (int r = 0; r < 30; ++r) {
        std::string row = std::to_string(r) + ",1,2,3,4,5,6,7,8,9,10,11,12";
        if (r % 10 == 3) row = std::to_string(r) + ",1,2,x,4,5,6,7,8,9,10,11,12";  // lines 5, 15, 25
        if (r == 8) row += ",13";                                                  // line 10
        input += row + "\n";
    }
    write_file("skip.csv", input);
    const Result r = run("map -m QUIL_linear_AA --skip-bad --meta skip.json", "skip.csv");
    EXPECT_EQ(r.status, 5);
    EXPECT_NE(r.err.find("skipped 4 bad rows of <stdin>, at lines 5, 10, 15, 25"), std::string::npos) << r.err;
    const std::vector<std::string> rows = split(r.out, '\n');
    ASSERT_EQ(rows.size(), 27u);
    const auto meta = nlohmann::json::parse(read_file("skip.json"));
    EXPECT_EQ(meta["input"]["rows"], 30);
    EXPECT_EQ(meta["output"]["rows_written"], 26);
    EXPECT_EQ(meta["rows_skipped"]["count"], 4);
    EXPECT_EQ(meta["rows_skipped"]["places"][1]["line"], 10);
    EXPECT_NE(meta["rows_skipped"]["places"][0]["error"].get<std::string>().find("malformed number \"x\""), std::string::npos);
    EXPECT_EQ(meta["exit_status"], 5);

    // Skipping rows cannot mend a file written with decimal commas: it still stops at once.
    write_file("commas.csv", "1;2;3;4;5;6;7;8;9;10;11;12\n1;2;3;4;5;6;7;8;9;10;11,5;12\n");
    const Result commas = run("map -m QUIL_linear_AA --skip-bad commas.csv");
    EXPECT_EQ(commas.status, 1);
    EXPECT_NE(commas.err.find("commas.csv:2:22: field 11 (x10): malformed number \"11,5\" (decimal commas"),
              std::string::npos)
        << commas.err;

    write_file("short.f64", std::string(96 + 8, '\0'));
    const Result b = run("map -m QUIL_linear_AA --format f64 --skip-bad", "short.f64");
    EXPECT_EQ(b.status, 5);
    EXPECT_EQ(b.out.size(), 192u);
    EXPECT_NE(b.err.find("skipped 1 bad row of <stdin>, at byte offset 96"), std::string::npos) << b.err;
}

TEST(Outputs, EmptyInputsAreRefusedAndNamed) {
    // A session without a sample is a wrong file or a recording that never started: said, and
    // not a success, whatever the format and whether a heading is there.
    write_file("empty", "");
    write_file("heading-only", "time,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n# nothing recorded\n\n");
    write_file("none.npy", npy_file({}, 12, "<f8", false, 1));
    for (const std::string args : {"empty", "heading-only", "--from f64 empty -o e.npy", "none.npy -o e.csv"}) {
        SCOPED_TRACE(args);
        std::remove(path("e.npy").c_str());
        const Result r = run("map -m QUIL_linear_AA " + args);
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find(": no samples: the input holds no"), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
        EXPECT_FALSE(exists("e.npy"));
    }
    // Text read as raw doubles is refused before a row of nonsense is written, from a file or
    // a pipe; so is a file of absurd doubles that is not a whole number of records.
    write_file("text.txt", "0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1.0 1.1 1.2\n0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1 1 1\n");
    std::string absurd(96 + 50, '\0');
    const double huge = 3e250;
    std::memcpy(&absurd[16], &huge, 8);
    write_file("absurd.f64", absurd);
    for (const Result& r : {run("map -m QUIL_linear_AA --from f64 text.txt -o t.csv"),
                            run_piped("map -m QUIL_linear_AA --from f64 -o t.csv", "text.txt"),
                            run("map -m QUIL_linear_AA absurd.f64 -o t.csv")}) {
        EXPECT_EQ(r.status, 1);
        EXPECT_TRUE(r.err.find("byte offset 0: this is text (\"0.1 0.2 0.3") != std::string::npos ||
                    r.err.find("absurd.f64: byte offset 0: not raw doubles of glove readings: 146 bytes") != std::string::npos)
            << r.err;
        EXPECT_FALSE(exists("t.csv"));
    }
    // Truncated f64: the whole records are written, the place of the rest is named.
    write_file("cut.f64", std::string(96 * 2 + 40, '\0'));
    const Result cut = run("map -m QUIL_linear_AA cut.f64 -o cut.npy");
    EXPECT_EQ(cut.status, 1);
    EXPECT_NE(cut.err.find("cut.f64: byte offset 192: truncated record: 40 of 96 bytes"), std::string::npos);
    EXPECT_EQ(read_npy(read_file("cut.npy"), 24).size(), 2u);
}

// The record of a run names the hand, the versions, every slot's role and what became of the rows.
TEST(Records, MetaAndDescribeTellTheHandAndTheRun) {
    write_file("m.csv", "time_s,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n0,1,2,3,4,5,6,7,8,9,10,11,12\n"
                        "0.01,1,2,3,4,5,6,7,8,9,10,11,12\n");
    const Result r = run("map -m ruiyan_ry_h15 m.csv -o m.f64 --dropout hold --meta m.json");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("note: f64 output holds the 24 targets only; the time column 'time_s' is not written"),
              std::string::npos);
    const quil_linear::HandInfo hand(*quil_hand_find("RUIYAN_RY_H15"));
    const auto meta = nlohmann::json::parse(read_file("m.json"));
    EXPECT_EQ(meta["hand"]["name"], std::string(hand.name));
    EXPECT_EQ(meta["hand"]["version"], std::string(hand.version));
    EXPECT_EQ(meta["library_version"], quil_linear_version());
    ASSERT_EQ(meta["slot_roles"].size(), 24u);
    for (int i = 0; i < 24; ++i) EXPECT_EQ(meta["slot_roles"][i], std::string(hand.slot_roles[i]));
    // What the glove's columns must be, and what each slot is, travel with the targets.
    ASSERT_EQ(meta["readings"].size(), 12u);
    for (std::size_t r = 0; r < 12; ++r) {
        EXPECT_EQ(meta["readings"][r]["name"], std::string(quil_reading(r)->name));
        EXPECT_EQ(meta["readings"][r]["unit"], "degrees");
    }
    ASSERT_EQ(meta["slots"].size(), 24u);
    for (int i = 0; i < 24; ++i) {
        const quil_slot_info& f = *hand.slots[i];
        EXPECT_EQ(meta["slots"][i]["kind"], quil_slot_kind_name(f.kind));
        EXPECT_EQ(meta["slots"][i]["relation"], std::string(f.relation));
        EXPECT_EQ(meta["slots"][i]["range"][0].get<double>(), f.range_min);
    }
    EXPECT_EQ(meta["input"]["path"], "m.csv");
    EXPECT_EQ(meta["input"]["format"], "csv");
    EXPECT_EQ(meta["input"]["rows"], 2);
    EXPECT_EQ(meta["output"]["format"], "f64");
    EXPECT_EQ(meta["output"]["rows_written"], 2);
    EXPECT_EQ(meta["output"]["time_column_written"], false);
    EXPECT_EQ(meta["output"]["columns"].size(), 24u);
    EXPECT_EQ(meta["output"]["columns"][0], "out0");
    EXPECT_EQ(meta["rows_skipped"]["count"], 0);
    EXPECT_EQ(meta["dropout"], "hold");
    EXPECT_EQ(meta["time_column"], "time_s");
    EXPECT_EQ(meta["complete"], true);

    // --header roles: the roles in the heading, a repeated role with its slot number.
    const Result roles = run("map -m RUIYAN_RY_H15 m.csv --header roles");
    ASSERT_EQ(roles.status, 0) << roles.err;
    const std::vector<std::string> heading = split(roles.out.substr(0, roles.out.find('\n')), ',');
    ASSERT_EQ(heading.size(), 25u);
    for (int i = 0; i < 24; ++i) {
        const std::string role(hand.slot_roles[i]);
        EXPECT_TRUE(heading[i + 1] == role || heading[i + 1] == role + "_" + std::to_string(i)) << heading[i + 1];
    }

    for (const quil_linear::HandInfo& h : quil_linear::hands()) {
        SCOPED_TRACE(std::string(h.name));
        const Result text = run("describe " + std::string(h.name));
        ASSERT_EQ(text.status, 0);
        EXPECT_NE(text.out.find(std::string(h.version)), std::string::npos);
        EXPECT_NE(text.out.find(h.keeps_state ? "keeps state" : "stateless"), std::string::npos);
        EXPECT_NE(text.out.find("    23  " + std::string(h.slot_roles[23]) + " "), std::string::npos);
        for (int i = 0; i < 24; ++i) {
            if (h.slots[i]->kind == QUIL_SLOT_FOLLOWER) {
                EXPECT_NE(text.out.find(h.slots[i]->relation), std::string::npos);
            }
        }
        const Result json = run("describe --json " + std::string(h.name));
        ASSERT_EQ(json.status, 0);
        const auto d = nlohmann::json::parse(json.out);
        EXPECT_EQ(d["name"], std::string(h.name));
        EXPECT_EQ(d["buffer"], h.persistent_buffer ? "persistent" : "per-call");
        EXPECT_EQ(d["keeps_state"], h.keeps_state);
        ASSERT_EQ(d["slots"].size(), 24u);
        for (int i = 0; i < 24; ++i) {
            EXPECT_EQ(d["slots"][i]["role"], std::string(h.slot_roles[i]));
            EXPECT_EQ(d["slots"][i]["kind"], quil_slot_kind_name(h.slots[i]->kind));
            EXPECT_EQ(d["slots"][i]["sign"], h.slots[i]->sign);
        }
        for (std::size_t r = 0; r < 12; ++r)
            EXPECT_EQ(d["readings"][r]["used_by_this_hand"], quil_hand_uses_reading(quil_hand_find(h.name.data()), r) == 1);
    }
    // --help names the readings in their order, so a glove wired in another order is caught.
    const Result help = run("map --help");
    for (std::size_t r = 0; r < 12; ++r)
        EXPECT_NE(help.out.find("x" + std::to_string(r) + (r < 10 ? "  " : " ") + quil_reading(r)->name), std::string::npos);
}

// A run that fails, at its first row or later, leaves a --meta that says so, never the record
// of an earlier successful run beside files it did not write.
TEST(Records, AFailedRunLeavesNoRecordClaimingSuccess) {
    const std::string good = "t,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n0,1,2,3,4,5,6,7,8,9,10,11,12\n";
    std::vector<std::vector<double>> rows(20, std::vector<double>(12, 10.0));
    const std::string npy = npy_file(rows, 12, "<f8", false, 1);
    struct Case {
        const char* name;
        std::string input, args;
        int status;
        const char* message;
        std::uint64_t rows_written;
    } cases[] = {
        {"decimal commas", "x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11\n1,5;2;3;4;5;6;7;8;9;10;11;12\n", "", 1, "decimal commas", 0},
        {"truncated npy", npy.substr(0, npy.size() - 500), "--from npy", 1, "short data", 14},
        {"missing state", good, "--state-in no-such-state", 3, "cannot open 'no-such-state'", 0},
        {"empty", "", "", 1, "no samples", 0},
        {"foreign state", good, "--state-in st.bin", 4, "cannot continue from the state", 0},
        {"npy to a device", good, "--to npy -o /dev/null", 2, "cannot write npy to '/dev/null'", 0},
    };
    {
        quil_linear::Hand other("CHOHO_Hand");
        const std::vector<std::uint8_t> st = other.state();
        write_file("st.bin", std::string(st.begin(), st.end()));
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        write_file("fine.csv", good);
        ASSERT_EQ(run("map -m RUIYAN_RY_H15 fine.csv -o out.csv --meta out.json").status, 0);
        ASSERT_EQ(nlohmann::json::parse(read_file("out.json"))["complete"], true);
        write_file("in.dat", c.input);
        const std::string output = c.args.find(" -o ") == std::string::npos ? " -o out.csv" : "";
        const Result r = run("map -m RUIYAN_RY_H15 in.dat --meta out.json " + c.args + output);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        const auto meta = nlohmann::json::parse(read_file("out.json"));
        EXPECT_EQ(meta["complete"], false);
        EXPECT_EQ(meta["exit_status"], c.status);
        EXPECT_NE(meta["error"].get<std::string>().find(c.message), std::string::npos);
        EXPECT_EQ(meta["output"]["rows_written"], c.rows_written);
        EXPECT_EQ(meta["output"].value("written", true), c.rows_written > 0);
        EXPECT_EQ(meta["input"]["path"], "in.dat");
        EXPECT_EQ(read_file("in.dat"), c.input);
    }
}

// What --meta counts and how a time column's unit is found, labelled and recorded.
TEST(Records, DropoutsAndTimeUnitsAreCounted) {
    std::string ms = "\"Timestamp\",\"Thumb\",\"Index\",x2,x3,x4,x5,x6,x7,x8,x9,x10,x11,\n";
    for (int r = 0; r < 50; ++r) {
        ms += std::to_string(1715000000000LL + 10 * r) + (r % 7 == 3 ? ",nan" : ",20") + ",30,40,50,60,70,80,90,100,5,6,7,\n";
    }
    write_file("ms.csv", ms);
    struct Case {
        std::string args;
        const char* unit;
        bool noted;
        const char* axis;
    } cases[] = {
        {"", "ms", true, ">Timestamp (ms) from 1715000000000<"},
        {"--time-unit us", "us", false, ">Timestamp (us) from 1715000000000<"},
        {"--time-unit s -q", "s", false, ">Timestamp (s) from 1715000000000<"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run("map -m CHOHO_Hand ms.csv -o o.csv --meta o.json --plot o.svg " + c.args);
        ASSERT_EQ(r.status, 0) << r.err;
        const auto meta = nlohmann::json::parse(read_file("o.json"));
        EXPECT_EQ(meta.value("time_unit", ""), c.unit);
        EXPECT_EQ(meta.contains("time_unit_note"), c.noted);
        EXPECT_EQ(r.err.find("10 apart, so it is read as milliseconds") != std::string::npos, c.noted) << r.err;
        // Under the default policy the dropped readings reach the hand as they are, and are counted.
        EXPECT_EQ(meta["dropout"], "pass");
        EXPECT_EQ(meta.value("/nonfinite_readings/count"_json_pointer, -1), 7);
        EXPECT_EQ(meta.value("/nonfinite_readings/per_channel/0"_json_pointer, -1), 7);
        EXPECT_NE(read_file("o.svg").find(c.axis), std::string::npos);
    }
    // A name that states the unit is taken at its word, without a note.
    write_file("named.csv", "time_ms,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n0,1,2,3,4,5,6,7,8,9,10,11,12\n");
    const Result named = run("map -m CHOHO_Hand named.csv -o o.csv --meta o.json");
    EXPECT_EQ(nlohmann::json::parse(read_file("o.json")).value("time_unit", ""), "ms");
    EXPECT_EQ(named.err, "");
    EXPECT_EQ(run("map -m CHOHO_Hand named.csv --time-unit min").status, 2);
    // Readings in radians are converted as they are, with a note that the hands take degrees.
    std::string radians;
    for (int r = 0; r < 20; ++r) radians += "0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1.0 1.1 " + text(1.2 + r * 0.01) + "\n";
    write_file("radians.txt", radians);
    const Result rad = run("map -m CHOHO_Hand radians.txt -o o.csv");
    EXPECT_EQ(rad.status, 0);
    EXPECT_NE(rad.err.find("note: every reading of the first 20 samples lies within 2 pi of zero"), std::string::npos) << rad.err;
    EXPECT_EQ(run("map -m CHOHO_Hand ms.csv -o o.csv").err, "");
    // A device takes as many outputs as a run has.
    EXPECT_EQ(run("map -m CHOHO_Hand named.csv -o /dev/null --meta /dev/null").status, 0);
}

TEST(CommandLine, RefusesBeforeAnyWork) {
    const Result list = run("list");
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(split(list.out, '\n').size(), quil_hand_count() + 1);
    write_file("s.csv", "1,2,3,4,5,6,7,8,9,10,11,12\n");
    struct Case {
        std::string args;
        int status;
        const char* message;
        const char* env;
    } cases[] = {
        {"map --model robotera_xhand s.csv", 2, "unknown hand 'robotera_xhand'; closest: ROBOTERA_XHAND1", ""},
        {"describe nope", 2, "unknown hand 'nope'", ""},
        {"map s.csv", 2, "--model is required", ""},
        {"map -m QUIL_linear_AA --frobnicate s.csv", 2, "frobnicate", ""},
        {"map -m QUIL_linear_AA --format csv --to npy s.csv", 2, "excludes", ""},
        {"map -m QUIL_linear_AA --to f32 s.csv", 2, "f32", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --plot p.pdf", 2, "cannot draw 'p.pdf'", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --plot p.png", 2, "a .png plot needs rsvg-convert", "PATH=/nonexistent"},
        {"map -m QUIL_linear_AA s.csv -o s.csv", 2, "refusing to write 's.csv': it is the input", ""},
        // Two files of one run in one place: the later would replace the earlier.
        {"map -m QUIL_linear_AA s.csv -o x.out --meta x.out", 2, "the output and --meta both to 'x.out'", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --state-out ./x.out", 2, "the output and --state-out both", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --plot p.svg --meta ../" + g_dir.substr(g_dir.rfind('/') + 1) + "/p.svg", 2,
         "--meta and --plot both to", ""},
        {"map -m QUIL_linear_AA s.csv --meta -", 2, "the output and --meta both to '-'", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --state-in st --state-out st --meta st", 2, "--meta and --state-out both", ""},
        {"map -m QUIL_linear_AA s.csv -o st --state-in st", 2, "refusing to write the output to 'st': it is the --state-in file", ""},
        {"map -m QUIL_linear_AA s.csv --to npy -o /dev/null", 2, "cannot write npy to '/dev/null'", ""},
        {"map -m QUIL_linear_AA --from f64 --to npy -o /dev/null", 2, "cannot write npy to '/dev/null': its header states the row count", ""},
        {"map -m QUIL_linear_AA s.csv -o x.out --state-in nothing", 3, "cannot open 'nothing'", ""},
        {"map -m QUIL_linear_AA nothing.csv -o x.out", 3, "cannot open 'nothing.csv'", ""},
        {"", 2, "Usage", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        std::remove(path("x.out").c_str());
        const Result r = run(c.args, "", c.env);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_FALSE(exists("x.out"));
        EXPECT_FALSE(exists("p.svg"));
    }
    const Result help = run("map --help");
    EXPECT_EQ(help.status, 0);
    for (const char* part : {"--from", "--state-in", "f64 output cannot hold it", "Exit status", "5  converted"})
        EXPECT_NE(help.out.find(part), std::string::npos) << part;
}

// Faults the tool meets on a real machine, each with its exit status and message. (A short npy
// file and another hand's state are checked with the formats and the split sessions above.)
TEST(Faults, FullDeviceClosedPipeAndUnreadableInput) {
    const std::string session = std::string(QUIL_SOURCE_DIR) + "/data/sample_session.csv";
    struct Case {
        const char* what;
        std::string command;  // run in the scratch directory; its status is the tool's
        int status;
        const char* message;  // "" for none at all
    } cases[] = {
        {"full output device", "'" + g_tool + "' map -m RUIYAN_RY_H15 '" + session + "' -o /dev/full", 3,
         "cannot write '/dev/full': No space left on device"},
        {"reader gone", "'" + g_tool + "' map -m RUIYAN_RY_H15 '" + session + "' --meta closed.json | head -c 1 >/dev/null; "
                        "exit \\${PIPESTATUS[0]}", 6, ""},
        {"input is a directory", "'" + g_tool + "' map -m RUIYAN_RY_H15 . -o out.csv", 3, "cannot read '.': it is a directory"},
        {"input missing", "'" + g_tool + "' map -m RUIYAN_RY_H15 missing.csv -o out.csv", 3, "cannot open 'missing.csv'"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string cmd = "cd '" + g_dir + "' && bash -c \"" + c.command + "\" 2>stderr";
        const int raw = std::system(cmd.c_str());
        ASSERT_TRUE(WIFEXITED(raw));
        EXPECT_EQ(WEXITSTATUS(raw), c.status);
        const std::string err = read_file("stderr");
        if (*c.message) EXPECT_NE(err.find(c.message), std::string::npos) << err;
        else EXPECT_EQ(err, "");
    }
    const auto meta = nlohmann::json::parse(read_file("closed.json"));
    EXPECT_EQ(meta["exit_status"], 6);
}

TEST(Plot, DrawsReadingsAndOnePanelPerFingerGroup) {
    std::string input = "time_s,thumb,b,c,d,e,f,g,h,i,j,k,l\n";
    for (int r = 0; r < 100000; ++r) {
        const double t = r * 0.01;
        input += text(t) + "," + (r == 500 ? "nan" : text(40 + 40 * std::sin(t))) + ",1,2,3,4,5,6,7,8,9,10," +
                 text(50 + 50 * std::cos(t)) + "\n";
    }
    write_file("long.csv", input);
    const Result r = run("map -m RUIYAN_RY_H15 -o /dev/null --plot plot.svg", "long.csv");
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string svg = read_file("plot.svg");
    EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
    EXPECT_LT(svg.size(), 1500000u);  // decimated, however long the session
    const quil_linear::HandInfo hand(*quil_hand_find("RUIYAN_RY_H15"));
    for (const std::string& expected : {std::string("Glove readings"), std::string("Joint targets by finger"),
                                       std::string(">time_s<"), std::string("x0  thumb (1 NaN/inf gaps)"),
                                       std::string("100000 samples"), std::string("constant, not drawn:"),
                                       std::string(">0  ") + std::string(hand.slot_roles[0]) + "<"})
        EXPECT_NE(svg.find(expected), std::string::npos) << expected;
    if (!access("/usr/bin/rsvg-convert", X_OK)) {
        const Result png = run("map -m RUIYAN_RY_H15 -o /dev/null --plot plot.png", "long.csv");
        ASSERT_EQ(png.status, 0) << png.err;
        EXPECT_EQ(read_file("plot.png").substr(1, 3), "PNG");
    }
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s PATH/quil-retarget PATH/libquil_linear.so\n", argv[0]);
        return 2;
    }
    char* tool = realpath(argv[1], nullptr);
    char* library = realpath(argv[2], nullptr);
    if (!tool || !library) {
        std::fprintf(stderr, "cannot find %s or %s\n", argv[1], argv[2]);
        return 2;
    }
    g_tool = tool;
    g_library = library;
    std::free(tool);
    std::free(library);
    char dir[] = "/tmp/quil_retarget_test.XXXXXX";
    if (!mkdtemp(dir)) return 2;
    g_dir = dir;
    const int status = RUN_ALL_TESTS();
    std::system(("rm -rf '" + g_dir + "'").c_str());
    return status;
}
