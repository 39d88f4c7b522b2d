// What quil-retarget map makes of its input: every CSV dialect read alike, each malformed input
// stopped at its place, bad rows skipped on request, empty and foreign inputs refused.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>
#include "retarget_test_support.h"

namespace {

using namespace retarget_test;

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

}  // namespace
