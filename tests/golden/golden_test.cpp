// Every hand's behaviour against the golden record, through every interface of the library:
// the C exports in a fresh process, the hand API one sample at a time and in batches, and the
// C++ wrapper. (The tool and the Python package are checked against the same record by their
// own tests.)
#include <gtest/gtest.h>

#include "golden/record.h"
#include "quil_linear/hand.hpp"
#include "support/fresh_export.h"

namespace {

using namespace quil::golden;

const std::vector<HandRecord>& record() {
    static const std::vector<HandRecord> r = read_record(QUIL_GOLDEN_DIR);
    return r;
}

class Golden : public ::testing::TestWithParam<std::size_t> {};

TEST_P(Golden, EveryInterfaceMatchesTheRecord) {
    const std::size_t h = GetParam();
    const quil::test::Export& hand = quil::test::exports()[h];
    ASSERT_EQ(record().size(), quil::test::exports().size());
    ASSERT_EQ(record()[h].name, hand.name);
    const std::vector<Sample> samples = samples_for_hand(h);
    const double* readings = samples.data()->data();

    EXPECT_EQ("", compare(record()[h], quil::test::fresh_export(hand, samples), samples, "the C export"));

    std::vector<double> one(kSamples * 24), batched(kSamples * 24);
    quil_hand* handle = quil_hand_open(hand.name);
    for (std::size_t s = 0; s < kSamples; ++s) quil_hand_map(handle, readings + 12 * s, &one[24 * s]);
    quil_hand_reset(handle);
    for (std::size_t at = 0, n = 1; at < kSamples; at += n, n = std::min(2 * n + 1, kSamples - at - n + 1))
        quil_hand_map_n(handle, std::min(n, kSamples - at), readings + 12 * at, &batched[24 * at]);
    quil_hand_close(handle);
    EXPECT_EQ("", compare(record()[h], one, samples, "quil_hand_map"));
    EXPECT_EQ("", compare(record()[h], batched, samples, "quil_hand_map_n"));

    quil_linear::Hand wrapped(hand.name);
    const std::vector<quil_linear::Readings> as_arrays(samples.begin(), samples.end());
    const std::vector<quil_linear::Targets> t = wrapped.map(as_arrays);
    EXPECT_EQ("", compare(record()[h], std::vector<double>(t.data()->data(), t.data()->data() + kSamples * 24),
                          samples, "quil_linear::Hand"));
}

std::string hand_name(const ::testing::TestParamInfo<std::size_t>& info) {
    return quil::test::exports()[info.param].name;
}

INSTANTIATE_TEST_SUITE_P(Record, Golden, ::testing::Range(std::size_t{0}, quil::test::exports().size()), hand_name);

}  // namespace
