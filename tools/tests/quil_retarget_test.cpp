// quil-retarget run as users run it: as a separate process on files and pipes. The targets it
// writes are checked against the shared library's C exports, loaded with dlopen and called in
// this process, which calls each export with one sequence only, as a fresh host would.
//
//   quil_retarget_test PATH/quil-retarget PATH/libquil_linear.so
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "retarget_io.h"

namespace {

std::string g_tool, g_library, g_dir;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::uint64_t bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

std::string path(const std::string& name) { return g_dir + "/" + name; }

void write_file(const std::string& name, const std::string& content) {
    std::ofstream(path(name), std::ios::binary) << content;
}

std::string read_file(const std::string& full_path) {
    std::ifstream f(full_path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

struct Result {
    int status;
    std::string out, err;
};

// Runs the tool with `args` (shell words) in the scratch directory, standard input from the
// file `in` there (or none).
Result run(const std::string& args, const std::string& in = "") {
    const std::string cmd = "cd '" + g_dir + "' && '" + g_tool + "' " + args + " <" +
                            (in.empty() ? "/dev/null" : "'" + in + "'") + " >stdout 2>stderr";
    const int raw = std::system(cmd.c_str());
    return Result{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, read_file(path("stdout")), read_file(path("stderr"))};
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
std::vector<std::array<double, 12>> varied_session() {
    std::mt19937_64 rng(20240517);
    std::uniform_real_distribution<double> pose(-5.0, 110.0), wide(-40.0, 140.0);
    const double special[] = {kNaN, -kNaN, kInf, -kInf, 0.0, -0.0, 120.0, -20.0, 120.0000001, -20.0000001, 1e-310, 45.05};
    std::vector<std::array<double, 12>> samples;
    std::array<double, 12> from{}, to{};
    for (int move = 0; move < 30; ++move) {
        for (double& v : to) v = pose(rng);
        for (int k = 0; k < 80; ++k) {
            std::array<double, 12> s;
            const double w = 0.5 - 0.5 * std::cos(M_PI * k / 79.0);
            for (int i = 0; i < 12; ++i) s[i] = from[i] + (to[i] - from[i]) * w;
            samples.push_back(s);
        }
        from = to;
    }
    for (int k = 0; k < 1000; ++k) {
        std::array<double, 12> s;
        for (double& v : s) v = wide(rng);
        if (k % 3 == 0) s[rng() % 12] = special[rng() % 12];
        samples.push_back(s);
    }
    return samples;
}

using ExportFn = double* (*)(double, double, double, double, double, double, double, double, double, double,
                             double, double);

TEST(QuilRetarget, EveryModelGivesTheExportsTargetsBitForBitInCsvAndF64) {
    void* lib = dlopen(g_library.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    auto free_memory = reinterpret_cast<void (*)(double*)>(dlsym(lib, "FreeMemory"));
    ASSERT_NE(free_memory, nullptr);

    const auto samples = varied_session();
    std::string csv = "t,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n";
    std::string f64;
    for (std::size_t r = 0; r < samples.size(); ++r) {
        csv += "r" + std::to_string(r);
        for (double v : samples[r]) csv += "," + text(v);
        csv += "\n";
        f64.append(reinterpret_cast<const char*>(samples[r].data()), sizeof(double) * 12);
    }
    write_file("session.csv", csv);
    write_file("session.f64", f64);

    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        const quil_hand_info& m = *quil_hand_at(h);
        SCOPED_TRACE(m.name);
        auto fn = reinterpret_cast<ExportFn>(dlsym(lib, (std::string(m.name) + "_GetDataValue").c_str()));
        ASSERT_NE(fn, nullptr);
        std::vector<double> expected;
        for (const auto& s : samples) {
            double* p = fn(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10], s[11]);
            expected.insert(expected.end(), p, p + 24);
            if (!m.persistent_buffer) free_memory(p);
        }

        const Result c = run(std::string("map --model ") + m.name + " session.csv -o out.csv");
        ASSERT_EQ(c.status, 0) << c.err;
        EXPECT_EQ(c.err, "");
        const std::vector<std::string> lines = split(read_file(path("out.csv")), '\n');
        ASSERT_EQ(lines.size(), samples.size() + 1);
        EXPECT_EQ(lines[0].substr(0, 7), "t,out0,");
        int mismatches = 0;
        for (std::size_t r = 0; r < samples.size(); ++r) {
            const std::vector<std::string> f = split(lines[r + 1], ',');
            ASSERT_EQ(f.size(), 25u) << lines[r + 1];
            ASSERT_EQ(f[0], "r" + std::to_string(r));
            for (int i = 0; i < 24; ++i) {
                char* end = nullptr;
                const double got = std::strtod(f[i + 1].c_str(), &end);  // glibc's reader, not ours
                EXPECT_EQ(*end, '\0') << f[i + 1];
                if (bits(got) != bits(expected[r * 24 + i]) && ++mismatches <= 5)
                    ADD_FAILURE() << "row " << r << " out" << i << ": tool " << f[i + 1] << ", export "
                                  << text(expected[r * 24 + i]);
            }
        }
        EXPECT_EQ(mismatches, 0);

        const Result b = run(std::string("map --format f64 -m ") + m.name, "session.f64");
        ASSERT_EQ(b.status, 0) << b.err;
        ASSERT_EQ(b.out.size(), expected.size() * sizeof(double));
        EXPECT_EQ(std::memcmp(b.out.data(), expected.data(), b.out.size()), 0);
    }
}

TEST(QuilRetarget, ReadsEveryCsvDialectTheSameWay) {
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
    };
    for (const Dialect& d : dialects) {
        SCOPED_TRACE(d.name);
        write_file("dialect.csv", d.input);
        const Result r = run("map -m quil_linear_aa", "dialect.csv");  // names match ignoring case
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out.substr(r.out.find('\n') + 1), targets);
    }

    // A time column is copied as it stands, whatever it holds, with its heading.
    write_file("timed.csv", "when;x0;x1;x2;x3;x4;x5;x6;x7;x8;x9;x10;x11\n"
                            "0.010;0.5;1;2;3;4;5;6;7;8;9;10;11\n"
                            "2024-05-01T10:00:00.020Z;-1;2;30;45;60;75;90;105;120;-20;0;12\n");
    const Result timed = run("map -m QUIL_linear_AA", "timed.csv");
    ASSERT_EQ(timed.status, 0) << timed.err;
    const std::vector<std::string> rows = split(timed.out, '\n');
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].substr(0, 10), "when,out0,");
    const std::vector<std::string> expected = split(targets, '\n');
    EXPECT_EQ(rows[1], "0.010," + expected[0]);
    EXPECT_EQ(rows[2], "2024-05-01T10:00:00.020Z," + expected[1]);
}

