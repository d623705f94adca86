// SPDX-License-Identifier: MIT
#include "chart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <stdexcept>

#include "figures.h"

namespace quellar::benches {

namespace {

constexpr double kWidth = 400;
constexpr double kHeight = 380;
constexpr double kLeft = 62;
constexpr double kRight = 14;
constexpr double kTop = 34;
constexpr double kBottom = 44;
constexpr double kLegendLine = 16;
constexpr std::array kColors = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#8c564b", "#7f7f7f"};

/// One axis: powers of ten from below the lowest to above the highest.
struct Axis {
  double first = 0;
  double last = 1;
  double from = 0;
  double to = 0;

  Axis(double lowest, double highest, double itsFrom, double itsTo)
      : first(std::floor(std::log10(lowest))), last(std::ceil(std::log10(highest))), from(itsFrom), to(itsTo) {
    if (last <= first) last = first + 1;
  }
  [[nodiscard]] double at(double number) const {
    return from + (std::log10(number) - first) / (last - first) * (to - from);
  }
};

std::string withoutFraction(double number) {
  return std::to_string(static_cast<long long>(std::llround(number)));
}

class Drawing {
 public:
  explicit Drawing(const std::filesystem::path& file) : out_(file) {}

  void line(double x1, double y1, double x2, double y2, const char* color) {
    out_ << "<line x1=\"" << shownRatio(x1) << "\" y1=\"" << shownRatio(y1) << "\" x2=\"" << shownRatio(x2)
         << "\" y2=\"" << shownRatio(y2) << "\" stroke=\"" << color << "\"/>\n";
  }
  void text(double x, double y, const std::string& words, const char* anchor, const char* color = "#333333") {
    out_ << "<text x=\"" << shownRatio(x) << "\" y=\"" << shownRatio(y) << "\" text-anchor=\"" << anchor << "\" fill=\""
         << color << "\">" << words << "</text>\n";
  }
  void curve(const std::vector<std::pair<double, double>>& places, const char* color) {
    out_ << "<polyline fill=\"none\" stroke-width=\"2\" stroke=\"" << color << "\" points=\"";
    for (const auto& [x, y] : places) out_ << shownRatio(x) << ',' << shownRatio(y) << ' ';
    out_ << "\"/>\n";
    for (const auto& [x, y] : places) {
      out_ << "<circle r=\"3\" cx=\"" << shownRatio(x) << "\" cy=\"" << shownRatio(y) << "\" fill=\"" << color
           << "\"/>\n";
    }
  }
  std::ofstream& stream() { return out_; }

 private:
  std::ofstream out_;
};

void draw(const Chart& chart, double left, Drawing& drawing) {
  double smallest = 1e300;
  double largest = 0;
  double shortest = 1e300;
  double longest = 0;
  for (const Curve& curve : chart.curves) {
    for (const auto& [size, time] : curve.points) {
      smallest = std::min(smallest, size);
      largest = std::max(largest, size);
      shortest = std::min(shortest, time);
      longest = std::max(longest, time);
    }
  }
  const Axis sizes(smallest, largest, left + kLeft, left + kWidth - kRight);
  const Axis times(shortest, longest, kHeight - kBottom, kTop);
  drawing.text(left + kLeft, 20, chart.title, "start", "#000000");
  for (double power = times.first; power <= times.last; ++power) {
    const double y = times.at(std::pow(10, power));
    drawing.line(sizes.from, y, sizes.to, y, "#dddddd");
    drawing.text(sizes.from - 6, y + 4, shownTime(std::pow(10, power)), "end");
  }
  for (double power = sizes.first; power <= sizes.last; ++power) {
    const double x = sizes.at(std::pow(10, power));
    drawing.line(x, times.from, x, times.to, "#dddddd");
    drawing.text(x, times.from + 16, withoutFraction(std::pow(10, power)), "middle");
  }
  drawing.text((sizes.from + sizes.to) / 2, times.from + 34, chart.sizes, "middle");
  double legend = kHeight + kLegendLine;
  for (std::size_t number = 0; number < chart.curves.size(); ++number) {
    const char* color = kColors[number % kColors.size()];
    std::vector<std::pair<double, double>> places;
    for (const auto& [size, time] : chart.curves[number].points) places.emplace_back(sizes.at(size), times.at(time));
    drawing.curve(places, color);
    drawing.text(sizes.from, legend, chart.curves[number].name, "start", color);
    legend += kLegendLine;
  }
}

}  // namespace

void drawCharts(const std::vector<Chart>& charts, const std::filesystem::path& file) {
  std::size_t legends = 0;
  for (const Chart& chart : charts) legends = std::max(legends, chart.curves.size());
  const double height = kHeight + kLegendLine * static_cast<double>(legends + 1);
  const std::string size = "width=\"" + withoutFraction(kWidth * static_cast<double>(charts.size())) + "\" height=\"" +
                           withoutFraction(height) + "\"";
  Drawing drawing(file);
  drawing.stream() << "<svg xmlns=\"http://www.w3.org/2000/svg\" " << size
                   << " font-family=\"sans-serif\" font-size=\"12\">\n<rect " << size << " fill=\"#ffffff\"/>\n";
  for (std::size_t number = 0; number < charts.size(); ++number) {
    draw(charts[number], kWidth * static_cast<double>(number), drawing);
  }
  drawing.stream() << "</svg>\n";
  if (!drawing.stream().flush()) throw std::runtime_error("can't write " + file.string());
}

}  // namespace quellar::benches
