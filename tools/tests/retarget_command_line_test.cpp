// quil-retarget refusing what it cannot do before any work (bad command lines, files of one run
// in one place, npy to a pipe), and the faults it meets on a real machine.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "quil_linear/hand.h"
#include "retarget_test_support.h"

namespace {

using namespace retarget_test;

TEST(CommandLine, RefusesBeforeAnyWork) {
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
// file and another hand's state are checked with the formats and the split sessions.)
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

}  // namespace