TEST(QuilRetarget, BadInputStopsWithPlaceAfterWritingTheRowsBefore) {
    const std::string good = "0.00,1,2,3,4,5,6,7,8,9,10,11,12\n";
    std::string too_long = good + "0.01," + std::string(2 << 20, '1') + "\n";
    struct Case {
        const char* name;
        std::string input;      // written to bad.<format>
        const char* args;       // after "map -m QUIL_linear_AA"
        int status;
        const char* message;    // expected in standard error
        std::size_t rows;       // rows written before the stop
    } cases[] = {
        {"short row", good + "0.01,1,2,3,4,5,6,7,8,9,10,11\n", "bad.csv", 1,
         "bad.csv:2:29: short row: expected 13 fields (time, x0..x11), found 12", 1},
        {"long row", good + good + "0.02,1,2,3,4,5,6,7,8,9,10,11,12,13\n", "bad.csv", 1,
         "bad.csv:3:33: long row: expected 13 fields (time, x0..x11), found 14", 2},
        {"letter in a number", good + "0.01,1,2,3,4,5,6,7,8,9,1O,11,12\n", "bad.csv", 1,
         "bad.csv:2:24: field 11 (x9): malformed number \"1O\"", 1},
        {"empty field", good + "0.01,1,2,3,4,5,6,7,8,9,10,,12\n", "bad.csv", 1,
         "bad.csv:2:27: field 12 (x10): empty field", 1},
        {"line too long", too_long, "bad.csv", 1, "bad.csv:2:1: line longer than", 1},
        {"heading of the wrong width", "t,x0,x1\n" + good, "bad.csv", 1, "bad.csv:1:1: the heading line has 3 fields", 0},
        {"truncated binary record", std::string(96 * 2 + 40, '\0'), "--format f64 bad.csv", 1,
         "bad.csv: byte offset 192: truncated record: 40 of 96 bytes", 2},
        {"missing file", "", "no-such-file.csv", 3, "cannot open 'no-such-file.csv': No such file or directory", 0},
        {"unknown format", "", "--format f32 bad.csv", 2, "unknown format 'f32'", 0},
        {"output over the input", good, "bad.csv -o bad.csv", 2, "refusing to write 'bad.csv': it is the input", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        write_file("bad.csv", c.input);
        std::remove(path("out").c_str());
        const Result r = run(std::string("map -m QUIL_linear_AA -o out ") + c.args);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        const std::string out = read_file(path("out"));
        const bool binary = std::string(c.args).find("f64") != std::string::npos;
        if (binary) {
            EXPECT_EQ(out.size(), c.rows * 24 * sizeof(double));
        } else if (c.status == 1) {
            EXPECT_EQ(split(out, '\n').size(), c.rows + 1) << out;  // heading + rows
        }
        EXPECT_EQ(read_file(path("bad.csv")), c.input);  // the input is never touched
    }
}

TEST(QuilRetarget, SkipBadSkipsCountsAndListsTheRows) {
    std::string input = "t,a,b,c,d,e,f,g,h,i,j,k,l\n";
    for (int r = 0; r < 30; ++r) {
        std::string row = std::to_string(r) + ",1,2,3,4,5,6,7,8,9,10,11,12";
        if (r % 10 == 3) row = std::to_string(r) + ",1,2,x,4,5,6,7,8,9,10,11,12";  // lines 5, 15, 25
        if (r == 8) row += ",13";                                                  // line 10
        input += row + "\n";
    }
    write_file("skip.csv", input);
    const Result r = run("map -m QUIL_linear_AA --skip-bad", "skip.csv");
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("skipped 4 bad rows of <stdin>, at lines 5, 10, 15, 25"), std::string::npos) << r.err;
    const std::vector<std::string> rows = split(r.out, '\n');
    ASSERT_EQ(rows.size(), 27u);
    std::vector<std::string> kept;  // the others, in their order
    for (std::size_t i = 1; i < rows.size(); ++i) kept.push_back(rows[i].substr(0, rows[i].find(',')));
    EXPECT_EQ(kept.front(), "0");
    EXPECT_EQ(kept[3], "4");
    EXPECT_EQ(kept.back(), "29");

    write_file("short.f64", std::string(96 + 8, '\0'));
    const Result b = run("map -m QUIL_linear_AA --format f64 --skip-bad", "short.f64");
    EXPECT_EQ(b.status, 0);
    EXPECT_EQ(b.out.size(), 192u);
    EXPECT_NE(b.err.find("skipped 1 bad row of <stdin>, at byte offset 96"), std::string::npos) << b.err;
}

