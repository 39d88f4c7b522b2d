// Profile files: JSON read with nlohmann-json, its shape checked here, its values checked by
// the library (quil_profile_check), every fault named by file and field.
#include "profile_json.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace quil::retarget {

namespace {

using nlohmann::json;

struct Fault {
    std::string field, problem;
};

double number(const json& j, const std::string& field) {
    if (!j.is_number()) throw Fault{field, "must be a number, not " + j.dump().substr(0, 40)};
    const double v = j.get<double>();
    if (!std::isfinite(v)) throw Fault{field, "must be a finite number"};
    return v;
}

void only(const json& j, const std::string& at, const std::set<std::string>& allowed,
          const std::vector<std::string>& required) {
    if (!j.is_object()) throw Fault{at.empty() ? "(file)" : at, "must be a JSON object"};
    const std::string prefix = at.empty() ? "" : at + ".";
    for (auto it = j.begin(); it != j.end(); ++it)
        if (!allowed.count(it.key())) throw Fault{prefix + it.key(), "is not a known field"};
    for (const std::string& key : required)
        if (!j.contains(key)) throw Fault{prefix + key, "is missing"};
}

void read(const json& j, ProfileFile& p) {
    only(j, "", {"hand", "comment", "hold_after", "safe_after", "outputs"}, {"hand", "outputs"});
    if (!j["hand"].is_string()) throw Fault{"hand", "must be a hand's name"};
    p.hand = j["hand"].get<std::string>();
    if (j.contains("comment")) {
        if (!j["comment"].is_string()) throw Fault{"comment", "must be a string"};
        p.comment = j["comment"].get<std::string>();
    }
    quil_profile_init(&p.profile);
    if (j.contains("hold_after")) p.profile.hold_after = number(j["hold_after"], "hold_after");
    if (j.contains("safe_after")) p.profile.safe_after = number(j["safe_after"], "safe_after");
    const json& outs = j["outputs"];
    if (!outs.is_array()) throw Fault{"outputs", "must be a list of outputs"};
    for (std::size_t i = 0; i < outs.size(); ++i) {
        const json& o = outs[i];
        const std::string at = "outputs[" + std::to_string(i) + "]";
        only(o, at, {"name", "slot", "scale", "offset", "min", "max", "safe", "smoothing", "reject_above", "max_rate"},
             {"name", "slot", "scale", "offset", "min", "max"});
        quil_output out;
        quil_output_init(&out);
        if (!o["name"].is_string()) throw Fault{at + ".name", "must be a string"};
        p.names.push_back(o["name"].get<std::string>());
        long long slot = -1;
        if (o["slot"].is_string()) {
            // A slot named by its role, when the hand has exactly one slot of that role.
            const std::string role = o["slot"].get<std::string>();
            const quil_hand_info* info = quil_hand_find(p.hand.c_str());
            int matches = 0;
            for (int s = 0; info && s < QUIL_TARGETS; ++s)
                if (role == info->slot_roles[s]) slot = s, ++matches;
            if (matches != 1)
                throw Fault{at + ".slot", matches ? "\"" + role + "\" names " + std::to_string(matches) +
                                                        " slots of the hand; give the slot number"
                                                  : "\"" + role + "\" is not a slot role of the hand"};
        } else if (o["slot"].is_number_integer()) {
            slot = o["slot"].get<long long>();
        } else {
            throw Fault{at + ".slot", "must be a slot number 0..23 or a slot role of the hand"};
        }
        if (slot < 0 || slot >= QUIL_TARGETS) throw Fault{at + ".slot", "is not a slot of the hand (0..23)"};
        out.slot = static_cast<int>(slot);
        out.scale = number(o["scale"], at + ".scale");
        out.offset = number(o["offset"], at + ".offset");
        out.min = number(o["min"], at + ".min");
        out.max = number(o["max"], at + ".max");
        if (o.contains("safe")) out.safe = number(o["safe"], at + ".safe");
        if (o.contains("reject_above")) out.reject_above = number(o["reject_above"], at + ".reject_above");
        if (o.contains("max_rate")) out.max_rate = number(o["max_rate"], at + ".max_rate");
        if (o.contains("smoothing")) {
            const json& s = o["smoothing"];
            const std::string sat = at + ".smoothing";
            if (!s.is_object()) throw Fault{sat, "must be a JSON object"};
            if (!s.contains("kind")) throw Fault{sat + ".kind", "is missing"};
            const std::string kind = s["kind"].is_string() ? s["kind"].get<std::string>() : "";
            if (kind == "none") {
                only(s, sat, {"kind"}, {});
            } else if (kind == "ema") {
                only(s, sat, {"kind", "alpha"}, {"alpha"});
                out.smoothing.kind = QUIL_SMOOTHING_EMA;
                out.smoothing.alpha = number(s["alpha"], sat + ".alpha");
            } else if (kind == "one_euro") {
                only(s, sat, {"kind", "min_cutoff", "beta", "d_cutoff"}, {"min_cutoff", "beta", "d_cutoff"});
                out.smoothing.kind = QUIL_SMOOTHING_ONE_EURO;
                out.smoothing.min_cutoff = number(s["min_cutoff"], sat + ".min_cutoff");
                out.smoothing.beta = number(s["beta"], sat + ".beta");
                out.smoothing.d_cutoff = number(s["d_cutoff"], sat + ".d_cutoff");
            } else {
                throw Fault{sat + ".kind", "must be \"none\", \"ema\" or \"one_euro\""};
            }
        }
        p.outputs.push_back(out);
    }
    for (std::size_t i = 0; i < p.outputs.size(); ++i) p.outputs[i].name = p.names[i].c_str();
    p.profile.hand = p.hand.c_str();
    p.profile.output_count = p.outputs.size();
    p.profile.outputs = p.outputs.data();
    quil_profile_fault fault{};
    if (quil_profile_check(&p.profile, &fault) != QUIL_OK)
        throw Fault{fault.output < 0 ? std::string(fault.field)
                                     : "outputs[" + std::to_string(fault.output) + "]." + fault.field,
                    fault.problem};
}

}  // namespace

bool read_profile(const std::string& path, const quil_hand_info* hand, ProfileFile& out, std::string& error) {
    out.path = path;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot read the profile '" + path + "'";
        return false;
    }
    std::stringstream text;
    text << in.rdbuf();
    json j;
    try {
        j = json::parse(text.str());
    } catch (const json::parse_error& e) {
        error = path + ": not a JSON profile: byte " + std::to_string(e.byte) + ": " + e.what();
        return false;
    }
    try {
        read(j, out);
    } catch (const Fault& f) {
        error = path + ": " + f.field + " " + f.problem;
        return false;
    }
    if (hand && quil_hand_find(out.hand.c_str()) != hand) {
        error = path + ": hand is \"" + out.hand + "\", a profile for another hand than " + hand->name;
        return false;
    }
    return true;
}

}  // namespace quil::retarget
