// The parts of quil-retarget on their own: NumPy headers, the number notations that keep a line
// from being a heading, the finger groups of the plot, and number text that reads back exactly.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "npy.h"
#include "retarget_io.h"
#include "session_source.h"
#include "svg_plot.h"

namespace {

using namespace quil::retarget;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::uint64_t bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

TEST(NpyHeader, ReadsWhatNumpyWritesAndNamesWhatIsWrong) {
    struct Case {
        const char* dict;
        const char* problem;  // "" when the header is good
        std::size_t item;
        bool big, fortran;
        std::uint64_t rows, cols;
    } cases[] = {
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (3, 12), }", "", 8, false, false, 3, 12},
        {"{'descr': '>f4', 'fortran_order': True, 'shape': (0, 13)}", "", 4, true, true, 0, 13},
        {"{\"shape\": (7,12), \"descr\": \"=f8\", \"fortran_order\": False}", "", 8, false, false, 7, 12},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (3L, 12L), }   \n", "", 8, false, false, 3, 12},
        {"{'descr': '<i4', 'fortran_order': False, 'shape': (3, 12), }", "dtype '<i4' is not float64 or float32", 0, 0, 0, 0, 0},
        {"{'descr': '|f8', 'fortran_order': False, 'shape': (3, 12), }", "dtype '|f8'", 0, 0, 0, 0, 0},
        {"{'descr': [('a', '<f8')], 'fortran_order': False, 'shape': (3,), }", "not a simple type", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (36,), }", "shape (36,) is not two-dimensional", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (2, 3, 12), }", "not two-dimensional", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': 0, 'shape': (3, 12), }", "'fortran_order' is neither True nor False", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'shape': (3, 12), }", "lacks 'fortran_order'", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (3, 12), 'x': 1}", "unexpected key 'x'", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (-3, 12), }", "'shape' is not a tuple of integers", 0, 0, 0, 0, 0},
        {"('descr', '<f8')", "not a dictionary", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (3, 12), } x", "text after", 0, 0, 0, 0, 0},
        {"{'descr': '<f8', 'fortran_order': False, 'shape': (9999999999999999999, 12)}", "too large", 0, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.dict);
        npy::Header h;
        const std::string problem = npy::parse_dict(c.dict, h);
        if (*c.problem) {
            EXPECT_NE(problem.find(c.problem), std::string::npos) << problem;
            continue;
        }
        ASSERT_EQ(problem, "");
        EXPECT_EQ(h.item_size, c.item);
        EXPECT_EQ(h.big_endian, c.big);
        EXPECT_EQ(h.fortran_order, c.fortran);
        EXPECT_EQ(h.rows, c.rows);
        EXPECT_EQ(h.columns, c.cols);
    }

    struct Prelude {
        std::string bytes;
        const char* problem;
    } preludes[] = {
        {std::string("\x93NUMPY\x01\x00", 8), ""},
        {std::string("\x93NUMPY\x02\x00", 8), ""},
        {std::string("\x93NUMPY\x03\x00", 8), ""},
        {std::string("\x93NUMPY\x04\x00", 8), "format version 4.0"},
        {std::string("\x93NUMPY\x01\x01", 8), "format version 1.1"},
        {std::string("PK\x03\x04\x14\x00\x00\x00", 8), "not a NumPy file"},
        {std::string("\x93NUMPY", 6), "ends inside the header"},
    };
    for (const Prelude& p : preludes) {
        npy::Header h;
        const std::string problem =
            npy::parse_prelude(reinterpret_cast<const unsigned char*>(p.bytes.data()), p.bytes.size(), h);
        if (*p.problem) EXPECT_NE(problem.find(p.problem), std::string::npos) << problem;
        else EXPECT_EQ(problem, "");
    }
}

