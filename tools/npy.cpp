#include "npy.h"

#include <cctype>
#include <cstring>
#include <vector>

namespace quil::retarget::npy {

std::size_t length_field_size(int major) { return major == 1 ? 2 : 4; }

std::string parse_prelude(const unsigned char* b, std::size_t n, Header& h) {
    static const unsigned char magic[6] = {0x93, 'N', 'U', 'M', 'P', 'Y'};
    if (n < 6 || std::memcmp(b, magic, 6) != 0) return "not a NumPy file (it does not start with \\x93NUMPY)";
    if (n < kPrelude) return "the file ends inside the header";
    h.major = b[6];
    h.minor = b[7];
    if (h.major < 1 || h.major > 3 || h.minor != 0)
        return "format version " + std::to_string(h.major) + "." + std::to_string(h.minor) +
               " is not one of 1.0, 2.0, 3.0";
    return "";
}

std::uint32_t header_length(const unsigned char* f, int major) {
    std::uint32_t v = f[0] | static_cast<std::uint32_t>(f[1]) << 8;
    if (major != 1) v |= static_cast<std::uint32_t>(f[2]) << 16 | static_cast<std::uint32_t>(f[3]) << 24;
    return v;
}

namespace {

// A reader of the Python literal that the header holds: a dict of string keys whose values are
// strings, True/False, or tuples of integers.
class Literal {
  public:
    explicit Literal(const std::string& t) : t_(t) {}

    void blank() {
        while (p_ < t_.size() && std::isspace(static_cast<unsigned char>(t_[p_]))) ++p_;
    }
    bool take(char c) {
        blank();
        if (p_ < t_.size() && t_[p_] == c) return ++p_, true;
        return false;
    }
    bool at_end() {
        blank();
        return p_ == t_.size();
    }
    bool string(std::string& out) {
        blank();
        if (p_ >= t_.size() || (t_[p_] != '\'' && t_[p_] != '"')) return false;
        const char q = t_[p_];
        const std::size_t close = t_.find(q, p_ + 1);
        if (close == std::string::npos) return false;
        out = t_.substr(p_ + 1, close - p_ - 1);
        p_ = close + 1;
        return true;
    }
    bool word(std::string& out) {
        blank();
        std::size_t e = p_;
        while (e < t_.size() && (std::isalnum(static_cast<unsigned char>(t_[e])) || t_[e] == '_')) ++e;
        if (e == p_) return false;
        out = t_.substr(p_, e - p_);
        p_ = e;
        return true;
    }
    // A tuple of non-negative integers, e.g. (10, 12) or (10,); its text goes to `text`.
    bool tuple(std::vector<std::uint64_t>& dims, std::string& text) {
        blank();
        const std::size_t start = p_;
        if (!take('(')) return false;
        dims.clear();
        for (;;) {
            if (take(')')) break;
            std::string w;
            if (!word(w)) return false;
            if (!w.empty() && (w.back() == 'L' || w.back() == 'l')) w.pop_back();  // Python 2 longs
            if (w.empty() || w.size() > 19) return false;
            std::uint64_t v = 0;
            for (char c : w) {
                if (!std::isdigit(static_cast<unsigned char>(c))) return false;
                v = v * 10 + static_cast<std::uint64_t>(c - '0');
            }
            dims.push_back(v);
            if (take(')')) break;
            if (!take(',')) return false;
        }
        text = t_.substr(start, p_ - start);
        return true;
    }

  private:
    const std::string& t_;
    std::size_t p_ = 0;
};

}  // namespace

std::string parse_dict(const std::string& text, Header& h) {
    Literal lit(text);
    if (!lit.take('{')) return "the header is not a dictionary: " + text;
    bool have_descr = false, have_order = false, have_shape = false;
    std::vector<std::uint64_t> dims;
    for (;;) {
        if (lit.take('}')) break;
        std::string key;
        if (!lit.string(key) || !lit.take(':')) return "cannot read the header dictionary: " + text;
        if (key == "descr") {
            if (!lit.string(h.descr)) return "'descr' is not a simple type (a structured array?)";
            have_descr = true;
        } else if (key == "fortran_order") {
            std::string w;
            if (!lit.word(w) || (w != "True" && w != "False")) return "'fortran_order' is neither True nor False";
            h.fortran_order = w == "True";
            have_order = true;
        } else if (key == "shape") {
            if (!lit.tuple(dims, h.shape)) return "'shape' is not a tuple of integers";
            have_shape = true;
        } else {
            return "unexpected key '" + key + "' in the header";
        }
        if (lit.take('}')) break;
        if (!lit.take(',')) return "cannot read the header dictionary: " + text;
    }
    if (!lit.at_end()) return "text after the header dictionary";
    if (!have_descr || !have_order || !have_shape)
        return std::string("the header lacks '") + (!have_descr ? "descr" : !have_order ? "fortran_order" : "shape") + "'";

    const std::string& d = h.descr;
    if (d.size() != 3 || (d[0] != '<' && d[0] != '>' && d[0] != '=') || d[1] != 'f' || (d[2] != '8' && d[2] != '4'))
        return "dtype '" + d + "' is not float64 or float32 ('<f8', '>f8', '<f4' or '>f4')";
    h.big_endian = d[0] == '>';  // '=' is the writer's own order; files are written on little-endian hosts
    h.item_size = d[2] == '8' ? 8 : 4;
    if (dims.size() != 2) return "shape " + h.shape + " is not two-dimensional (rows, columns)";
    h.rows = dims[0];
    h.columns = dims[1];
    if (h.columns != 0 && h.rows > UINT64_MAX / 8 / h.columns) return "shape " + h.shape + " is too large";
    return "";
}

std::string header_for(std::uint64_t rows, std::uint64_t columns) {
    std::string dict = "{'descr': '<f8', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " +
                       std::to_string(columns) + "), }";
    std::string h = std::string("\x93NUMPY\x01\x00", 8);
    const std::size_t len = kHeaderSize - 10;  // what follows the two length bytes
    h += static_cast<char>(len & 0xFF);
    h += static_cast<char>(len >> 8);
    h += dict;
    h.resize(kHeaderSize - 1, ' ');
    h += '\n';
    return h;
}

}  // namespace quil::retarget::npy
