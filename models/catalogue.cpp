#include "models/catalogue.h"

#include <algorithm>
#include <cctype>

namespace quil {

namespace {
constexpr BufferKind PER_CALL = BufferKind::per_call;
constexpr BufferKind PERSISTENT = BufferKind::persistent;

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

bool contains_ignoring_case(std::string_view haystack, std::string_view needle) {
    if (needle.empty() || needle.size() > haystack.size()) return false;
    for (std::size_t at = 0; at + needle.size() <= haystack.size(); ++at)
        if (equal_ignoring_case(haystack.substr(at, needle.size()), needle)) return true;
    return false;
}

// Edit distance ignoring case, a swap of two neighbouring letters counting as one edit (the
// commonest typing slip), on at most the first kMaxName characters of each side: hand names are
// short, and a longer guess is far from all of them anyway.
constexpr std::size_t kMaxName = 63;
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    static_assert(sizeof(#hand) - 1 <= kMaxName, "a hand name longer than the edit distance reads");
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL

// `b` is a hand's name, which fits (checked above); `a` is what was typed.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    a = a.substr(0, std::min(a.size(), kMaxName));
    std::size_t d[kMaxName + 1][kMaxName + 1];
    for (std::size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}
}  // namespace

const HandModel kHandModels[kHandCount] = {
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    {#hand, version, buffer, keeps_state != 0, &hands::hand, &hands::hand##_coefficients, \
     &hands::hand##_slots},
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
};

const HandModel* find_hand_model(std::string_view name) {
    for (const HandModel& m : kHandModels)
        if (name == m.name) return &m;
    for (const HandModel& m : kHandModels)
        if (equal_ignoring_case(name, m.name)) return &m;
    return nullptr;
}

std::size_t closest_hand_models(std::string_view name, const HandModel** out, std::size_t capacity) {
    // A name that contains what was typed ("xhand1", "o7") is a better guess than its edit
    // distance to the full maker-and-model name suggests; among those, and among the rest, the
    // nearer name comes first.
    bool contains[kHandCount];
    std::size_t distance[kHandCount];
    std::size_t order[kHandCount];
    for (std::size_t i = 0; i < kHandCount; ++i) {
        contains[i] = contains_ignoring_case(kHandModels[i].name, name);
        distance[i] = edit_distance(name, kHandModels[i].name);
        order[i] = i;
    }
    std::stable_sort(order, order + kHandCount, [&](std::size_t a, std::size_t b) {
        return contains[a] != contains[b] ? contains[a] : distance[a] < distance[b];
    });
    const std::size_t n = std::min(capacity, kHandCount);
    for (std::size_t i = 0; i < n; ++i) out[i] = &kHandModels[order[i]];
    return n;
}

}  // namespace quil
