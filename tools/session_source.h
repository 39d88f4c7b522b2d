// Readers of recorded glove sessions: CSV, raw f64 and NumPy .npy, each giving the samples in
// blocks of rows, in order, and stopping at the first fault with its place (file:line:column
// or a byte offset), after the rows before it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "npy.h"
#include "retarget_io.h"

namespace quil::retarget {

enum class Format { csv, f64, npy };
const char* format_name(Format f);
// The format a file name's extension stands for: .csv/.tsv/.txt, .f64, .npy; CSV otherwise.
Format format_of_path(const std::string& path);

// A block of consecutive samples.
struct Block {
    static constexpr std::size_t kRows = 1024;
    std::size_t rows = 0;
    std::vector<double> x = std::vector<double>(kRows * 12);  // row-major readings x0..x11
    std::vector<double> t = std::vector<double>(kRows);       // times as numbers, when asked for
    std::string time_text;                                     // CSV times as written, back to back
    std::vector<std::uint32_t> time_end;                       // where each row's time text ends

    std::string_view time_of(std::size_t r) const {
        const std::uint32_t b = r ? time_end[r - 1] : 0;
        return std::string_view(time_text).substr(b, time_end[r] - b);
    }
    void clear() {
        rows = 0;
        time_text.clear();
        time_end.clear();
    }
};

// What the reader found out about its input; complete after the first call of next().
struct SourceInfo {
    bool has_time = false;
    std::string time_name;                    // "time" when the input does not name it
    bool time_as_text = false;                // times come as Block::time_text, else Block::t
    std::array<std::string, 12> input_names;  // the input's own names of x0..x11, or empty
    std::optional<std::uint64_t> known_rows;  // rows the input holds, when certain beforehand
    bool places_are_lines = true;             // else byte offsets
};

// Rows left out with --skip-bad.
struct SkippedRows {
    static constexpr std::size_t kKeptMessages = 1000;
    std::vector<std::uint64_t> places;  // line numbers or byte offsets, all of them
    std::vector<std::string> messages;  // the first kKeptMessages
    void add(std::uint64_t place, const std::string& message) {
        places.push_back(place);
        if (messages.size() < kKeptMessages) messages.push_back(message);
    }
};

// How a CSV time column must read: copied as text only, as a number where it can (else NaN),
// or as a number without fail (a fault otherwise), for outputs that store times as numbers.
enum class TimeNumbers { none, lenient, strict };

class Source {
  public:
    enum class Status { more, end, bad_data, io_error };
    virtual ~Source() = default;
    // Fills `block` with the next rows (block.rows may be 0 only when the status is not `more`).
    // The rows are good whatever the status; after bad_data or io_error, error() says what.
    virtual Status next(Block& block) = 0;
    virtual std::uint64_t bytes_consumed() const = 0;

    const SourceInfo& info() const { return info_; }
    const std::string& error() const { return error_; }
    const SkippedRows& skipped() const { return skipped_; }
    std::uint64_t rows_read() const { return rows_read_; }  // data rows seen, skipped ones included

  protected:
    SourceInfo info_;
    std::string error_;
    SkippedRows skipped_;
    std::uint64_t rows_read_ = 0;
};

struct SourceOptions {
    Format format = Format::csv;
    bool skip_bad = false;
    TimeNumbers time_numbers = TimeNumbers::none;
};

// Opens the reader of `in`. A NumPy header is read and checked here, before any output: on a
// fault the result is null and `error` names the problem.
std::unique_ptr<Source> open_source(InputFile& in, const SourceOptions& options, std::string& error);

// True when `text` is a number in any common notation: a sign, digits with a decimal point or a
// decimal comma, an exponent, hexadecimal, nan or inf. Such a field is never a column name.
bool looks_numeric(std::string_view text);

// True when a column name is a clock's (time, t, Timestamp, time_ms, elapsed, ...).
bool names_time(std::string_view name);

}  // namespace quil::retarget