TEST(NpyHeader, WrittenHeaderHasOneSizeAndReadsBack) {
    for (const std::uint64_t rows : {std::uint64_t(0), std::uint64_t(2000), UINT64_MAX / 200}) {
        for (const std::uint64_t cols : {24, 25}) {
            const std::string h = npy::header_for(rows, cols);
            ASSERT_EQ(h.size(), npy::kHeaderSize);
            EXPECT_EQ(h.back(), '\n');
            npy::Header back;
            ASSERT_EQ(npy::parse_prelude(reinterpret_cast<const unsigned char*>(h.data()), h.size(), back), "");
            EXPECT_EQ(npy::header_length(reinterpret_cast<const unsigned char*>(h.data()) + 8, 1), npy::kHeaderSize - 10);
            ASSERT_EQ(npy::parse_dict(h.substr(10), back), "");
            EXPECT_EQ(back.rows, rows);
            EXPECT_EQ(back.columns, cols);
            EXPECT_EQ(back.descr, "<f8");
            EXPECT_FALSE(back.fortran_order);
        }
    }
}

// A first line is a heading only when none of its fields is a number in any notation.
TEST(CsvHeading, NumbersInAnyNotationAreNeverNames) {
    for (const char* number : {"0", "-3", "+2", "1.5", ".5", "-.5", "1,5", ",5", "1.234,5", "1e3", "2E-7", "0x1F",
                               "12%", "1 000", "nan", "NaN", "-nan", "inf", "-Infinity", "nan(0x1)", "5."})
        EXPECT_TRUE(looks_numeric(number)) << number;
    for (const char* name : {"", "x0", "time", "time_s", "thumb mcp", "t", "-", "+", "nanometre", "info", "e5",
                             ".x", "Index"})
        EXPECT_FALSE(looks_numeric(name)) << name;
}

TEST(PlotGroups, SlotsGoToTheirFingerWithFewLinesEach) {
    using Roles = std::array<std::string, 24>;
    std::array<bool, 24> none{};
    Roles five_fingers;
    const char* names[] = {"thumb_rotation", "thumb_proximal", "thumb_distal", "index_spread", "index_proximal",
                           "index_middle", "index_distal", "middle_proximal", "middle_middle", "ring_proximal",
                           "little_proximal", "gesture_code", "unused", "unused", "unused", "unused", "unused",
                           "unused", "unused", "unused", "unused", "unused", "unused", "terminator"};
    for (int i = 0; i < 24; ++i) five_fingers[i] = names[i];
    std::array<bool, 24> flat{};
    for (int i = 12; i < 24; ++i) flat[i] = true;

    auto panels = SessionPlot::target_panels(five_fingers, flat);
    ASSERT_EQ(panels.size(), 6u);
    const char* titles[] = {"Thumb", "Index", "Middle", "Ring", "Little", "Other"};
    for (std::size_t p = 0; p < panels.size(); ++p) EXPECT_EQ(panels[p].title, titles[p]);
    EXPECT_EQ(panels[1].drawn, (std::vector<int>{3, 4, 5, 6}));
    EXPECT_EQ(panels[5].drawn, (std::vector<int>{11}));
    EXPECT_EQ(panels[5].constant.size(), 12u);

    // Placeholder roles put every slot in one group: it is split evenly, constants in the last.
    Roles unknown;
    unknown.fill("unknown");
    panels = SessionPlot::target_panels(unknown, none);
    ASSERT_EQ(panels.size(), 4u);
    for (const auto& p : panels) EXPECT_EQ(p.drawn.size(), 6u);
    EXPECT_EQ(panels[3].title, "Other (4 of 4)");
    std::array<bool, 24> some = none;
    for (int i = 0; i < 10; ++i) some[i] = true;  // 14 moving: 4 + 5 + 5
    panels = SessionPlot::target_panels(unknown, some);
    ASSERT_EQ(panels.size(), 3u);
    EXPECT_EQ(panels[0].drawn.size(), 4u);
    EXPECT_EQ(panels[2].drawn.size(), 5u);
    EXPECT_EQ(panels[2].constant.size(), 10u);
    for (const auto& p : panels) EXPECT_LE(p.drawn.size(), SessionPlot::kMaxLines);
}

