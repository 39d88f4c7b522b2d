// Fuzz target: arbitrary bytes as a recorded session, read by quil-retarget's reader of one
// format (FUZZ_FORMAT: csv, f64 or npy), from a file or from a pipe, with and without
// --skip-bad. The reader must hand out whole rows in order and stop with a message at the
// first fault, without crashing, reading out of bounds or leaking.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "session_source.h"

using namespace quil::retarget;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint8_t how = data[0];
    ++data;
    --size;
    const bool piped = (how & 1) && size < 60000;  // a pipe holds 64 KiB without a reader

    int fd;
    if (piped) {
        int p[2];
        if (pipe(p) != 0) std::abort();
        if (size && write(p[1], data, size) != static_cast<ssize_t>(size)) std::abort();
        close(p[1]);
        fd = p[0];
    } else {
        fd = memfd_create("session", 0);
        if (fd < 0 || (size && write(fd, data, size) != static_cast<ssize_t>(size)) || lseek(fd, 0, SEEK_SET) != 0)
            std::abort();
    }
    {
        InputFile in("/proc/self/fd/" + std::to_string(fd));
        SourceOptions options;
        options.format = Format::FUZZ_FORMAT;
        options.skip_bad = how & 2;
        options.time_numbers = static_cast<TimeNumbers>((how >> 2) % 3);
        std::string error;
        std::unique_ptr<Source> source = in.ok() ? open_source(in, options, error) : nullptr;
        if (source) {
            Block block;
            std::uint64_t rows = 0;
            for (;;) {
                const Source::Status status = source->next(block);
                if (block.rows > Block::kRows) std::abort();
                rows += block.rows;
                if (status == Source::Status::more) {
                    if (block.rows == 0) std::abort();
                    continue;
                }
                if (status != Source::Status::end && source->error().empty()) std::abort();
                break;
            }
            if (rows > source->rows_read()) std::abort();
        } else if (in.ok() && error.empty()) {
            std::abort();  // refused without saying why
        }
    }
    close(fd);
    return 0;
}
