#include "run_record.h"

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
    j["input"] = {{"path", r.input}, {"format", format_name(r.from)}, {"rows", r.rows_read}};
    j["output"] = {{"path", r.output},
                   {"format", format_name(r.to)},
                   {"rows_written", r.rows_written},
                   {"columns", r.columns},
                   {"time_column_written", r.time_written}};
    j["rows_skipped"] = {{"count", skipped.places.size()}, {"places", places}};
    j["dropout"] = r.dropout;
    j["time_column"] = r.info->has_time ? json(r.info->time_name) : json(nullptr);
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
    json slots = json::array();
    for (int i = 0; i < 24; ++i) slots.push_back({{"slot", i}, {"role", h.slot_roles[i]}});
    j["slots"] = slots;
    return dump(j);
}

std::string describe_text(const quil_hand_info& h) {
    std::string s = std::string(h.name) + "\n";
    s += std::string("  version  ") + h.version + "\n";
    s += std::string("  buffer   ") +
         (h.persistent_buffer ? "persistent (the C export reuses one buffer; never free it)"
                              : "per-call (the C export returns a buffer to free with FreeMemory)") + "\n";
    s += std::string("  state    ") +
         (h.keeps_state ? "keeps state between samples (pinch latches, thumb references)" : "stateless") + "\n";
    s += "  slot  role\n";
    for (int i = 0; i < 24; ++i) {
        char line[128];
        std::snprintf(line, sizeof line, "  %4d  %s\n", i, h.slot_roles[i]);
        s += line;
    }
    return s;
}

}  // namespace quil::retarget