// The x-axis labels of every chart, grouped by the line they sit on, never run into each
// other, even in the narrow finger charts; a recorder's clock in milliseconds since 1970 is
// drawn from its first sample; a slot the hand holds at -0.0 is listed as 0.
TEST(Plot, TickLabelsKeepApartAndZeroHasNoSign) {
    struct Clock {
        double start, step;
        const char* axis;
    } clocks[] = {{1e6, 10.0, ">Timestamp (ms)<"}, {0, 0.01, ">Timestamp (ms)<"},
                  {1715000000000.0, 1000.0, ">Timestamp (ms) from 1715000000000<"}};
    for (const Clock& clock : clocks) {
        SCOPED_TRACE(clock.axis);
        SessionPlot plot;
        double in[12] = {}, out[24] = {};
        for (int r = 0; r < 3000; ++r) {
            for (int c = 0; c < 12; ++c) in[c] = 40 + 30 * std::sin(r * 0.01 + c);
            for (int s = 0; s < 24; ++s) out[s] = s == 5 ? -0.0 : in[s % 12] * (s + 1);
            plot.add(clock.start + clock.step * r, in, out);
        }
        SessionPlot::Labels labels;
        labels.time_name = "Timestamp";
        labels.time_unit = "ms";
        const char* groups[] = {"thumb", "index", "middle", "ring", "little", "wrist"};
        for (int s = 0; s < 24; ++s) labels.roles[s] = std::string(groups[s % 6]) + "_" + std::to_string(s);
        const std::string svg = plot.svg(labels);
        EXPECT_NE(svg.find(clock.axis), std::string::npos);
        EXPECT_NE(svg.find(">5  wrist_5 = 0<"), std::string::npos);
        EXPECT_EQ(svg.find("= -0"), std::string::npos);
        const std::regex tick("<text x=\"([0-9.]+)\" y=\"([0-9.]+)\" text-anchor=\"middle\">([-0-9.]+)</text>");
        std::map<std::string, std::vector<std::pair<double, std::size_t>>> rows;
        for (auto m = std::sregex_iterator(svg.begin(), svg.end(), tick); m != std::sregex_iterator(); ++m)
            rows[(*m)[2]].push_back({std::stod((*m)[1]), (*m)[3].length()});
        EXPECT_GE(rows.size(), 4u);
        for (auto& [y, labels_on_line] : rows) {
            std::sort(labels_on_line.begin(), labels_on_line.end());
            EXPECT_GE(labels_on_line.size(), 2u) << "at y " << y;
            for (std::size_t i = 1; i < labels_on_line.size(); ++i) {
                const double room = (labels_on_line[i - 1].second + labels_on_line[i].second) / 2.0 * 6.5;
                EXPECT_GE(labels_on_line[i].first - labels_on_line[i - 1].first, room) << "at y " << y;
            }
        }
    }
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
        for (double scale : {1.0, 10.0, 100.0, 1e3, 1e6, 1e7}) values.push_back(std::round(a * scale) / scale);
        values.push_back(std::round(a * 10.0) / 10.0 * 1.2000000476837158);
        values.push_back(std::round(a * 1e5) * 1e4);
    }
    char buf[kMaxNumberText], ref[kMaxNumberText];
    for (double v : values) {
        const std::string s(buf, format_number(buf, v));
        ASSERT_EQ(s, std::string(ref, std::to_chars(ref, ref + sizeof ref, v).ptr));
        double back = 1.0;
        ASSERT_TRUE(parse_number(s, back)) << s;
        ASSERT_EQ(bits(back), bits(v)) << s;
    }
    for (const double nan : {kNaN, -kNaN}) {
        const std::string s(buf, format_number(buf, nan));
        double back = 0.0;
        ASSERT_TRUE(parse_number(s, back));
        EXPECT_TRUE(std::isnan(back));
        EXPECT_EQ(std::signbit(back), std::signbit(nan)) << s;
    }
    struct {
        const char* in;
        double value;
    } read[] = {{"+2", 2.0}, {"1e400", kInf}, {"-1e400", -kInf}, {"1e-400", 0.0}, {"INF", kInf}, {"-Infinity", -kInf}};
    for (const auto& r : read) {
        double v = 0;
        EXPECT_TRUE(parse_number(r.in, v)) << r.in;
        EXPECT_EQ(bits(v), bits(r.value)) << r.in;
    }
    for (const char* bad : {"", "+", "+-1", "1e", "0x10", "1,5", " 1", "1 ", "--1", "nanx"}) {
        double v = 0;
        EXPECT_FALSE(parse_number(bad, v)) << bad;
    }
}

}  // namespace
