// The C exports as a freshly loaded library answers them: each run happens in a child process
// forked for it, so the hands' pinch latches and thumb references start from load time, and
// whatever the run does to them is gone afterwards.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <stdexcept>
#include <vector>

#include "quil_linear/quil_linear.h"
#include "support/glove_sequences.h"

namespace quil::test {

using ExportFn = double* (*)(double, double, double, double, double, double, double, double, double, double,
                             double, double);

struct Export {
    const char* name;
    ExportFn map;
    bool per_call;  // the result is a fresh buffer to release with FreeMemory
};

// Every hand's C export, in catalogue order.
inline const std::vector<Export>& exports() {
    static const std::vector<Export> all = {
#define PER_CALL true
#define PERSISTENT false
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) {#hand, &hand##_GetDataValue, buffer},
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
#undef PER_CALL
#undef PERSISTENT
    };
    return all;
}

// The samples through one export, in order: 24 doubles per sample.
inline std::vector<double> run_export(const Export& e, const std::vector<Sample>& samples) {
    std::vector<double> targets;
    targets.reserve(samples.size() * 24);
    for (const Sample& s : samples) {
        double* t = e.map(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10], s[11]);
        targets.insert(targets.end(), t, t + 24);
        if (e.per_call) FreeMemory(t);
    }
    return targets;
}

// Runs `work` in a forked child and returns the doubles it produced.
inline std::vector<double> in_fresh_process(const std::function<std::vector<double>()>& work) {
    int fd[2];
    if (pipe(fd) != 0) throw std::runtime_error("pipe failed");
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        close(fd[0]);
        const std::vector<double> v = work();
        const char* p = reinterpret_cast<const char*>(v.data());
        std::size_t left = v.size() * sizeof(double);
        while (left > 0) {
            const ssize_t n = write(fd[1], p, left);
            if (n <= 0) _exit(1);
            p += n;
            left -= static_cast<std::size_t>(n);
        }
        _exit(0);
    }
    close(fd[1]);
    std::vector<char> bytes;
    char buf[65536];
    for (ssize_t n; (n = read(fd[0], buf, sizeof buf)) > 0;) bytes.insert(bytes.end(), buf, buf + n);
    close(fd[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("child process failed");
    std::vector<double> v(bytes.size() / sizeof(double));
    std::memcpy(v.data(), bytes.data(), v.size() * sizeof(double));
    return v;
}

// What the export of a freshly loaded library gives for `samples`.
inline std::vector<double> fresh_export(const Export& e, const std::vector<Sample>& samples) {
    return in_fresh_process([&] { return run_export(e, samples); });
}

}  // namespace quil::test
