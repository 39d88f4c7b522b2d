#include "session_sink.h"

#include <cstdint>
#include <cstring>
#include <map>

#include "npy.h"

namespace quil::retarget {

namespace {

// Writes a CSV field, in quotes when a reader would otherwise split or trim it.
void append_csv_field(std::string& out, std::string_view s) {
    const bool quote = s.find_first_of(",\"\r\n") != std::string_view::npos ||
                       (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.back() == ' ' || s.back() == '\t'));
    if (!quote) {
        out.append(s.data(), s.size());
        return;
    }
    out += '"';
    for (char c : s) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

class CsvSink : public Sink {
  public:
    CsvSink(OutputFile& out, std::vector<std::string> names) : out_(out), names_(std::move(names)) {}
    void begin(const SourceInfo& info) override {
        info_ = info;
        time_written = info.has_time;
        std::string h;
        if (info.has_time) {
            append_csv_field(h, info.time_name);
            h += ',';
        }
        for (std::size_t i = 0; i < names_.size(); ++i) {
            append_csv_field(h, names_[i]);
            h += i + 1 < names_.size() ? ',' : '\n';
        }
        out_.append(h);
    }
    void write(const Block& b, const double* targets) override {
        for (std::size_t r = 0; r < b.rows; ++r) {
            std::string_view time;
            if (info_.has_time && info_.time_as_text) {
                time = b.time_of(r);
                if (std::memchr(time.data(), ',', time.size()) || std::memchr(time.data(), '"', time.size()) ||
                    time.front() == ' ' || time.back() == ' ') {
                    quoted_.clear();
                    append_csv_field(quoted_, time);
                    time = quoted_;
                }
            }
            char* p = out_.reserve(time.size() + (width + 1) * (kMaxNumberText + 1) + 1);
            if (info_.has_time) {
                if (info_.time_as_text) {
                    std::memcpy(p, time.data(), time.size());
                    p += time.size();
                } else {
                    p = format_number(p, b.t[r]);
                }
                *p++ = ',';
            }
            const double* t = targets + r * width;
            for (std::size_t i = 0; i < width; ++i) {
                p = format_number(p, t[i]);
                *p++ = ',';
            }
            p[-1] = '\n';
            out_.commit(p);
        }
    }

  private:
    OutputFile& out_;
    std::vector<std::string> names_;
    SourceInfo info_;
    std::string quoted_;
};

// Rows of 24 doubles go straight into the output's buffer when it is aligned for them, which
// it is whenever all before them were doubles too.
double* aligned_room(OutputFile& out, std::size_t rows) {
    char* p = out.reserve(rows * 24 * sizeof(double));
    return reinterpret_cast<std::uintptr_t>(p) % alignof(double) == 0 ? reinterpret_cast<double*>(p) : nullptr;
}

class F64Sink : public Sink {
  public:
    explicit F64Sink(OutputFile& out) : out_(out) {}
    void begin(const SourceInfo&) override {}
    void write(const Block& b, const double* targets) override {
        const std::size_t n = b.rows * width * sizeof(double);
        char* p = out_.reserve(n);
        std::memcpy(p, targets, n);
        out_.commit(p + n);
    }
    double* direct(std::size_t rows) override { return width == 24 ? aligned_room(out_, rows) : nullptr; }
    void wrote_direct(std::size_t rows) override {
        out_.commit(out_.reserve(rows * 24 * sizeof(double)) + rows * 24 * sizeof(double));
    }

  private:
    OutputFile& out_;
};

// A (N, 24) or, with the time first, (N, 25) '<f8' array. Its header is written first with the
// row count known beforehand, else with none and rewritten in place once the count is known.
class NpySink : public Sink {
  public:
    NpySink(OutputFile& out, std::optional<std::uint64_t> known_rows) : out_(out), known_(known_rows) {}
    void begin(const SourceInfo& info) override {
        time_written = info.has_time;
        columns_ = info.has_time ? width + 1 : width;
        out_.append(npy::header_for(known_ && !out_.seekable() ? *known_ : 0, columns_));
    }
    void write(const Block& b, const double* targets) override {
        const std::size_t n = b.rows * columns_ * sizeof(double);
        char* p = out_.reserve(n);
        if (columns_ == width) {
            std::memcpy(p, targets, n);
        } else {
            for (std::size_t r = 0; r < b.rows; ++r) {
                std::memcpy(p, &b.t[r], sizeof(double));
                std::memcpy(p + sizeof(double), targets + r * width, width * sizeof(double));
                p += columns_ * sizeof(double);
            }
            p -= n;
        }
        out_.commit(p + n);
    }
    double* direct(std::size_t rows) override { return columns_ == 24 && width == 24 ? aligned_room(out_, rows) : nullptr; }
    void wrote_direct(std::size_t rows) override {
        out_.commit(out_.reserve(rows * 24 * sizeof(double)) + rows * 24 * sizeof(double));
    }
    std::string finish(std::uint64_t rows) override {
        if (out_.seekable()) {
            const std::string h = npy::header_for(rows, columns_);
            if (!out_.patch(0, h.data(), h.size())) return out_.error();
            return "";
        }
        if (known_ && rows != *known_)
            return out_.name() + ": the npy header announces " + std::to_string(*known_) + " rows but " +
                   std::to_string(rows) + " were written: the array is incomplete";
        return "";
    }

  private:
    OutputFile& out_;
    std::optional<std::uint64_t> known_;
    std::size_t columns_ = 24;
};

}  // namespace

std::unique_ptr<Sink> make_sink(Format to, OutputFile& out, std::vector<std::string> columns,
                                std::optional<std::uint64_t> known_rows) {
    if (to == Format::csv) return std::make_unique<CsvSink>(out, std::move(columns));
    if (to == Format::f64) return std::make_unique<F64Sink>(out);
    return std::make_unique<NpySink>(out, known_rows);
}

// The CSV heading's names of the 24 slots: outN, or the slot roles, a repeated role (unused,
// say) followed by its slot number so that every column has its own name.
std::vector<std::string> column_names(const quil_hand_info& hand, bool roles) {
    std::vector<std::string> names(24);
    std::map<std::string, int> uses;
    if (roles)
        for (int i = 0; i < 24; ++i) ++uses[hand.slot_roles[i]];
    for (int i = 0; i < 24; ++i) {
        if (!roles) names[i] = "out" + std::to_string(i);
        else if (uses[hand.slot_roles[i]] > 1) names[i] = std::string(hand.slot_roles[i]) + "_" + std::to_string(i);
        else names[i] = hand.slot_roles[i];
    }
    return names;
}

}  // namespace quil::retarget
