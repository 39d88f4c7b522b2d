#include "svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace quil::retarget {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Twelve colours that stay apart on white; targets past the twelfth reuse them dashed.
constexpr const char* kPalette[12] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728",
                                      "#9467bd", "#8c564b", "#e377c2", "#7f7f7f",
                                      "#bcbd22", "#17becf", "#393b79", "#637939"};

std::string escape(const std::string& s) {
    std::string r;
    for (char c : s) {
        switch (c) {
            case '&': r += "&amp;"; break;
            case '<': r += "&lt;"; break;
            case '>': r += "&gt;"; break;
            case '"': r += "&quot;"; break;
            default:
                // Control bytes are not allowed in XML text.
                if (static_cast<unsigned char>(c) < 0x20) r += ' ';
                else r += c;
        }
    }
    return r;
}

std::string fmt(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string fmt(const char* format, ...) {
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    char buf[512];
    const int n = std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    std::string r;
    if (n >= 0 && static_cast<std::size_t>(n) < sizeof buf) {
        r.assign(buf, static_cast<std::size_t>(n));
    } else if (n >= 0) {
        r.resize(static_cast<std::size_t>(n) + 1);
        std::vsnprintf(r.data(), r.size(), format, again);
        r.resize(static_cast<std::size_t>(n));
    }
    va_end(again);
    return r;
}

std::string short_number(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.6g", v);
    return buf;
}

struct Axis {
    double lo, hi;
    double step;
    int decimals;
};

// A range padded to round ticks 1, 2 or 5 times a power of ten apart, about `want` of them.
Axis nice_axis(double lo, double hi, int want, bool pad) {
    if (!(lo <= hi)) lo = 0.0, hi = 1.0;
    lo = std::max(lo, -1e300);
    hi = std::min(hi, 1e300);
    if (hi - lo < 1e-12 * std::max(1.0, std::fabs(hi))) {
        const double d = std::max(1.0, std::fabs(hi) * 0.1);
        lo -= d;
        hi += d;
    } else if (pad) {
        const double d = (hi - lo) * 0.05;
        lo -= d;
        hi += d;
    }
    const double raw = (hi - lo) / want;
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double f = raw / mag;
    const double step = (f < 1.5 ? 1.0 : f < 3.5 ? 2.0 : f < 7.5 ? 5.0 : 10.0) * mag;
    Axis a;
    a.lo = lo;
    a.hi = hi;
    a.step = step;
    a.decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    return a;
}

}  // namespace

SessionPlot::SessionPlot(std::size_t max_buckets) : max_buckets_(std::max<std::size_t>(2, max_buckets & ~std::size_t(1))) {
    buckets_.reserve(max_buckets_);
    lo_.fill(kInf);
    hi_.fill(-kInf);
    constant_.fill(true);
}

void SessionPlot::add(double time, const double* inputs, const double* outputs) {
    double v[kChannels];
    std::copy(inputs, inputs + kInputs, v);
    std::copy(outputs, outputs + kOutputs, v + kInputs);
    if (!std::isfinite(time)) all_times_finite_ = false;

    if (buckets_.empty() || buckets_.back().count >= per_bucket_) {
        if (buckets_.size() == max_buckets_) merge_pairs();
        Bucket b;
        b.t_first = time;
        b.i_first = samples_;
        b.count = 0;
        b.lo.fill(kInf);
        b.hi.fill(-kInf);
        std::copy(v, v + kChannels, b.first.begin());
        buckets_.push_back(b);
    }
    Bucket& b = buckets_.back();
    b.t_last = time;
    b.i_last = samples_;
    ++b.count;
    for (int c = 0; c < kChannels; ++c) {
        const double x = v[c];
        b.last[c] = x;
        if (samples_ == 0) first_value_[c] = x;
        else if (!(x == first_value_[c])) constant_[c] = false;
        if (std::isfinite(x)) {
            b.lo[c] = std::min(b.lo[c], x);
            b.hi[c] = std::max(b.hi[c], x);
            lo_[c] = std::min(lo_[c], x);
            hi_[c] = std::max(hi_[c], x);
        } else {
            ++nonfinite_[c];
            constant_[c] = false;
        }
    }
    ++samples_;
}

// Halves the number of buckets by joining neighbours; later buckets hold twice as many samples.
void SessionPlot::merge_pairs() {
    std::size_t out = 0;
    for (std::size_t i = 0; i + 1 < buckets_.size(); i += 2, ++out) {
        Bucket m = buckets_[i];
        const Bucket& n = buckets_[i + 1];
        m.t_last = n.t_last;
        m.i_last = n.i_last;
        m.count += n.count;
        for (int c = 0; c < kChannels; ++c) {
            m.last[c] = n.last[c];
            m.lo[c] = std::min(m.lo[c], n.lo[c]);
            m.hi[c] = std::max(m.hi[c], n.hi[c]);
        }
        buckets_[out] = m;
    }
    buckets_.resize(out);
    per_bucket_ *= 2;
}

