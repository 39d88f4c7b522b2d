// quil-retarget live: glove samples from UDP or standard input, the hand's commands to UDP or
// standard output, one per sample as soon as it arrives, and a watchdog on a timer that keeps
// sending the held (then ramping to safe) commands while the glove is silent. Every received
// sample can be recorded with the time it was mapped at, so that `map --profile` gives back,
// bit for bit, the commands that were sent.
#include "live.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "map_session.h"
#include "npy.h"
#include "profile_json.h"
#include "quil_linear/hand.hpp"
#include "retarget_io.h"

namespace quil::retarget {

namespace {

volatile std::sig_atomic_t g_stop = 0;
extern "C" void on_signal(int) { g_stop = 1; }

double now() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// udp://HOST:PORT as an address; false with `error` otherwise.
bool udp_address(const std::string& url, sockaddr_storage& addr, socklen_t& len, std::string& error) {
    const std::string scheme = "udp://";
    const std::size_t colon = url.rfind(':');
    if (url.compare(0, scheme.size(), scheme) != 0 || colon == std::string::npos || colon < scheme.size()) {
        error = "'" + url + "' is neither - nor udp://HOST:PORT";
        return false;
    }
    std::string host = url.substr(scheme.size(), colon - scheme.size());
    const std::string port = url.substr(colon + 1);
    if (host.size() > 1 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int rc = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
    if (rc != 0 || !found) {
        error = "cannot resolve '" + url + "': " + gai_strerror(rc);
        return false;
    }
    std::memcpy(&addr, found->ai_addr, found->ai_addrlen);
    len = found->ai_addrlen;
    freeaddrinfo(found);
    return true;
}

double percentile(std::vector<double>& v, double p) {
    if (v.empty()) return 0.0;
    const std::size_t k = std::min(v.size() - 1, static_cast<std::size_t>(p * static_cast<double>(v.size())));
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(k), v.end());
    return v[k];
}

// Receipt-to-send latencies over a whole run, in constant memory: microsecond buckets up to
// 100 ms, the rest in the last one, and the exact maximum.
class LatencyHistogram {
  public:
    void add(double seconds) {
        const double us = seconds * 1e6;
        const std::size_t b = us <= 0 ? 0 : us >= static_cast<double>(kBuckets - 1) ? kBuckets - 1 : static_cast<std::size_t>(us);
        ++counts_[b];
        ++n_;
        max_ = std::max(max_, seconds);
    }
    std::string text() const {
        if (!n_) return "latency -";
        char b[128];
        std::snprintf(b, sizeof b, "latency p50 %.0f us, p99 %.0f us, max %.0f us", at(0.5), at(0.99), max_ * 1e6);
        return b;
    }

  private:
    static constexpr std::size_t kBuckets = 100001;
    double at(double p) const {
        const auto want = static_cast<std::uint64_t>(p * static_cast<double>(n_));
        std::uint64_t seen = 0;
        for (std::size_t i = 0; i < kBuckets; ++i) {
            seen += counts_[i];
            if (seen > want) return static_cast<double>(i);
        }
        return static_cast<double>(kBuckets - 1);
    }
    std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(kBuckets);
    std::uint64_t n_ = 0;
    double max_ = 0;
};

std::string latency_text(std::vector<double> v) {
    if (v.empty()) return "latency -";
    const double mx = *std::max_element(v.begin(), v.end());
    char b[128];
    std::snprintf(b, sizeof b, "latency p50 %.0f us, p99 %.0f us, max %.0f us", percentile(v, 0.5) * 1e6,
                  percentile(v, 0.99) * 1e6, mx * 1e6);
    return b;
}

class Bridge {
  public:
    Bridge(const LiveOptions& o, std::FILE* err) : o_(o), err_(err), hand_(o.hand->name) {}

    int run();

  private:
    bool open_ends(std::string& error);
    bool parse_text(const char* p, std::size_t n, const std::string& where, double* values, int& count);
    void sample(const double* values, int count, double received);
    void emit(double t, const double* values, bool stale);
    void send_bytes(const char* p, std::size_t n);
    void take_datagram(const char* p, std::size_t n, double received);
    void take_stdin(double received);
    void bad(const std::string& message);
    void print_stats(double at);
    bool finish_record(std::string& error);

