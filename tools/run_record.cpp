#include "run_record.h"

#include <cstdlib>
#include <cstring>
#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

namespace quil::retarget {

namespace {

// Keys in the order a reader looks for them.
using json = nlohmann::ordered_json;

json nullable(const std::string& s) { return s.empty() ? json(nullptr) : json(s); }

json hand_json(const quil_hand_info& h) {
    return json{{"name", h.name},
                {"version", h.version},
                {"keeps_state", h.keeps_state != 0},
                {"buffer", h.persistent_buffer ? "persistent" : "per-call"}};
}

json number_or_null(double v) { return std::isnan(v) ? json(nullptr) : json(v); }

// Everything the library says of one slot.
json slot_json(const quil_hand_info& h, int i) {
    const quil_slot_info& f = *quil_hand_slot(&h, static_cast<std::size_t>(i));
    json follows = json::array(), moved_by = json::array();
    for (int src : f.follows)
        if (src >= 0) follows.push_back(src);
    for (int r = 0; r < QUIL_READINGS; ++r)
        if ((f.moved_by >> r) & 1u) moved_by.push_back("x" + std::to_string(r));
    return json{{"slot", i},
                {"role", f.role},
                {"kind", quil_slot_kind_name(f.kind)},
                {"follows", follows},
                {"relation", f.relation},
                {"departs", f.departs},
                {"value", number_or_null(f.value)},
                {"sign", f.sign},
                {"range", {number_or_null(f.range_min), number_or_null(f.range_max)}},
                {"moved_by", moved_by},
                {"negative_zero", f.negative_zero != 0},
                {"meaning", f.meaning}};
}

json slots_json(const quil_hand_info& h) {
    json slots = json::array();
    for (int i = 0; i < QUIL_TARGETS; ++i) slots.push_back(slot_json(h, i));
    return slots;
}

// The twelve readings, and whether this hand uses each.
json readings_json(const quil_hand_info& h) {
    json all = json::array();
    for (std::size_t r = 0; r < QUIL_READINGS; ++r) {
        const quil_reading_info& i = *quil_reading(r);
        all.push_back({{"column", "x" + std::to_string(r)},
                       {"name", i.name},
                       {"unit", i.unit},
                       {"used_by_this_hand", quil_hand_uses_reading(&h, r) != 0},
                       {"meaning", i.meaning}});
    }
    return all;
}

// A number in the shortest text that reads back to it, as JSON writes it ("-90.0", "-0.0").
std::string shortest(double v) { return json(v).dump(); }

// Names in a recording may be in any encoding; bytes that are not UTF-8 are replaced.
std::string dump(const json& j) { return j.dump(2, ' ', false, json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string meta_json(const RunRecord& r) {
    json places = json::array();
    const SkippedRows& skipped = *r.skipped;
    for (std::size_t i = 0; i < skipped.places.size(); ++i) {
        json p{{r.info->places_are_lines ? "line" : "byte_offset", skipped.places[i]}};
        if (i < skipped.messages.size()) p["error"] = skipped.messages[i];
        places.push_back(p);
    }
    json j;
    j["tool"] = {{"name", "quil-retarget"}, {"version", QUIL_LINEAR_VERSION_STRING}};
    j["library_version"] = quil_linear_version();
    j["hand"] = hand_json(*r.hand);
    j["slot_roles"] = r.hand->slot_roles;
    j["readings"] = readings_json(*r.hand);
    j["slots"] = slots_json(*r.hand);
    j["input"] = {{"path", r.input}, {"format", format_name(r.from)}, {"rows", r.rows_read}};
    j["output"] = {{"path", r.output},
                   {"format", format_name(r.to)},
                   {"rows_written", r.rows_written},
                   {"columns", r.columns},
                   {"time_column_written", r.time_written}};
    j["output"]["written"] = r.output_written;
    j["rows_skipped"] = {{"count", skipped.places.size()}, {"places", places}};
    j["dropout"] = r.dropout;
    // Dropped glove channels, whatever the dropout policy made of them.
    std::uint64_t nonfinite = 0;
    for (std::uint64_t n : r.nonfinite) nonfinite += n;
    j["nonfinite_readings"] = {{"count", nonfinite}, {"per_channel", r.nonfinite}};
    j["time_column"] = r.info->has_time ? json(r.info->time_name) : json(nullptr);
    j["time_unit"] = r.info->has_time && !r.time_unit.empty() ? json(r.time_unit) : json(nullptr);
    if (!r.time_unit_how.empty()) j["time_unit_note"] = r.time_unit_how;
    j["state_in"] = nullable(r.state_in);
    j["state_out"] = nullable(r.state_out);
    j["plot"] = nullable(r.plot);
    if (!r.profile.empty()) j["profile"] = {{"path", r.profile}, {"outputs", r.outputs}};
    j["complete"] = r.exit_status == 0 || r.exit_status == 5;
    j["exit_status"] = r.exit_status;
    j["error"] = nullable(r.error);
    return dump(j);
}

std::string describe_json(const quil_hand_info& h) {
    json j = hand_json(h);
    j["readings"] = readings_json(h);
    j["slots"] = slots_json(h);
    return dump(j);
}

std::string readings_text() {
    std::string s = "Readings: each sample is twelve glove readings in degrees (0 = open, flat hand), in this order:\n";
    for (std::size_t r = 0; r < QUIL_READINGS; ++r) {
        const quil_reading_info& i = *quil_reading(r);
        char line[256];
        std::snprintf(line, sizeof line, "  x%-2zu %-14s used by %2zu of %zu hands: %s\n", r, i.name, i.hands,
                      quil_hand_count(), i.meaning);
        s += line;
    }
    s += "A glove whose channels come in another order must be reordered first: the hands cannot tell.\n";
    return s;
}

std::string describe_text(const quil_hand_info& h) {
    std::string s = std::string(h.name) + "\n";
    s += std::string("  version  ") + h.version + "\n";
    s += std::string("  buffer   ") +
         (h.persistent_buffer ? "persistent (the C export reuses one buffer; never free it)"
                              : "per-call (the C export returns a buffer to free with FreeMemory)") + "\n";
    s += std::string("  state    ") +
         (h.keeps_state ? "keeps state between samples (pinch latches, thumb references)" : "stateless") + "\n";
    s += "  slot  role              kind          sign  range                moved by              relation or value\n";
    for (int i = 0; i < 24; ++i) {
        const quil_slot_info& f = *quil_hand_slot(&h, static_cast<std::size_t>(i));
        std::string moved;
        for (int r = 0; r < QUIL_READINGS; ++r)
            if ((f.moved_by >> r) & 1u) moved += (moved.empty() ? "x" : " x") + std::to_string(r);
        std::string what;
        if (f.kind == QUIL_SLOT_FOLLOWER)
            what = std::string(f.relation) + (f.departs[0] ? std::string(" (not ") + f.departs + ")" : "");
        else if (!std::isnan(f.value))
            what = shortest(f.value);
        const std::string range = "[" + shortest(f.range_min) + ", " + shortest(f.range_max) + "]";
        char line[512];
        std::snprintf(line, sizeof line, "  %4d  %-16s  %-12s  %4d  %-19s  %-20s  %s\n", i, f.role,
                      quil_slot_kind_name(f.kind), f.sign, range.c_str(), moved.c_str(), what.c_str());
        s += line;
    }
    s += "  sign: -1 the slot grows more negative as its finger bends (or its spread opens), +1 more positive.\n";
    s += "  range: over the library's sweep of readings (open to fist per finger, pinches, random samples).\n";
    s += "  readings, in degrees, in this order:";
    for (std::size_t r = 0; r < QUIL_READINGS; ++r)
        s += std::string(r ? "," : "") + " x" + std::to_string(r) + " " + quil_reading(r)->name;
    s += "\n";
    s += "  readings this hand does not use:";
    bool any = false;
    for (std::size_t r = 0; r < QUIL_READINGS; ++r)
        if (!quil_hand_uses_reading(&h, r)) {
            s += std::string(" x") + std::to_string(r) + " (" + quil_reading(r)->name + ")";
            any = true;
        }
    s += any ? "\n" : " none\n";
    return s;
}

}  // namespace quil::retarget
