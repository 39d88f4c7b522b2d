// NumPy .npy files: reading the header of a two-dimensional float array and writing the header
// of the targets array. Format versions 1.0, 2.0 and 3.0 are read; 1.0 is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quil::retarget::npy {

struct Header {
    int major = 1, minor = 0;
    std::size_t data_offset = 0;  // bytes before the first value: magic, version, length, dict
    std::size_t item_size = 8;    // 8 (float64) or 4 (float32)
    bool big_endian = false;
    bool fortran_order = false;
    std::uint64_t rows = 0;
    std::uint64_t columns = 0;
    std::string descr;  // as written, for messages
    std::string shape;  // as written, for messages

    std::uint64_t data_bytes() const { return rows * columns * item_size; }
};

// Bytes of the fixed prelude: magic (6), version (2) and header length (2 in version 1, 4 after).
constexpr std::size_t kPrelude = 8;
std::size_t length_field_size(int major);

// Checks the first kPrelude bytes; on success sets `h.major`/`h.minor`. Returns "" or what is wrong.
std::string parse_prelude(const unsigned char* bytes, std::size_t n, Header& h);
// The header length from its field (length_field_size(h.major) bytes, little-endian).
std::uint32_t header_length(const unsigned char* field, int major);

// Parses the header's dictionary text, e.g. {'descr': '<f8', 'fortran_order': False,
// 'shape': (100, 12), }, into `h`. Returns "" or what is wrong with it. Any 2-D float64 or
// float32 shape is accepted here; the caller checks the column count.
std::string parse_dict(const std::string& text, Header& h);

// The full version 1.0 header of a C-order '<f8' array of `rows` x `columns`, always kHeaderSize
// bytes, so it can be written before the row count is known and rewritten in place after.
constexpr std::size_t kHeaderSize = 128;
std::string header_for(std::uint64_t rows, std::uint64_t columns);

}  // namespace quil::retarget::npy
