#include "retarget_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <algorithm>
#include <charconv>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace quil::retarget {

bool parse_number(std::string_view text, double& value) {
    const char* first = text.data();
    const char* last = first + text.size();
    // from_chars takes no leading '+', which spreadsheets do write.
    if (first != last && *first == '+') {
        ++first;
        if (first == last || *first == '+' || *first == '-') return false;
    }
    if (first == last) return false;
#if !defined(__cpp_lib_to_chars)
    // A C++ library without floating-point from_chars (the browser build's): strtod, kept to
    // from_chars's notations, no leading blanks and no hexadecimal.
    {
        const char* digits = first + (*first == '-' ? 1 : 0);
        if (std::isspace(static_cast<unsigned char>(*first)) || digits == last ||
            (last - digits >= 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')))
            return false;
        char copy[512];
        const std::size_t n = static_cast<std::size_t>(last - first);
        if (n >= sizeof copy || std::memchr(first, '\0', n)) return false;
        std::memcpy(copy, first, n);
        copy[n] = '\0';
        char* end = nullptr;
        value = std::strtod(copy, &end);
        return end == copy + n;
    }
#else
    const auto [ptr, ec] = std::from_chars(first, last, value);
    if (ptr != last) return false;
    if (ec == std::errc()) return true;
    if (ec != std::errc::result_out_of_range) return false;
    // Too large or too small for a double: from_chars leaves the value alone, strtod rounds it to
    // infinity or toward zero as a recording tool that printed it would expect.
    char copy[512];
    const std::size_t n = static_cast<std::size_t>(last - first);
    if (n >= sizeof copy) return false;
    std::memcpy(copy, first, n);
    copy[n] = '\0';
    value = std::strtod(copy, nullptr);
    return true;
#endif
}

namespace {

// Writes the significant digits `digits` (no leading or trailing zeros), worth
// d1.d2d3... x 10^exp10, in fixed or scientific notation, whichever is shorter, fixed on a tie:
// the layout std::to_chars gives the shortest form.
[[maybe_unused]] char* lay_out(char* out, bool negative, const char* digits, int n, int exp10) {
    if (negative) *out++ = '-';
    const int exp_digits = std::abs(exp10) >= 100 ? 3 : 2;
    const int sci_len = n + (n > 1 ? 1 : 0) + 2 + exp_digits;
    const int fixed_len = exp10 >= 0 ? std::max(n, exp10 + 1) + (n > exp10 + 1 ? 1 : 0) : 1 - exp10 + n;
    if (fixed_len <= sci_len) {
        if (exp10 < 0) {
            *out++ = '0';
            *out++ = '.';
            for (int i = -1; i > exp10; --i) *out++ = '0';
            std::memcpy(out, digits, static_cast<std::size_t>(n));
            return out + n;
        }
        for (int i = 0; i < std::max(n, exp10 + 1); ++i) {
            if (i == exp10 + 1) *out++ = '.';
            *out++ = i < n ? digits[i] : '0';
        }
        return out;
    }
    *out++ = digits[0];
    if (n > 1) {
        *out++ = '.';
        std::memcpy(out, digits + 1, static_cast<std::size_t>(n - 1));
        out += n - 1;
    }
    *out++ = 'e';
    *out++ = exp10 < 0 ? '-' : '+';
    const int e = std::abs(exp10);
    if (e >= 100) *out++ = static_cast<char>('0' + e / 100);
    *out++ = static_cast<char>('0' + e / 10 % 10);
    *out++ = static_cast<char>('0' + e % 10);
    return out;
}

}  // namespace

#if !defined(__cpp_lib_to_chars)
// Without floating-point to_chars: the fewest significant digits that read back exactly.
char* format_number(char* out, double value) {
    for (int digits = 1; digits <= 17; ++digits) {
        const int n = std::snprintf(out, kMaxNumberText, "%.*g", digits, value);
        if (!std::isfinite(value) || std::strtod(out, nullptr) == value) return out + n;
    }
    return out + std::snprintf(out, kMaxNumberText, "%.17g", value);
}
#else
char* format_number(char* out, double value) {
    if (!std::isfinite(value) || value == 0.0) return std::to_chars(out, out + kMaxNumberText, value).ptr;
    const bool negative = std::signbit(value);
    const double magnitude = std::fabs(value);

    // Most targets are short decimals (-44.22, 30), for which std::to_chars takes a slow path
    // through printf. A value with at most six decimals is m / 10^6 for the nearest integer m to
    // value * 10^6: both exact, the quotient is rounded once, as a reader rounds "m e-6". Below
    // 2^50 the product is off by less than a quarter, so such an m is found whenever it exists,
    // and it is the only one. Its trailing zeros give the fewest decimals: the shortest form.
    const double m = std::nearbyint(magnitude * 1e6);
    if (m < 1125899906842624.0 && m / 1e6 == magnitude) {  // 2^50
        std::uint64_t k = static_cast<std::uint64_t>(m);
        int decimals = 6;
        while (decimals > 0 && k % 10 == 0) k /= 10, --decimals;
        char digits[24];
        const int n = static_cast<int>(std::to_chars(digits, digits + sizeof digits, k).ptr - digits);
        int sig = n;
        while (sig > 1 && digits[sig - 1] == '0') --sig;
        return lay_out(out, negative, digits, sig, n - 1 - decimals);
    }
    // Longer ones: the library's own shortest form, which is quick for these.
    return std::to_chars(out, out + kMaxNumberText, value).ptr;
}
#endif

namespace {
std::string describe_errno(int err) { return std::strerror(err); }
}  // namespace

InputFile::InputFile(const std::string& path) {
    if (path.empty() || path == "-") {
        fd_ = STDIN_FILENO;
        name_ = "<stdin>";
    } else {
        name_ = path;
        fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) {
            error_ = "cannot open '" + path + "': " + describe_errno(errno);
            return;
        }
        owns_ = true;
    }
    struct stat st;
    if (::fstat(fd_, &st) == 0) {
        if (S_ISDIR(st.st_mode)) {
            error_ = "cannot read '" + name_ + "': it is a directory";
            return;
        }
        if (S_ISREG(st.st_mode)) {
            size_ = static_cast<std::int64_t>(st.st_size);
            device_ = st.st_dev;
            inode_ = st.st_ino;
        }
    }
}

InputFile::InputFile(std::string name, const char* data, std::size_t size)
    : name_(std::move(name)), size_(static_cast<std::int64_t>(size)), memory_(data ? data : "") {}

bool InputFile::is_same_file(const std::string& path) const {
    struct stat st;
    if (memory_ || size_ < 0 || path.empty() || path == "-" || ::stat(path.c_str(), &st) != 0) return false;
    return st.st_dev == device_ && st.st_ino == inode_;
}

InputFile::~InputFile() {
    if (owns_) ::close(fd_);
}

std::ptrdiff_t InputFile::read(char* into, std::size_t n) {
    if (memory_) {
        const std::size_t got = static_cast<std::size_t>(std::min<std::uint64_t>(n, size_ - memory_at_));
        if (got) std::memcpy(into, memory_ + memory_at_, got);
        memory_at_ += got;
        return static_cast<std::ptrdiff_t>(got);
    }
    for (;;) {
        const ssize_t got = ::read(fd_, into, n);
        if (got >= 0) return got;
        if (errno == EINTR) continue;
        error_ = "cannot read '" + name_ + "': " + describe_errno(errno);
        return -1;
    }
}

std::ptrdiff_t InputFile::read_full(char* into, std::size_t n) {
    std::size_t have = 0;
    while (have < n) {
        const std::ptrdiff_t got = read(into + have, n - have);
        if (got < 0) return -1;
        if (got == 0) break;
        have += static_cast<std::size_t>(got);
    }
    return static_cast<std::ptrdiff_t>(have);
}

bool InputFile::read_at(char* into, std::size_t n, std::uint64_t offset) {
    if (memory_) {
        if (offset > static_cast<std::uint64_t>(size_) || n > size_ - offset) {
            error_ = "cannot read '" + name_ + "': it ends at byte offset " + std::to_string(size_);
            return false;
        }
        if (n) std::memcpy(into, memory_ + offset, n);
        return true;
    }
    std::size_t have = 0;
    while (have < n) {
        const ssize_t got = ::pread(fd_, into + have, n - have, static_cast<off_t>(offset + have));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            error_ = "cannot read '" + name_ + "': " + describe_errno(errno);
            return false;
        }
        if (got == 0) {
            error_ = "cannot read '" + name_ + "': it ended at byte offset " + std::to_string(offset + have) +
                     " (was it changed while being read?)";
            return false;
        }
        have += static_cast<std::size_t>(got);
    }
    return true;
}

