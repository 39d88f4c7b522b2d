// The harness the tool's tests share. quil-retarget runs as users run it: as a separate process on
// files and pipes in a scratch directory, and what it writes is checked against the hand API
// called in the test's process and against the shared library's C exports.
//
//   quil_retarget_test PATH/quil-retarget PATH/libquil_linear.so
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace retarget_test {

// The tool and the library under test, and the scratch directory the tool runs in.
extern std::string g_tool, g_library, g_dir;

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

using Sample = std::array<double, 12>;

std::uint64_t bits(double v);

// Files in the scratch directory, by name.
std::string path(const std::string& name);
void write_file(const std::string& name, const std::string& content);
std::string read_file(const std::string& name);
bool exists(const std::string& name);

struct Result {
    int status;
    std::string out, err;
};

// Runs the tool with `args` (shell words) in the scratch directory, standard input from the
// file `in` there (or none), standard output to the file "stdout"; `env` goes before the tool.
Result run(const std::string& args, const std::string& in = "", const std::string& env = "");
// The same with standard input from a pipe, which cannot be read twice or measured beforehand.
Result run_piped(const std::string& args, const std::string& in);

std::vector<std::string> split(const std::string& s, char sep);
// An input value as a recorder might print it, exactly.
std::string text(double v);

// A few thousand samples meant to reach every branch a hand has (see the definition).
std::vector<Sample> varied_session();
// The time of row `r` of the sessions written from varied_session(): a recorder's clock.
double time_of(std::size_t r);

// An .npy file as NumPy writes it, of any version, type, byte order and layout.
std::string npy_file(const std::vector<std::vector<double>>& rows, std::size_t cols, const std::string& descr,
                     bool fortran, int version);
// The values of an npy output: checks its header and returns its rows.
std::vector<std::vector<double>> read_npy(const std::string& bytes, std::size_t cols);
// The rows of a CSV output, and a value read back with the C library's reader, not the tool's.
std::vector<std::vector<std::string>> read_csv(const std::string& text);
double number(const std::string& s);

}  // namespace retarget_test
