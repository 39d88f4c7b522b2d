#include "svg_plot.h"

#include "retarget_io.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <map>

namespace quil::retarget {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Twelve colours that stay apart on white, for the readings; a target panel uses the first six.
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
    if (v == 0) v = 0.0;  // a slot held at zero reads "0", whichever zero the hand gave
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

SessionPlot::SessionPlot(std::size_t max_buckets)
    : max_buckets_(std::max<std::size_t>(2, max_buckets & ~std::size_t(1))) {
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

namespace {

constexpr const char* kGroups[] = {"thumb", "index", "middle", "ring", "little"};

std::string group_of(const std::string& role) {
    std::string word = role.substr(0, role.find('_'));
    for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const char* g : kGroups)
        if (word == g) return g;
    return "other";
}

std::string capitalised(std::string s) {
    if (!s.empty()) s[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(s[0])));
    return s;
}

}  // namespace

std::vector<SessionPlot::Panel> SessionPlot::target_panels(const std::array<std::string, kOutputs>& roles,
                                                           const std::array<bool, kOutputs>& constant) {
    std::vector<Panel> panels;
    std::vector<std::string> order(std::begin(kGroups), std::end(kGroups));
    order.push_back("other");
    for (const std::string& g : order) {
        std::vector<int> drawn, flat;
        for (int s = 0; s < kOutputs; ++s) {
            if (group_of(roles[s]) != g) continue;
            (constant[s] ? flat : drawn).push_back(s);
        }
        if (drawn.empty() && flat.empty()) continue;
        // More moving slots than can be told apart: split evenly, the constants go last.
        const std::size_t parts = std::max<std::size_t>(1, (drawn.size() + kMaxLines - 1) / kMaxLines);
        std::size_t at = 0;
        for (std::size_t p = 0; p < parts; ++p) {
            Panel panel;
            panel.title = capitalised(g);
            if (parts > 1) panel.title += " (" + std::to_string(p + 1) + " of " + std::to_string(parts) + ")";
            const std::size_t n = (drawn.size() - at) / (parts - p);
            panel.drawn.assign(drawn.begin() + static_cast<std::ptrdiff_t>(at), drawn.begin() + static_cast<std::ptrdiff_t>(at + n));
            at += n;
            if (p + 1 == parts) panel.constant = flat;
            panels.push_back(panel);
        }
    }
    return panels;
}

namespace {

struct Rect {
    double left, top, right, bottom;
};

struct Trace {
    int channel;
    std::string label;
    const char* colour;
};

// The page: the readings' chart across the top, then the target charts two to a row.
constexpr double kWidth = 1400;
constexpr double kTopPanelH = 250, kSmallH = 165, kSmallPitch = 235;
constexpr double kGridTop = 95 + kTopPanelH + 95;

}  // namespace

// One drawing of the session: the SVG text so far, and the time (or sample) axis every chart
// on the page shares.
class SessionPlot::Drawing {
  public:
    Drawing(const SessionPlot& plot, const Labels& labels);

    // The page's size, background, title and the line saying what was drawn.
    void page(std::size_t target_panels);
    // The twelve glove readings, twelve colours, across the top.
    void readings_panel();
    // The heading over the grid of target panels.
    void targets_heading();
    // The target panel `p` of the grid: one finger group's moving slots, its constants listed.
    void target_panel(std::size_t p, const Panel& panel);
    std::string finish();

  private:
    double bucket_x(const Bucket& b, bool last) const {
        return use_time_ ? (last ? b.t_last : b.t_first) - x_origin_ : static_cast<double>(last ? b.i_last : b.i_first);
    }
    std::string note_nonfinite(int c, std::string label) const;
    // One chart: frame, grid, traces, and a legend at `legend_x` of the drawn traces followed
    // by the constant channels.
    void chart(const std::string& title, const Rect& r, const std::vector<Trace>& traces,
               const std::vector<std::string>& constants, double legend_x, double font, const char* y_title);
    // Where a chart's values land on the page: its frame, and its value axis over the traces.
    struct Frame {
        Rect r;
        Axis xa, ya;
        int clip;
        double px(double x) const { return r.left + (x - xa.lo) / (xa.hi - xa.lo) * (r.right - r.left); }
        double py(double y) const { return r.bottom - (y - ya.lo) / (ya.hi - ya.lo) * (r.bottom - r.top); }
    };
    // The chart's title, frame, grid with tick labels and axis titles.
    void frame(const Frame& f, const std::string& title, const char* y_title);
    // Each trace from the buckets: its first point and its extremes in time order.
    void traces(const Frame& f, const std::vector<Trace>& traces);
    void legend(const Rect& r, const std::vector<Trace>& traces, const std::vector<std::string>& constants,
                double legend_x, double font);