// A short input is read with a small buffer; a long one, or a long line, grows it to kBlock.
LineReader::LineReader(InputFile& in) : in_(in), buf_(kFirstBlock) {}

LineReader::Status LineReader::next(std::string_view& line) {
    for (;;) {
        if (skipping_) {
            // Discard the rest of an over-long line up to its line end.
            const void* nl = begin_ < end_ ? std::memchr(buf_.data() + begin_, '\n', end_ - begin_) : nullptr;
            const std::size_t stop = nl ? static_cast<std::size_t>(static_cast<const char*>(nl) - buf_.data()) + 1 : end_;
            consumed_ += stop - begin_;
            begin_ = stop;
            if (nl || eof_) skipping_ = false;
        }
        const char* start = buf_.data() + begin_;
        const void* nl = begin_ < end_ ? std::memchr(start, '\n', end_ - begin_) : nullptr;
        if (nl || (eof_ && begin_ < end_)) {
            const char* stop = nl ? static_cast<const char*>(nl) : buf_.data() + end_;
            std::size_t len = static_cast<std::size_t>(stop - start);
            const std::size_t taken = len + (nl ? 1 : 0);
            if (len > 0 && start[len - 1] == '\r') --len;
            line = std::string_view(start, len);
            begin_ += taken;
            consumed_ += taken;
            ++line_number_;
            return Status::line;
        }
        if (eof_) return Status::end;
        if (skipping_) begin_ = end_ = 0;
        // Keep the partial line and fill the rest of the block behind it.
        if (begin_ > 0) {
            std::memmove(buf_.data(), buf_.data() + begin_, end_ - begin_);
            end_ -= begin_;
            begin_ = 0;
        }
        if (end_ == buf_.size() && buf_.size() < kBlock) buf_.resize(std::min(kBlock, 2 * buf_.size()));
        if (end_ == buf_.size()) {
            consumed_ += end_;
            begin_ = end_ = 0;
            skipping_ = true;
            ++line_number_;
            return Status::too_long;
        }
        const std::size_t room = buf_.size() - end_;
        const std::ptrdiff_t got = in_.read(buf_.data() + end_, room);
        if (got < 0) return Status::read_error;
        if (got == 0) eof_ = true;
        end_ += static_cast<std::size_t>(got);
        if (static_cast<std::size_t>(got) == room && buf_.size() < kBlock) buf_.resize(std::min(kBlock, 2 * buf_.size()));
    }
}

