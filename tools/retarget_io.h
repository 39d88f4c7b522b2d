// Buffered input and output for quil-retarget: numbers as text that read back exactly, a line
// reader that works in constant memory over any length of session, and an output sink.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quil::retarget {

// Reads the whole of `text` as one double: decimal or exponent notation with an optional sign,
// "nan" and "inf"/"infinity" in any case. A magnitude beyond the double range reads as infinity,
// one below it as the nearest subnormal or zero. False for anything else, including "".
bool parse_number(std::string_view text, double& value);

// Longest text format_number writes.
constexpr std::size_t kMaxNumberText = 32;

// Writes the shortest text that parse_number reads back to the same double (sign of zero and of
// NaN included) and returns the end of what it wrote; `out` needs kMaxNumberText bytes.
char* format_number(char* out, double value);

// A file or standard input, read in large blocks.
class InputFile {
  public:
    // Opens `path`; "-" or "" is standard input. On failure ok() is false and error() says why.
    explicit InputFile(const std::string& path);
    // A file already in memory (as a browser hands over a dropped file), read under `name`; the
    // bytes are not copied and must outlive this object.
    InputFile(std::string name, const char* data, std::size_t size);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& name() const { return name_; }
    // Size in bytes when the input is a regular file, else -1.
    std::int64_t size() const { return size_; }
    // True when `path` names this very file (so writing it would destroy the input).
    bool is_same_file(const std::string& path) const;
    // A regular file: its size is known and it can be read at any offset.
    bool seekable() const { return size_ >= 0; }

    // Reads up to `n` bytes; 0 at the end of the input, -1 on a read error (see error()).
    std::ptrdiff_t read(char* into, std::size_t n);
    // Reads until `n` bytes are in or the input ends; the count read, or -1 on a read error.
    std::ptrdiff_t read_full(char* into, std::size_t n);
    // Reads exactly `n` bytes at `offset` of a seekable input; false on a read error or a short
    // read (error() then says which).
    bool read_at(char* into, std::size_t n, std::uint64_t offset);

  private:
    int fd_ = -1;
    bool owns_ = false;
    std::string name_;
    std::string error_;
    std::int64_t size_ = -1;
    std::uint64_t device_ = 0, inode_ = 0;
    const char* memory_ = nullptr;  // the bytes of an in-memory file, else null
    std::uint64_t memory_at_ = 0;
};

// Splits an input into lines without holding more than one block of it.
class LineReader {
  public:
    static constexpr std::size_t kBlock = 1 << 20;  // also the longest line accepted
    static constexpr std::size_t kFirstBlock = 1 << 16;  // grown to kBlock as the input asks

    explicit LineReader(InputFile& in);

    enum class Status { line, end, too_long, read_error };
    // The next line without its line end ("\n" or "\r\n"). The view stays valid until the next
    // call. A last line without a line end is still a line. After too_long the rest of that
    // line is skipped, so reading can go on with the next one.
    Status next(std::string_view& line);

    std::uint64_t line_number() const { return line_number_; }  // of the line just returned
    std::uint64_t bytes_consumed() const { return consumed_; }

  private:
    InputFile& in_;
    std::vector<char> buf_;
    std::size_t begin_ = 0, end_ = 0;
    bool eof_ = false;
    bool skipping_ = false;  // inside a line that was too long
    std::uint64_t line_number_ = 0;
    std::uint64_t consumed_ = 0;
};

// A file or standard output, written in large blocks. Errors are sticky and reported by flush().
class OutputFile {
  public:
    OutputFile();
    // Opens (creates or empties) `path`; "-" or "" is standard output. False on failure.
    bool open(const std::string& path);
    // Whether open(path) would give an output that can be rewritten in place later (a regular
    // file, not one opened for appending): asked before opening, so nothing is touched.
    static bool would_be_seekable(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    // The output is a pipe whose reader went away (`| head`): a write failed with EPIPE.
    bool reader_gone() const { return reader_gone_; }

    // Room for `n` more bytes (n at most kBlock); write them, then commit(end).
    char* reserve(std::size_t n) {
        if (used_ + n > buf_.size()) flush();
        return buf_.data() + used_;
    }
    void commit(const char* end) { used_ = static_cast<std::size_t>(end - buf_.data()); }
    void append(std::string_view s) {
        while (!s.empty()) {
            const std::size_t n = std::min(s.size(), kBlock);
            char* p = reserve(n);
            s.copy(p, n);
            commit(p + n);
            s.remove_prefix(n);
        }
    }
    bool flush();
    // Flushes, then overwrites `n` bytes at `offset` from where the output began (the header
    // of a file whose length was not known when it was started). Needs a seekable output.
    bool patch(std::uint64_t offset, const char* data, std::size_t n);
    bool seekable() const { return seekable_; }
    const std::string& name() const { return name_; }

    static constexpr std::size_t kBlock = 1 << 20;

  private:
    int fd_ = -1;
    bool owns_ = false;
    bool reader_gone_ = false;
    std::string name_;
    std::string error_;
    std::vector<char> buf_;
    std::size_t used_ = 0;
    bool seekable_ = false;
    std::int64_t start_ = 0;  // file offset where this output began
};

}  // namespace quil::retarget
