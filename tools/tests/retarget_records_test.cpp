// What quil-retarget says about the hands and about its runs: list and describe, the --meta
// record of a run that succeeded or failed, the time unit it found, and the plot.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "quil_linear/hand.hpp"
#include "retarget_test_support.h"

namespace {

using namespace retarget_test;

// Every hand described in text and JSON, as the catalogue and the slot facts have it; the hands
// listed; --help names the readings in their order, so a glove wired in another order is caught.
TEST(Catalogue, ListDescribeAndHelpTellEveryHand) {
    const Result list = run("list");
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(split(list.out, '\n').size(), quil_hand_count() + 1);
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
    const Result help = run("map --help");
    for (std::size_t r = 0; r < 12; ++r)
        EXPECT_NE(help.out.find("x" + std::to_string(r) + (r < 10 ? "  " : " ") + quil_reading(r)->name), std::string::npos);
}

// The record of a run names the hand, the versions, every slot's role and what became of the
// rows; --header roles heads the columns with the slot roles.
TEST(Records, MetaAndHeadingTellTheHandAndTheRun) {
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
    write_file("named.csv", "time_ms,x0,x1,x2,x3,x4,x5,x6,x7,x8,x9,x10,x11\n0,1,2,3,4,5,6,7,8,9,10,11,12\n");
    std::string radians;
    for (int r = 0; r < 20; ++r) radians += "0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1.0 1.1 " + text(1.2 + r * 0.01) + "\n";
    write_file("radians.txt", radians);
    // What the tool says of a run beside its rows: a note only where it decided something the
    // user did not say.
    struct Said {
        const char* what;
        const char* args;
        int status;
        const char* err;   // the note expected on standard error; "" for silence
        const char* unit;  // the time unit o.json records; "" when the run writes no o.json
    } runs[] = {
        {"a name that states the unit is taken at its word", "named.csv -o o.csv --meta o.json", 0, "", "ms"},
        {"a unit the tool does not know", "named.csv --time-unit min", 2, "min", ""},
        {"readings in radians are converted as they are, with a note that the hands take degrees",
         "radians.txt -o o.csv", 0, "note: every reading of the first 20 samples lies within 2 pi of zero", ""},
        {"without a plot or a record the unit is not used, so no guess is announced", "ms.csv -o o.csv", 0, "", ""},
        {"a device takes as many outputs as a run has", "named.csv -o /dev/null --meta /dev/null", 0, "", ""},
    };
    for (const Said& c : runs) {
        SCOPED_TRACE(c.what);
        const Result r = run(std::string("map -m CHOHO_Hand ") + c.args);
        EXPECT_EQ(r.status, c.status) << r.err;
        if (*c.err) {
            EXPECT_NE(r.err.find(c.err), std::string::npos) << r.err;
        } else {
            EXPECT_EQ(r.err, "");
        }
        if (*c.unit) {
            EXPECT_EQ(nlohmann::json::parse(read_file("o.json")).value("time_unit", ""), c.unit);
        }
    }
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