OutputFile::OutputFile() : buf_(2 * kBlock + 65536) {}

namespace {
// A regular file not in append mode can be rewritten in place; `start` is where writing begins.
bool fd_seekable(int fd, std::int64_t& start) {
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) return false;
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0 || (flags & O_APPEND)) return false;
    const off_t at = ::lseek(fd, 0, SEEK_CUR);
    if (at < 0) return false;
    start = static_cast<std::int64_t>(at);
    return true;
}
}  // namespace

bool OutputFile::would_be_seekable(const std::string& path) {
    std::int64_t start;
    if (path.empty() || path == "-") return fd_seekable(STDOUT_FILENO, start);
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) return true;  // it will be created as a regular file
    return S_ISREG(st.st_mode);
}

bool OutputFile::open(const std::string& path) {
    if (path.empty() || path == "-") {
        fd_ = STDOUT_FILENO;
        name_ = "<stdout>";
    } else {
        name_ = path;
        fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (fd_ < 0) {
            error_ = "cannot write '" + path + "': " + describe_errno(errno);
            return false;
        }
        owns_ = true;
    }
    seekable_ = fd_seekable(fd_, start_);
    return true;
}

bool OutputFile::patch(std::uint64_t offset, const char* data, std::size_t n) {
    if (!flush()) return false;
    if (!seekable_) {
        error_ = "cannot rewrite the start of '" + name_ + "': it is not a regular file";
        return false;
    }
    std::size_t done = 0;
    while (done < n) {
        const ssize_t w = ::pwrite(fd_, data + done, n - done, static_cast<off_t>(start_ + offset + done));
        if (w < 0 && errno == EINTR) continue;
        if (w < 0) {
            error_ = "cannot write '" + name_ + "': " + describe_errno(errno);
            return false;
        }
        done += static_cast<std::size_t>(w);
    }
    return true;
}

OutputFile::~OutputFile() {
    if (fd_ >= 0) flush();
    if (owns_) ::close(fd_);
}

bool OutputFile::flush() {
    if (fd_ < 0 && error_.empty()) error_ = "no output file open";
    std::size_t done = 0;
    while (done < used_ && error_.empty()) {
        const ssize_t n = ::write(fd_, buf_.data() + done, used_ - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            reader_gone_ = errno == EPIPE;
            error_ = "cannot write '" + name_ + "': " + describe_errno(errno);
        } else {
            done += static_cast<std::size_t>(n);
        }
    }
    used_ = 0;  // after an error the rest is dropped; the caller reports it
    return error_.empty();
}

}  // namespace quil::retarget