std::string SessionPlot::svg(const Labels& labels) const {
    constexpr double W = 1200, H = 870;
    constexpr double left = 80, right = 960, legend_x = 985;
    constexpr double panel_h = 310;
    const double tops[2] = {95, 505};

    const bool use_time = !labels.time_name.empty() && all_times_finite_ && samples_ > 0;
    auto bucket_x = [&](const Bucket& b, bool last) {
        return use_time ? (last ? b.t_last : b.t_first)
                        : static_cast<double>(last ? b.i_last : b.i_first);
    };
    double xlo = kInf, xhi = -kInf;
    for (const Bucket& b : buckets_) {
        xlo = std::min({xlo, bucket_x(b, false), bucket_x(b, true)});
        xhi = std::max({xhi, bucket_x(b, false), bucket_x(b, true)});
    }
    if (buckets_.empty()) xlo = 0, xhi = 1;
    Axis xa = nice_axis(xlo, xhi, 10, false);
    // Let the time axis start and end on ticks (0 to 20 s rather than 0 to 19.99 s).
    xa.lo = std::floor(xa.lo / xa.step + 1e-9) * xa.step;
    xa.hi = std::ceil(xa.hi / xa.step - 1e-9) * xa.step;
    const std::string x_title = use_time ? labels.time_name : "sample";

    std::string s;
    s.reserve(1 << 20);
    s += fmt("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
             "viewBox=\"0 0 %.0f %.0f\" font-family=\"DejaVu Sans, Arial, sans-serif\">\n",
             W, H, W, H);
    s += fmt("<rect width=\"%.0f\" height=\"%.0f\" fill=\"white\"/>\n", W, H);
    s += fmt("<text x=\"%.0f\" y=\"30\" font-size=\"19\" font-weight=\"bold\">", left) +
         escape(labels.title) + "</text>\n";
    std::string sub = escape(labels.source) + fmt(", %llu samples", static_cast<unsigned long long>(samples_));
    if (per_bucket_ > 1)
        sub += fmt("; drawn from %zu groups of up to %llu samples (lowest and highest of each)",
                   buckets_.size(), static_cast<unsigned long long>(per_bucket_));
    s += fmt("<text x=\"%.0f\" y=\"52\" font-size=\"12\" fill=\"#555\">", left) + sub + "</text>\n";

    for (int panel = 0; panel < 2; ++panel) {
        const double top = tops[panel], bottom = top + panel_h;
        const int c0 = panel == 0 ? 0 : kInputs;
        const int n = panel == 0 ? kInputs : kOutputs;
        auto name = [&](int c) {
            if (panel == 0) {
                const std::string& given = labels.input_names[c];
                return given.empty() ? "x" + std::to_string(c) : given;
            }
            return "out" + std::to_string(c - kInputs);
        };

        // Channels that never change are listed, not drawn: a flat line per constant slot
        // would hide the moving ones.
        std::vector<int> drawn, flat;
        double ylo = kInf, yhi = -kInf;
        for (int c = c0; c < c0 + n; ++c) {
            if (samples_ > 0 && constant_[c]) {
                flat.push_back(c);
                continue;
            }
            drawn.push_back(c);
            ylo = std::min(ylo, lo_[c]);
            yhi = std::max(yhi, hi_[c]);
        }
        if (ylo > yhi) {  // nothing finite to draw: scale around the constants
            for (int c : flat) ylo = std::min(ylo, first_value_[c]), yhi = std::max(yhi, first_value_[c]);
        }
        const Axis ya = nice_axis(ylo, yhi, 6, true);
        auto px = [&](double x) { return left + (x - xa.lo) / (xa.hi - xa.lo) * (right - left); };
        auto py = [&](double y) { return bottom - (y - ya.lo) / (ya.hi - ya.lo) * panel_h; };

        const std::string panel_title =
            panel == 0 ? "Glove readings (input)" : "Joint targets (output of " + labels.title + ")";
        s += fmt("<text x=\"%.0f\" y=\"%.0f\" font-size=\"14\" font-weight=\"bold\">%s</text>\n",
                 left, top - 10, escape(panel_title).c_str());
        s += fmt("<clipPath id=\"clip%d\"><rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/></clipPath>\n",
                 panel, left, top, right - left, panel_h);
        s += fmt("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"#fbfbfb\" stroke=\"#999\"/>\n",
                 left, top, right - left, panel_h);

        // Grid and tick labels.
        s += "<g font-size=\"11\" fill=\"#333\">\n";
        for (double t = std::ceil(ya.lo / ya.step) * ya.step; t <= ya.hi + ya.step * 1e-9; t += ya.step) {
            const double y = py(t);
            const double shown = std::fabs(t) < ya.step * 1e-9 ? 0.0 : t;
            s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e2e2e2\"/>"
                     "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">%.*f</text>\n",
                     left, y, right, y, left - 6, y + 4, ya.decimals, shown);
        }
        for (double t = std::ceil(xa.lo / xa.step) * xa.step; t <= xa.hi + xa.step * 1e-9; t += xa.step) {
            const double x = px(t);
            const double shown = std::fabs(t) < xa.step * 1e-9 ? 0.0 : t;
            s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e2e2e2\"/>"
                     "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">%.*f</text>\n",
                     x, top, x, bottom, x, bottom + 16, xa.decimals, shown);
        }
        s += "</g>\n";
        s += fmt("<text x=\"%.1f\" y=\"%.1f\" font-size=\"12\" text-anchor=\"middle\">%s</text>\n",
                 (left + right) / 2, bottom + 36, escape(x_title).c_str());
        s += fmt("<text transform=\"translate(%.1f %.1f) rotate(-90)\" font-size=\"12\" "
                 "text-anchor=\"middle\">%s</text>\n",
                 left - 52, (top + bottom) / 2, panel == 0 ? "glove reading" : "joint target");

        if (samples_ == 0)
            s += fmt("<text x=\"%.1f\" y=\"%.1f\" font-size=\"14\" fill=\"#888\" text-anchor=\"middle\">no samples</text>\n",
                     (left + right) / 2, (top + bottom) / 2);

        // The traces: each group gives its first point and its extremes in time order.
        for (std::size_t k = 0; k < drawn.size(); ++k) {
            const int c = drawn[k];
            const int style = c - c0;
            std::string d;
            bool pen_down = false;
            for (const Bucket& b : buckets_) {
                if (b.lo[c] > b.hi[c]) {  // no finite value in this group: leave a gap
                    pen_down = false;
                    continue;
                }
                const double x0 = px(bucket_x(b, false)), x1 = px(bucket_x(b, true));
                const bool rising = !(b.first[c] > b.last[c]);
                const double ya0 = py(rising ? b.lo[c] : b.hi[c]), ya1 = py(rising ? b.hi[c] : b.lo[c]);
                d += fmt("%c%.1f %.1f", pen_down ? 'L' : 'M', x0, ya0);
                if (b.count > 1) d += fmt("L%.1f %.1f", x1, ya1);
                pen_down = true;
            }
            if (d.empty()) continue;
            s += "<path d=\"" + d + "\"";
            s += fmt(" fill=\"none\" stroke=\"%s\" stroke-width=\"1.4\"%s "
                     "stroke-linejoin=\"round\" clip-path=\"url(#clip%d)\"/>\n",
                     kPalette[style % 12], style >= 12 ? " stroke-dasharray=\"6 3\"" : "", panel);
        }

        // Legend: the drawn channels with their colours, then the constant ones with their value.
        const std::size_t lines = drawn.size() + (flat.empty() ? 0 : flat.size() + 1);
        const double step = lines ? std::min(18.0, panel_h / static_cast<double>(lines)) : 18.0;
        const double font = std::min(12.0, step - 1.5);
        double y = top + step * 0.75;
        s += fmt("<g font-size=\"%.1f\" fill=\"#222\">\n", font);
        for (int c : drawn) {
            const int style = c - c0;
            std::string label = name(c);
            if (nonfinite_[c]) label += fmt(" (%llu NaN/inf not drawn)", static_cast<unsigned long long>(nonfinite_[c]));
            s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\" stroke-width=\"2.5\"%s/>"
                     "<text x=\"%.1f\" y=\"%.1f\">%s</text>\n",
                     legend_x, y - font * 0.35, legend_x + 22, y - font * 0.35, kPalette[style % 12],
                     style >= 12 ? " stroke-dasharray=\"6 3\"" : "", legend_x + 28, y, escape(label).c_str());
            y += step;
        }
        if (!flat.empty()) {
            s += fmt("<text x=\"%.1f\" y=\"%.1f\" fill=\"#666\" font-style=\"italic\">constant:</text>\n", legend_x, y);
            y += step;
            for (int c : flat) {
                s += fmt("<text x=\"%.1f\" y=\"%.1f\" fill=\"#666\">%s = %s</text>\n", legend_x + 8, y,
                         escape(name(c)).c_str(), short_number(first_value_[c]).c_str());
                y += step;
            }
        }
        s += "</g>\n";
    }
    s += "</svg>\n";
    return s;
}

}  // namespace quil::retarget
