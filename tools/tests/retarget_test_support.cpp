// The harness the tool's tests share: the tool and the library under test, a scratch directory,
// the tool run as a separate process there, and the files the tests write and read back.
#include "retarget_test_support.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>

namespace retarget_test {

std::string g_tool, g_library, g_dir;

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

// Runs the tool with `args` (shell words) in the scratch directory, standard input from the
// file `in` there (or none), standard output to the file "stdout".
Result run(const std::string& args, const std::string& in, const std::string& env) {
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


}  // namespace retarget_test

using namespace retarget_test;

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