    const SessionPlot& plot_;
    const Labels& labels_;
    bool use_time_;
    // A recorder's clock (milliseconds since 1970, say) is drawn from its first sample, so the
    // axis reads as elapsed time rather than thirteen-digit labels.
    double x_origin_ = 0;
    Axis xa_;
    std::string x_title_;
    std::string s_;
    int clip_id_ = 0;
};

SessionPlot::Drawing::Drawing(const SessionPlot& plot, const Labels& labels)
    : plot_(plot), labels_(labels),
      use_time_(!labels.time_name.empty() && plot.all_times_finite_ && plot.samples_ > 0) {
    double xlo = kInf, xhi = -kInf;
    for (const Bucket& b : plot_.buckets_) {
        xlo = std::min({xlo, bucket_x(b, false), bucket_x(b, true)});
        xhi = std::max({xhi, bucket_x(b, false), bucket_x(b, true)});
    }
    if (plot_.buckets_.empty()) xlo = 0, xhi = 1;
    if (use_time_ && std::fabs(xlo) > 1000 * std::max(xhi - xlo, 1e-300)) {
        x_origin_ = xlo;
        xhi -= xlo;
        xlo = 0;
    }
    xa_ = nice_axis(xlo, xhi, 8, false);
    // Let the time axis start and end on ticks (0 to 20 s rather than 0 to 19.99 s).
    xa_.lo = std::floor(xa_.lo / xa_.step + 1e-9) * xa_.step;
    xa_.hi = std::ceil(xa_.hi / xa_.step - 1e-9) * xa_.step;
    x_title_ = !use_time_                ? "sample"
               : labels.time_unit.empty() ? labels.time_name
                                          : labels.time_name + " (" + labels.time_unit + ")";
    if (x_origin_ != 0) {
        char origin[kMaxNumberText];
        x_title_ += " from " + (x_origin_ == std::floor(x_origin_) && std::fabs(x_origin_) < 1e17
                                    ? fmt("%.0f", x_origin_)
                                    : std::string(origin, format_number(origin, x_origin_)));
    }
}

void SessionPlot::Drawing::page(std::size_t target_panels) {
    const std::size_t grid_rows = (target_panels + 1) / 2;
    const double H = kGridTop + static_cast<double>(grid_rows) * kSmallPitch + 10;
    s_.reserve(1 << 20);
    s_ += fmt("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
              "viewBox=\"0 0 %.0f %.0f\" font-family=\"DejaVu Sans, Arial, sans-serif\">\n",
              kWidth, H, kWidth, H);
    s_ += fmt("<rect width=\"%.0f\" height=\"%.0f\" fill=\"white\"/>\n", kWidth, H);
    s_ += "<text x=\"70\" y=\"30\" font-size=\"19\" font-weight=\"bold\">" + escape(labels_.title) + "</text>\n";
    std::string sub = escape(labels_.source) + fmt(", %llu samples", static_cast<unsigned long long>(plot_.samples_));
    if (plot_.per_bucket_ > 1)
        sub += fmt("; drawn from %zu groups of up to %llu samples (lowest and highest of each)", plot_.buckets_.size(),
                   static_cast<unsigned long long>(plot_.per_bucket_));
    s_ += "<text x=\"70\" y=\"52\" font-size=\"12\" fill=\"#555\">" + sub + "</text>\n";
}

void SessionPlot::Drawing::chart(const std::string& title, const Rect& r, const std::vector<Trace>& traces,
                                 const std::vector<std::string>& constants, double legend_x, double font,
                                 const char* y_title) {
    double ylo = kInf, yhi = -kInf;
    for (const Trace& t : traces) ylo = std::min(ylo, plot_.lo_[t.channel]), yhi = std::max(yhi, plot_.hi_[t.channel]);
    const Frame f{r, xa_, nice_axis(ylo, yhi, r.bottom - r.top > 200 ? 6 : 4, true), clip_id_++};
    frame(f, title, y_title);
    if (plot_.samples_ == 0 || traces.empty())
        s_ += fmt("<text x=\"%.1f\" y=\"%.1f\" font-size=\"13\" fill=\"#888\" text-anchor=\"middle\">%s</text>\n",
                  (r.left + r.right) / 2, (r.top + r.bottom) / 2,
                  plot_.samples_ == 0 ? "no samples" : "every slot constant (listed)");
    this->traces(f, traces);
    legend(r, traces, constants, legend_x, font);
}

