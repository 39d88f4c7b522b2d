// The writers of the targets quil-retarget maps: CSV with a heading, raw little-endian doubles,
// or an npy array, each fed blocks of rows as the session's readers give them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "retarget_io.h"
#include "session_source.h"

namespace quil::retarget {

class Sink {
  public:
    virtual ~Sink() = default;
    // Before the first row, or at the end of an input without rows.
    virtual void begin(const SourceInfo& info) = 0;
    virtual void write(const Block& b, const double* targets) = 0;
    // Where the targets of `rows` rows can be mapped straight into the output, or null; such
    // rows are then taken with wrote_direct(rows) instead of write().
    virtual double* direct(std::size_t) { return nullptr; }
    virtual void wrote_direct(std::size_t) {}
    // After the last row; "" or what went wrong.
    virtual std::string finish(std::uint64_t) { return ""; }
    bool time_written = false;
    std::size_t width = 24;  // values per row: the 24 targets, or a profile's commands
};

// The writer of format `to` into `out`; `columns` names the CSV heading's value columns and
// `known_rows`, when the reader knows it, lets an unseekable npy output carry its row count.
std::unique_ptr<Sink> make_sink(Format to, OutputFile& out, std::vector<std::string> columns,
                                std::optional<std::uint64_t> known_rows);

// The CSV heading's names of the 24 slots: outN, or the slot roles, a repeated role (unused,
// say) followed by its slot number so that every column has its own name.
std::vector<std::string> column_names(const quil_hand_info& hand, bool roles);

}  // namespace quil::retarget
