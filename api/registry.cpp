#include "api/registry.h"

#include <algorithm>
#include <cctype>

#include "models/hands.h"
#include "quil_linear/quil_linear.h"

namespace quil {

namespace {
constexpr BufferKind PER_CALL = BufferKind::per_call;
constexpr BufferKind PERSISTENT = BufferKind::persistent;

std::string lower(std::string_view s) {
    std::string r(s);
    for (char& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return r;
}

std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> prev(b.size() + 1), cur(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) prev[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        cur[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j)
            cur[j] = std::min({prev[j] + 1, cur[j - 1] + 1, prev[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
        std::swap(prev, cur);
    }
    return prev[b.size()];
}
}  // namespace

const std::vector<ModelInfo>& all_models() {
    static const std::vector<ModelInfo> models = {
#define QUIL_MODEL(hand, version, buffer, keeps_state) \
    {#hand, version, buffer, keeps_state != 0, &hands::hand, &hand##_GetDataValue, &hand##_GetVersion},
#include "api/model_list.h"
#undef QUIL_MODEL
    };
    return models;
}

const ModelInfo* find_model(std::string_view name) {
    for (const ModelInfo& m : all_models())
        if (name == m.name) return &m;
    const std::string wanted = lower(name);
    for (const ModelInfo& m : all_models())
        if (wanted == lower(m.name)) return &m;
    return nullptr;
}

std::vector<std::string> closest_model_names(std::string_view name, std::size_t count) {
    const std::string wanted = lower(name);
    std::vector<std::pair<std::size_t, std::string>> scored;
    for (const ModelInfo& m : all_models()) {
        const std::string candidate = lower(m.name);
        std::size_t d = edit_distance(wanted, candidate);
        // A name that contains what was typed ("xhand1", "o7") is a better guess than its
        // edit distance to the full maker-and-model name suggests.
        if (!wanted.empty() && candidate.find(wanted) != std::string::npos) d = 0;
        scored.emplace_back(d, m.name);
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (std::size_t i = 0; i < scored.size() && i < count; ++i) names.push_back(scored[i].second);
    return names;
}

const char* buffer_kind_name(BufferKind kind) {
    return kind == BufferKind::per_call ? "per-call" : "persistent";
}

}  // namespace quil