    const LiveOptions& o_;
    std::FILE* err_;
    quil_linear::Hand hand_;
    ProfileFile profile_;
    std::vector<std::string> names_;
    int in_fd_ = -1, out_fd_ = -1;
    bool in_udp_ = false, out_udp_ = false;
    std::string pending_;  // standard input not yet a whole line or record
    std::uint64_t line_ = 0;
    double start_ = 0, last_received_ = 0, last_t_ = 0;
    bool started_ = false;
    std::vector<double> commands_;
    std::string out_text_;
    // Counts.
    std::uint64_t received_ = 0, sent_ = 0, ticks_sent_ = 0, bad_ = 0, send_errors_ = 0;
    std::uint64_t second_samples_ = 0;
    std::vector<double> second_latency_;
    LatencyHistogram all_latency_;
    bool output_failed_ = false;
    std::string output_error_;
    std::FILE* record_ = nullptr;
    std::uint64_t recorded_ = 0;
};

// A UDP socket bound to (listening) or connected to (sending) `url`; -1 with `error` set.
int udp_socket(const std::string& url, bool listen, std::string& error) {
    sockaddr_storage a;
    socklen_t len;
    if (!udp_address(url, a, len, error)) return -1;
    const int fd = ::socket(a.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr* at = reinterpret_cast<sockaddr*>(&a);
    if (fd < 0 || (listen ? ::bind(fd, at, len) : ::connect(fd, at, len)) != 0) {
        error = (listen ? "cannot listen on " : "cannot send to ") + url + ": " + std::strerror(errno);
        if (fd >= 0) ::close(fd);
        return -1;
    }
    return fd;
}

bool Bridge::open_ends(std::string& error) {
    in_udp_ = o_.in != "-";
    in_fd_ = in_udp_ ? udp_socket(o_.in, true, error) : STDIN_FILENO;
    if (in_fd_ < 0) return false;
    out_udp_ = o_.out != "-";
    out_fd_ = out_udp_ ? udp_socket(o_.out, false, error) : STDOUT_FILENO;
    return out_fd_ >= 0;
}

void Bridge::bad(const std::string& message) {
    ++bad_;
    if (bad_ <= 10) std::fprintf(err_, "quil-retarget: %s\n", message.c_str());
    if (bad_ == 10) std::fprintf(err_, "quil-retarget: further bad samples are only counted\n");
}

// One CSV line: 12 readings, or 13 with the time first.
bool Bridge::parse_text(const char* p, std::size_t n, const std::string& where, double* values, int& count) {
    count = 0;
    std::size_t at = 0;
    while (at <= n) {
        std::size_t end = at;
        while (end < n && p[end] != ',') ++end;
        std::string field(p + at, end - at);
        const std::size_t b = field.find_first_not_of(" \t\r"), e = field.find_last_not_of(" \t\r");
        field = b == std::string::npos ? "" : field.substr(b, e - b + 1);
        char* stop = nullptr;
        errno = 0;
        const double v = field.empty() ? 0.0 : std::strtod(field.c_str(), &stop);
        if (field.empty() || *stop != '\0') {
            bad(where + ": field " + std::to_string(count + 1) + " ('" + field.substr(0, 20) + "') is not a number");
            return false;
        }
        if (count == 13) {
            bad(where + ": more than 13 fields (12 readings, or the time and 12 readings)");
            return false;
        }
        values[count++] = v;
        at = end + 1;
    }
    if (count != 12 && count != 13) {
        bad(where + ": " + std::to_string(count) + " fields; a sample is 12 readings, or the time and 12 readings");
        return false;
    }
    return true;
}

void Bridge::send_bytes(const char* p, std::size_t n) {
    if (output_failed_) return;
    if (out_udp_) {
        if (::send(out_fd_, p, n, 0) < 0) ++send_errors_;
        return;
    }
    while (n) {
        const ssize_t w = ::write(out_fd_, p, n);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) {
            output_failed_ = true;
            output_error_ = std::string("standard output: ") + std::strerror(errno);
            g_stop = 1;
            return;
        }
        p += w;
        n -= static_cast<std::size_t>(w);
    }
}

void Bridge::emit(double t, const double* values, bool stale) {
    const std::size_t n = commands_.size();
    out_text_.clear();
    if (o_.out_format == "f64") {
        out_text_.assign(reinterpret_cast<const char*>(values), n * sizeof(double));
    } else if (o_.out_format == "f32") {
        for (std::size_t i = 0; i < n; ++i) {
            const float f = static_cast<float>(values[i]);
            out_text_.append(reinterpret_cast<const char*>(&f), sizeof f);
        }
    } else {
        char num[kMaxNumberText + 1];
        auto number = [&](double v) {
            if (o_.out_format == "json" && !std::isfinite(v)) return std::string("null");
            return std::string(num, format_number(num, v));
        };
        if (o_.out_format == "csv") {
            out_text_ = number(t);
            for (std::size_t i = 0; i < n; ++i) out_text_ += "," + number(values[i]);
        } else {
            out_text_ = "{\"t\":" + number(t) + ",\"stale\":" + (stale ? "true" : "false") + ",\"commands\":{";
            for (std::size_t i = 0; i < n; ++i)
                out_text_ += (i ? ",\"" : "\"") + names_[i] + "\":" + number(values[i]);
            out_text_ += "}}";
        }
        out_text_ += '\n';
    }
    send_bytes(out_text_.data(), out_text_.size());
}

void Bridge::sample(const double* values, int count, double received) {
    ++received_;
    ++second_samples_;
    const double t = count == 13 ? values[0] : received - start_;
    const double* readings = count == 13 ? values + 1 : values;
    hand_.map_at(1, &t, readings, commands_.data());
    if (record_) {
        double row[13];
        row[0] = t;
        std::memcpy(row + 1, readings, 12 * sizeof(double));
        if (std::fwrite(row, sizeof row, 1, record_) == 1) ++recorded_;
    }
    emit(t, commands_.data(), false);
    ++sent_;
    const double latency = now() - received;
    second_latency_.push_back(latency);
    all_latency_.add(latency);
    if (std::isfinite(t) && (!started_ || t > last_t_)) {
        last_t_ = t;
        last_received_ = received;
        started_ = true;
    }
}

void Bridge::take_datagram(const char* p, std::size_t n, double received) {
    const std::string where = o_.in + " datagram " + std::to_string(received_ + bad_ + 1);
    double values[13];
    int count = 0;
    if (o_.in_format == "csv") {
        while (n && (p[n - 1] == '\n' || p[n - 1] == '\r')) --n;
        if (!parse_text(p, n, where, values, count)) return;
    } else {
        const std::size_t width = o_.in_format == "f32" ? 4 : 8;
        if (n != 12 * width && n != 13 * width) {
            bad(where + ": " + std::to_string(n) + " bytes; a sample is 12 or 13 " + o_.in_format + " values (" +
                std::to_string(12 * width) + " or " + std::to_string(13 * width) + " bytes)");
            return;
        }
        count = static_cast<int>(n / width);
        for (int i = 0; i < count; ++i) {
            if (width == 4) {
                float f;
                std::memcpy(&f, p + 4 * i, 4);
                values[i] = f;
            } else {
                std::memcpy(&values[i], p + 8 * i, 8);
            }
        }
    }
    if (o_.in_columns && count != o_.in_columns) {
        bad(where + ": " + std::to_string(count) + " values where --in-columns says " + std::to_string(o_.in_columns));
        return;
    }
    sample(values, count, received);
}

void Bridge::take_stdin(double received) {
    if (o_.in_format == "csv") {
        std::size_t start = 0;
        for (;;) {
            const std::size_t eol = pending_.find('\n', start);
            if (eol == std::string::npos) break;
            ++line_;
            std::string line = pending_.substr(start, eol - start);
            start = eol + 1;
            if (!line.empty() && line.back() == '\r') line.pop_back();
            const std::size_t first = line.find_first_not_of(" \t");
            if (first == std::string::npos || line[first] == '#') continue;
            if (line_ == 1) {
                // A first line whose first field is not a number is a heading, not a sample.
                const std::string field = line.substr(first, line.find(',', first) - first);
                char* stop = nullptr;
                std::strtod(field.c_str(), &stop);
                if (stop == field.c_str()) continue;
            }
            double values[13];
            int count = 0;
            if (!parse_text(line.data(), line.size(), "stdin:" + std::to_string(line_), values, count)) continue;
            sample(values, count, received);
        }
        pending_.erase(0, start);
        return;
    }
    const std::size_t width = o_.in_format == "f32" ? 4 : 8;
    const int columns = o_.in_columns ? o_.in_columns : 12;
    const std::size_t record = width * static_cast<std::size_t>(columns);
    std::size_t at = 0;
    for (; pending_.size() - at >= record; at += record) {
        double values[13];
        for (int i = 0; i < columns; ++i) {
            if (width == 4) {
                float f;
                std::memcpy(&f, pending_.data() + at + 4 * i, 4);
                values[i] = f;
            } else {
                std::memcpy(&values[i], pending_.data() + at + 8 * i, 8);
            }
        }
        sample(values, columns, received);
    }
    pending_.erase(0, at);
}

void Bridge::print_stats(double at) {
    quil_counters c = hand_.counters();
    std::fprintf(err_, "live %.0f s: %llu samples (%llu/s), %s; held %llu, rejected %llu, stale %llu, bad %llu\n",
                 at - start_, static_cast<unsigned long long>(received_), static_cast<unsigned long long>(second_samples_),
                 latency_text(second_latency_).c_str(), static_cast<unsigned long long>(c.held),
                 static_cast<unsigned long long>(c.rejected), static_cast<unsigned long long>(c.stale),
                 static_cast<unsigned long long>(bad_));
    std::fflush(err_);
    second_latency_.clear();
    second_samples_ = 0;
}

bool Bridge::finish_record(std::string& error) {
    if (!record_) return true;
    const std::string header = npy::header_for(recorded_, 13);
    const bool ok = std::fflush(record_) == 0 && std::fseek(record_, 0, SEEK_SET) == 0 &&
                    std::fwrite(header.data(), header.size(), 1, record_) == 1 && std::fclose(record_) == 0;
    record_ = nullptr;
    if (!ok) error = "cannot complete the record '" + o_.record + "': " + std::strerror(errno);
    return ok;
}

int Bridge::run() {
    std::string error;
    if (!o_.profile.empty()) {
        if (!read_profile(o_.profile, o_.hand, profile_, error)) return std::fprintf(err_, "quil-retarget: %s\n", error.c_str()), kExitUsage;
        if (o_.hold_after) profile_.profile.hold_after = *o_.hold_after;
        if (o_.safe_after) profile_.profile.safe_after = *o_.safe_after;
        try {
            hand_.set_profile(profile_.profile);
        } catch (const quil_linear::Error& e) {
            return std::fprintf(err_, "quil-retarget: %s: %s\n", o_.profile.c_str(), e.what()), kExitUsage;
        }
    } else if (o_.hold_after || o_.safe_after) {
        return std::fprintf(err_, "quil-retarget: --hold-after and --safe-after need a --profile\n"), kExitUsage;
    }
    if (o_.dropout) hand_.set_dropout(static_cast<quil_linear::Dropout>(*o_.dropout));
    names_ = hand_.output_names();
    commands_.assign(hand_.output_count(), 0.0);
    if (!open_ends(error)) return std::fprintf(err_, "quil-retarget: %s\n", error.c_str()), kExitIo;
    if (!o_.record.empty()) {
        record_ = std::fopen(o_.record.c_str(), "wb");
        const std::string header = npy::header_for(0, 13);
        if (!record_ || std::fwrite(header.data(), header.size(), 1, record_) != 1)
            return std::fprintf(err_, "quil-retarget: cannot write the record '%s'\n", o_.record.c_str()), kExitIo;
        if (!o_.profile.empty()) {
            // The profile as it ran (with --hold-after/--safe-after applied), beside the record,
            // so that `map --profile` on the record gives back exactly what was sent.
            const std::string beside = o_.record + ".profile.json";
            try {
                std::ifstream in(o_.profile);
                nlohmann::json j = nlohmann::json::parse(in);
                if (o_.hold_after) j["hold_after"] = *o_.hold_after;
                if (o_.safe_after) j["safe_after"] = *o_.safe_after;
                std::ofstream out(beside);
                out << j.dump(2) << "\n";
                if (!out.flush()) throw std::runtime_error("cannot be written");
            } catch (const std::exception& e) {
                return std::fprintf(err_, "quil-retarget: %s: %s\n", beside.c_str(), e.what()), kExitIo;
            }
        }
    }

    std::fprintf(err_, "quil-retarget live: %s, %zu outputs; reading %s (%s), sending %s (%s)\n", o_.hand->name,
                 commands_.size(), o_.in.c_str(), o_.in_format.c_str(), o_.out.c_str(), o_.out_format.c_str());
    std::fflush(err_);
    struct sigaction sa{};
    sa.sa_handler = on_signal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    start_ = now();
    double next_tick = start_ + o_.tick, next_stats = start_ + 1.0;
    std::vector<char> buffer(65536);
    bool input_open = true;
    while (!g_stop && input_open) {
        const double until = std::min(next_tick, next_stats);
        const double wait = std::max(0.0, until - now());
        timespec ts{static_cast<time_t>(wait), static_cast<long>((wait - std::floor(wait)) * 1e9)};
        pollfd pfd{in_fd_, POLLIN, 0};
        const int ready = ::ppoll(&pfd, 1, &ts, nullptr);
        if (ready < 0 && errno != EINTR) {
            error = std::string("waiting for input: ") + std::strerror(errno);
            break;
        }
        if (ready > 0) {
            if (in_udp_) {
                for (;;) {
                    const ssize_t n = ::recv(in_fd_, buffer.data(), buffer.size(), MSG_DONTWAIT);
                    if (n < 0) break;
                    take_datagram(buffer.data(), static_cast<std::size_t>(n), now());
                }
            } else {
                const ssize_t n = ::read(in_fd_, buffer.data(), buffer.size());
                if (n > 0) {
                    pending_.append(buffer.data(), static_cast<std::size_t>(n));
                    take_stdin(now());
                } else if (n == 0 || errno != EINTR) {
                    input_open = false;
                    if (n < 0) error = std::string("standard input: ") + std::strerror(errno);
                }
            }
        }
        const double t_now = now();
        if (t_now >= next_tick) {
            // The watchdog, on the samples' clock: the last sample's time plus what has passed.
            if (started_ && hand_.has_profile()) {
                const double t = last_t_ + (t_now - last_received_);
                bool stale = false;
                std::vector<double> held = hand_.tick(t, &stale);
                if (stale) {
                    emit(t, held.data(), true);
                    ++ticks_sent_;
                }
            }
            next_tick = t_now + o_.tick;
        }
        if (t_now >= next_stats) {
            if (o_.stats) print_stats(t_now);
            else second_latency_.clear(), second_samples_ = 0;
            if (record_) std::fflush(record_);
            next_stats = t_now + 1.0;
        }
    }
    if (!pending_.empty() && o_.in == "-")
        bad("stdin: the input ends inside a sample (" + std::to_string(pending_.size()) + " bytes left over)");

    std::string record_error;
    const bool recorded = finish_record(record_error);
    const quil_counters c = hand_.counters();
    std::fprintf(err_,
                 "quil-retarget live: %llu samples received, %llu commands sent, %llu watchdog commands sent, "
                 "%llu bad samples; held %llu, rejected %llu, limited %llu, stale %llu; %s\n",
                 static_cast<unsigned long long>(received_), static_cast<unsigned long long>(sent_),
                 static_cast<unsigned long long>(ticks_sent_), static_cast<unsigned long long>(bad_),
                 static_cast<unsigned long long>(c.held), static_cast<unsigned long long>(c.rejected),
                 static_cast<unsigned long long>(c.limited), static_cast<unsigned long long>(c.stale),
                 all_latency_.text().c_str());
    if (send_errors_)
        std::fprintf(err_, "quil-retarget: %llu commands could not be sent to %s\n",
                     static_cast<unsigned long long>(send_errors_), o_.out.c_str());
    if (!o_.record.empty() && recorded) {
        // The default policy goes without saying; any other is named as map takes it.
        const std::string dropout = hand_.dropout() == quil_linear::Dropout::pass
                                        ? ""
                                        : std::string(" --dropout ") + quil_linear::dropout_name(hand_.dropout());
        std::fprintf(err_, "quil-retarget: recorded %llu samples to %s; the commands again: quil-retarget map -m %s%s%s%s %s -o FILE\n",
                     static_cast<unsigned long long>(recorded_), o_.record.c_str(), o_.hand->name,
                     o_.profile.empty() ? "" : " --profile ", o_.profile.empty() ? "" : (o_.record + ".profile.json").c_str(),
                     dropout.c_str(), o_.record.c_str());
    }
    if (!error.empty()) std::fprintf(err_, "quil-retarget: %s\n", error.c_str());
    if (!record_error.empty()) std::fprintf(err_, "quil-retarget: %s\n", record_error.c_str());
    if (output_failed_) std::fprintf(err_, "quil-retarget: %s\n", output_error_.c_str());
    if (!error.empty() || !record_error.empty() || output_failed_ || send_errors_) return kExitIo;
    return bad_ ? kExitBadData : kExitOk;
}

}  // namespace

int run_live(const LiveOptions& options, std::FILE* err) {
    Bridge bridge(options, err);
    return bridge.run();
}

}  // namespace quil::retarget