void SessionPlot::Drawing::frame(const Frame& f, const std::string& title, const char* y_title) {
    const Rect& r = f.r;
    const Axis &xa = f.xa, &ya = f.ya;
    const double h = r.bottom - r.top;
    std::string& s = s_;
    s += fmt("<text x=\"%.1f\" y=\"%.1f\" font-size=\"14\" font-weight=\"bold\">%s</text>\n", r.left, r.top - 9,
             escape(title).c_str());
    s += fmt("<clipPath id=\"clip%d\"><rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"/></clipPath>\n",
             f.clip, r.left, r.top, r.right - r.left, h);
    s += fmt("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"#fbfbfb\" stroke=\"#999\"/>\n",
             r.left, r.top, r.right - r.left, h);
    s += "<g font-size=\"11\" fill=\"#333\">\n";
    for (double t = std::ceil(ya.lo / ya.step) * ya.step; t <= ya.hi + ya.step * 1e-9; t += ya.step) {
        const double shown = std::fabs(t) < ya.step * 1e-9 ? 0.0 : t;
        s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e2e2e2\"/>"
                 "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">%.*f</text>\n",
                 r.left, f.py(t), r.right, f.py(t), r.left - 5, f.py(t) + 4, ya.decimals, shown);
    }
    // A narrow chart labels every second (or fifth, ...) tick, so that long labels, such as
    // a recorder's clock in milliseconds, never run into each other.
    int widest = 1;
    for (double t : {xa.lo, xa.hi}) widest = std::max(widest, std::snprintf(nullptr, 0, "%.*f", xa.decimals, t));
    const double label_px = widest * 6.6 + 10, tick_px = xa.step / (xa.hi - xa.lo) * (r.right - r.left);
    double xstep = xa.step;
    for (double k : {2.0, 5.0, 10.0, 20.0, 50.0, 100.0})
        if (xstep / xa.step * tick_px < label_px) xstep = xa.step * k;
    for (double t = std::ceil(xa.lo / xstep - 1e-9) * xstep; t <= xa.hi + xstep * 1e-9; t += xstep) {
        const double shown = std::fabs(t) < xa.step * 1e-9 ? 0.0 : t;
        s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#e2e2e2\"/>"
                 "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">%.*f</text>\n",
                 f.px(t), r.top, f.px(t), r.bottom, f.px(t), r.bottom + 15, xa.decimals, shown);
    }
    s += "</g>\n";
    s += fmt("<text x=\"%.1f\" y=\"%.1f\" font-size=\"11\" fill=\"#555\" text-anchor=\"middle\">%s</text>\n",
             (r.left + r.right) / 2, r.bottom + 30, escape(x_title_).c_str());
    if (y_title)
        s += fmt("<text transform=\"translate(%.1f %.1f) rotate(-90)\" font-size=\"12\" text-anchor=\"middle\">%s</text>\n",
                 r.left - 48, (r.top + r.bottom) / 2, y_title);
}

void SessionPlot::Drawing::traces(const Frame& f, const std::vector<Trace>& traces) {
    for (const Trace& t : traces) {
        const int c = t.channel;
        std::string d;
        bool pen_down = false;
        for (const Bucket& b : plot_.buckets_) {
            if (b.lo[c] > b.hi[c]) {  // no finite value in this bucket: leave a gap
                pen_down = false;
                continue;
            }
            const double x0 = f.px(bucket_x(b, false)), x1 = f.px(bucket_x(b, true));
            const bool rising = !(b.first[c] > b.last[c]);
            const double y0 = f.py(rising ? b.lo[c] : b.hi[c]), y1 = f.py(rising ? b.hi[c] : b.lo[c]);
            d += fmt("%c%.1f %.1f", pen_down ? 'L' : 'M', x0, y0);
            if (b.count > 1) d += fmt("L%.1f %.1f", x1, y1);
            pen_down = true;
        }
        if (d.empty()) continue;
        s_ += "<path d=\"" + d + "\"";
        s_ += fmt(" fill=\"none\" stroke=\"%s\" stroke-width=\"1.6\" stroke-linejoin=\"round\" clip-path=\"url(#clip%d)\"/>\n",
                  t.colour, f.clip);
    }
}