TEST(QuilRetarget, EmptyInputGivesOnlyTheHeading) {
    write_file("empty", "");
    const Result csv = run("map -m QUIL_linear_AA", "empty");
    EXPECT_EQ(csv.status, 0);
    EXPECT_EQ(csv.out.rfind("out0,out1,", 0), 0u);
    EXPECT_EQ(std::count(csv.out.begin(), csv.out.end(), '\n'), 1);
    write_file("heading-only", "time,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n");
    EXPECT_EQ(run("map -m QUIL_linear_AA", "heading-only").out.rfind("time,out0,", 0), 0u);
    const Result f64 = run("map -m QUIL_linear_AA --format f64", "empty");
    EXPECT_EQ(f64.status, 0);
    EXPECT_EQ(f64.out, "");
}

TEST(QuilRetarget, CommandLineNamesModelsAndRefusesMistakes) {
    const Result list = run("list");
    EXPECT_EQ(list.status, 0);
    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        const quil_hand_info& m = *quil_hand_at(h);
        std::string line;
        for (const std::string& l : split(list.out, '\n'))
            if (l.rfind(std::string(m.name) + " ", 0) == 0) line = l;
        ASSERT_FALSE(line.empty()) << m.name;
        EXPECT_NE(line.find(m.version), std::string::npos) << line;
        EXPECT_NE(line.find(m.persistent_buffer ? "persistent" : "per-call"), std::string::npos) << line;
        EXPECT_NE(line.find(m.keeps_state ? "keeps state" : "stateless"), std::string::npos) << line;
    }

    const Result unknown = run("map --model robotera_xhand");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown model 'robotera_xhand'; closest: ROBOTERA_XHAND1"), std::string::npos)
        << unknown.err;
    EXPECT_EQ(run("map").status, 2);
    EXPECT_EQ(run("map -m QUIL_linear_AA --frobnicate").status, 2);
    EXPECT_EQ(run("map -m QUIL_linear_AA a.csv b.csv").status, 2);
    EXPECT_EQ(run("").status, 2);
    const Result help = run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("quil-retarget map --model NAME"), std::string::npos);
}

