// The golden record: for every hand, the SHA-256 of each block of 1024 samples' targets (24
// little-endian doubles per sample), and an 8-bit digest of every single sample (the first byte
// of its own SHA-256), so a difference is named down to the sample (a changed sample keeps its
// digest once in 256 times; the block's SHA-256 still tells the change).
//
//   tests/golden/record.txt      "HAND BLOCK SHA256" lines, in catalogue order
//   tests/golden/samples.digest  the per-sample digests, hand after hand, a byte each
#pragma once

#include <openssl/sha.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "golden/golden_samples.h"

namespace quil::golden {

struct HandRecord {
    std::string name;
    std::vector<std::string> block_sha;      // kBlocks hex strings
    std::vector<std::uint8_t> sample_digest;  // kSamples
};

inline std::string hex(const unsigned char* p, std::size_t n) {
    static const char digits[] = "0123456789abcdef";
    std::string s;
    for (std::size_t i = 0; i < n; ++i) {
        s += digits[p[i] >> 4];
        s += digits[p[i] & 15];
    }
    return s;
}

// The bytes of the targets as little-endian doubles (this library runs on little-endian x86-64).
inline const unsigned char* bytes_of(const double* d) { return reinterpret_cast<const unsigned char*>(d); }

inline HandRecord record_of(const std::string& name, const std::vector<double>& targets) {
    if (targets.size() != kSamples * 24) throw std::runtime_error(name + ": wrong number of targets");
    HandRecord r{name, {}, {}};
    unsigned char md[SHA256_DIGEST_LENGTH];
    for (std::size_t b = 0; b < kBlocks; ++b) {
        SHA256(bytes_of(&targets[b * kBlock * 24]), kBlock * 24 * sizeof(double), md);
        r.block_sha.push_back(hex(md, sizeof md));
    }
    for (std::size_t s = 0; s < kSamples; ++s) {
        SHA256(bytes_of(&targets[s * 24]), 24 * sizeof(double), md);
        r.sample_digest.push_back(md[0]);
    }
    return r;
}

inline void write_record(const std::string& dir, const std::vector<HandRecord>& hands) {
    std::ofstream txt(dir + "/record.txt"), bin(dir + "/samples.digest", std::ios::binary);
    txt << "# The golden record of every hand: SHA-256 of the targets of each block of " << kBlock
        << " samples\n# (24 little-endian doubles per sample); " << kBlocks
        << " blocks per hand. Per-sample digests: samples.digest.\n"
           "# Made by 'bash scripts/golden.sh regenerate' from the C exports; see README, Reliability.\n";
    for (const HandRecord& h : hands) {
        for (std::size_t b = 0; b < kBlocks; ++b) txt << h.name << ' ' << b << ' ' << h.block_sha[b] << '\n';
        bin.write(reinterpret_cast<const char*>(h.sample_digest.data()), static_cast<std::streamsize>(kSamples));
    }
    if (!txt.flush() || !bin.flush()) throw std::runtime_error("cannot write the record in " + dir);
}

inline std::vector<HandRecord> read_record(const std::string& dir) {
    std::ifstream txt(dir + "/record.txt"), bin(dir + "/samples.digest", std::ios::binary);
    if (!txt || !bin) throw std::runtime_error("no golden record in " + dir);
    std::vector<HandRecord> hands;
    for (std::string line; std::getline(txt, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string name, sha;
        std::size_t block;
        fields >> name >> block >> sha;
        if (hands.empty() || hands.back().name != name) hands.push_back(HandRecord{name, {}, {}});
        hands.back().block_sha.push_back(sha);
    }
    for (HandRecord& h : hands) {
        h.sample_digest.resize(kSamples);
        if (!bin.read(reinterpret_cast<char*>(h.sample_digest.data()), static_cast<std::streamsize>(kSamples)))
            throw std::runtime_error("samples.digest is short");
    }
    return hands;
}

inline std::string readings_text(const Sample& s) {
    std::string t;
    char buf[32];
    for (double x : s) {
        std::snprintf(buf, sizeof buf, "%s%.17g", t.empty() ? "" : ", ", x);
        t += buf;
    }
    return t;
}

// "" when `targets` match the record; else a message naming the hand, the first differing block
// and, in it, the first sample whose digest differs, with its readings.
inline std::string compare(const HandRecord& expected, const std::vector<double>& targets,
                           const std::vector<Sample>& samples, const std::string& interface) {
    if (targets.size() != kSamples * 24)
        return expected.name + " through " + interface + ": " + std::to_string(targets.size() / 24) +
               " samples of targets, expected " + std::to_string(kSamples);
    const HandRecord actual = record_of(expected.name, targets);
    for (std::size_t b = 0; b < kBlocks; ++b) {
        if (actual.block_sha[b] == expected.block_sha[b]) continue;
        std::string where = "no single sample's digest differs";
        for (std::size_t s = b * kBlock; s < (b + 1) * kBlock; ++s)
            if (actual.sample_digest[s] != expected.sample_digest[s]) {
                where = "first differing sample " + std::to_string(s - b * kBlock) + " of the block (sample " +
                        std::to_string(s) + " of the hand's session), readings " + readings_text(samples[s]);
                break;
            }
        return expected.name + " through " + interface + ": block " + std::to_string(b) +
               " differs from the golden record; " + where;
    }
    return "";
}

}  // namespace quil::golden