void SessionPlot::Drawing::legend(const Rect& r, const std::vector<Trace>& traces,
                                  const std::vector<std::string>& constants, double legend_x, double font) {
    // Beside the chart; the constants follow in grey.
    const double h = r.bottom - r.top;
    std::string& s = s_;
    const std::size_t lines = traces.size() + constants.size() + (constants.empty() ? 0 : 1);
    const double step = lines ? std::min(font + 5.0, h / static_cast<double>(lines)) : font + 5.0;
    const double size = std::min(font, step - 1.0);
    double y = r.top + step * 0.8;
    s += fmt("<g font-size=\"%.1f\" fill=\"#222\">\n", size);
    for (const Trace& t : traces) {
        s += fmt("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\" stroke-width=\"3\"/>"
                 "<text x=\"%.1f\" y=\"%.1f\">%s</text>\n",
                 legend_x, y - size * 0.35, legend_x + 20, y - size * 0.35, t.colour, legend_x + 26, y,
                 escape(t.label).c_str());
        y += step;
    }
    if (!constants.empty()) {
        s += fmt("<text x=\"%.1f\" y=\"%.1f\" fill=\"#666\" font-style=\"italic\">constant, not drawn:</text>\n",
                 legend_x, y);
        y += step;
        for (const std::string& c : constants) {
            s += fmt("<text x=\"%.1f\" y=\"%.1f\" fill=\"#666\">%s</text>\n", legend_x + 8, y, escape(c).c_str());
            y += step;
        }
    }
    s += "</g>\n";
}

std::string SessionPlot::Drawing::note_nonfinite(int c, std::string label) const {
    if (plot_.nonfinite_[c]) label += fmt(" (%llu NaN/inf gaps)", static_cast<unsigned long long>(plot_.nonfinite_[c]));
    return label;
}

void SessionPlot::Drawing::readings_panel() {
    std::vector<Trace> traces;
    std::vector<std::string> constants;
    for (int c = 0; c < kInputs; ++c) {
        std::string label = "x" + std::to_string(c);
        if (!labels_.input_names[c].empty() && labels_.input_names[c] != label) label += "  " + labels_.input_names[c];
        if (plot_.samples_ > 0 && plot_.constant_[c]) constants.push_back(label + " = " + short_number(plot_.first_value_[c]));
        else traces.push_back(Trace{c, note_nonfinite(c, label), kPalette[c]});
    }
    chart("Glove readings (input)", Rect{70, 95, 1090, 95 + kTopPanelH}, traces, constants, 1110, 12, "glove reading");
}

void SessionPlot::Drawing::targets_heading() {
    s_ += fmt("<text x=\"70\" y=\"%.1f\" font-size=\"16\" font-weight=\"bold\">Joint targets by finger "
              "(slot number and role)</text>\n",
              kGridTop - 45);
}

void SessionPlot::Drawing::target_panel(std::size_t p, const Panel& panel) {
    const double col = (p % 2) * (kWidth / 2), top = kGridTop + static_cast<double>(p / 2) * kSmallPitch;
    std::vector<Trace> traces;
    for (std::size_t k = 0; k < panel.drawn.size(); ++k) {
        const int slot = panel.drawn[k];
        traces.push_back(Trace{kInputs + slot, note_nonfinite(kInputs + slot, std::to_string(slot) + "  " + labels_.roles[slot]),
                               kPalette[k % 6]});
    }
    // Constants one to a line while they fit, else gathered by value.
    std::vector<std::string> constants;
    const std::size_t room = static_cast<std::size_t>(kSmallH / 15.0) - traces.size() - 1;
    if (panel.constant.size() <= room) {
        for (int slot : panel.constant)
            constants.push_back(std::to_string(slot) + "  " + labels_.roles[slot] + " = " +
                                short_number(plot_.first_value_[kInputs + slot]));
    } else {
        std::map<double, std::vector<int>> by_value;
        for (int slot : panel.constant) by_value[plot_.first_value_[kInputs + slot]].push_back(slot);
        for (const auto& [value, slots] : by_value) {
            std::string line = "= " + short_number(value) + ":";
            for (int slot : slots) {
                if (line.size() > 30) constants.push_back(line), line = "  ";
                line += " " + std::to_string(slot);
            }
            constants.push_back(line);
        }
    }
    chart(panel.title, Rect{col + 70, top, col + 430, top + kSmallH}, traces, constants, col + 448, 11.5, nullptr);
}

std::string SessionPlot::Drawing::finish() {
    s_ += "</svg>\n";
    return std::move(s_);
}

std::string SessionPlot::svg(const Labels& labels) const {
    std::array<bool, kOutputs> flat_target;
    for (int s = 0; s < kOutputs; ++s) flat_target[s] = samples_ > 0 && constant_[kInputs + s];
    const std::vector<Panel> panels = target_panels(labels.roles, flat_target);

    Drawing drawing(*this, labels);
    drawing.page(panels.size());
    drawing.readings_panel();
    drawing.targets_heading();
    for (std::size_t p = 0; p < panels.size(); ++p) drawing.target_panel(p, panels[p]);
    return drawing.finish();
}

}  // namespace quil::retarget