TEST(QuilRetarget, PlotIsABoundedSvgOfBothPanels) {
    std::string input = "time_s,thumb,b,c,d,e,f,g,h,i,j,k,l\n";
    for (int r = 0; r < 100000; ++r) {
        const double t = r * 0.01;
        input += text(t) + "," + (r == 500 ? "nan" : text(40 + 40 * std::sin(t))) + ",1,2,3,4,5,6,7,8,9,10,11\n";
    }
    write_file("long.csv", input);
    const Result r = run("map -m QUIL_linear_AA -o /dev/null --plot plot.svg", "long.csv");
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string svg = read_file(path("plot.svg"));
    EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
    EXPECT_LT(svg.size(), 1000000u);  // decimated, however long the session
    for (const char* expected : {"Glove readings", "Joint targets", "QUIL_linear_AA", ">time_s<",
                                 ">thumb (1 NaN/inf not drawn)<", "100000 samples", "constant:"})
        EXPECT_NE(svg.find(expected), std::string::npos) << expected;
}

// The writer's quick path for short decimals must give exactly the library's shortest text,
// and every text must read back to the same bits.
TEST(NumberText, ShortestTextReadsBackToTheSameDouble) {
    std::vector<double> values = {0.0, -0.0, kInf, -kInf, 0.1, -12.3, 1e300, 5e-324, 1e-4, 1e-7, 1e15, 1e16,
                                  123456789.123456, 1125899906.842624, 1125899906.842623,
                                  std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()};
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> angle(-200.0, 200.0);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t b = rng();
        double v;
        std::memcpy(&v, &b, sizeof v);
        if (!std::isnan(v)) values.push_back(v);
        const double a = angle(rng);
        for (double scale : {1.0, 10.0, 100.0, 1e3, 1e6, 1e7})
            values.push_back(std::round(a * scale) / scale);
        values.push_back(std::round(a * 10.0) / 10.0 * 1.2000000476837158);
        values.push_back(std::round(a * 1e5) * 1e4);
    }
    char buf[quil::retarget::kMaxNumberText], ref[quil::retarget::kMaxNumberText];
    for (double v : values) {
        const std::string s(buf, quil::retarget::format_number(buf, v));
        ASSERT_EQ(s, std::string(ref, std::to_chars(ref, ref + sizeof ref, v).ptr));
        double back = 1.0;
        ASSERT_TRUE(quil::retarget::parse_number(s, back)) << s;
        ASSERT_EQ(bits(back), bits(v)) << s;
    }
    for (const double nan : {kNaN, -kNaN}) {
        const std::string s(buf, quil::retarget::format_number(buf, nan));
        double back = 0.0;
        ASSERT_TRUE(quil::retarget::parse_number(s, back));
        EXPECT_TRUE(std::isnan(back));
        EXPECT_EQ(std::signbit(back), std::signbit(nan)) << s;
    }
    // What recorders write beyond the shortest form.
    struct {
        const char* in;
        double value;
    } read[] = {{"+2", 2.0}, {"1e400", kInf}, {"-1e400", -kInf}, {"1e-400", 0.0}, {"INF", kInf}, {"-Infinity", -kInf}};
    for (const auto& r : read) {
        double v = 0;
        EXPECT_TRUE(quil::retarget::parse_number(r.in, v)) << r.in;
        EXPECT_EQ(bits(v), bits(r.value)) << r.in;
    }
    for (const char* bad : {"", "+", "+-1", "1e", "0x10", "1,5", " 1", "1 ", "--1", "nanx"}) {
        double v = 0;
        EXPECT_FALSE(quil::retarget::parse_number(bad, v)) << bad;
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
