#include "sim/ChartShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zel {
namespace {

/// Coverage of a pixel whose centre lies so far inside an edge (outside: negative).
double EdgeCoverage(double inside) {
  return std::clamp(inside + 0.5, 0.0, 1.0);
}

/// Strokes of a character on a grid of 5 x 7 points: pairs of column and row, a blank lifts the pen.
struct Glyph {
  char character;
  const char* strokes;
};

constexpr int kGlyphColumns = 4, kGlyphRows = 6, kGlyphAdvance = 6;

constexpr Glyph kGlyphs[] = {
    {'A', "06022042 4246 0444"},
    {'B', "0600304142330303 33444536 3606"},
    {'C', "4130100105163645"},
    {'D', "06003041453606"},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "4130100105163645 454323"},
    {'H', "0006 4046 0343"},
    {'I', "1030 2026 1636"},
    {'J', "40453616 1605"},
    {'K', "0006 4003 0346"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "1001051636454130 3010"},
    {'P', "060030414233 3303"},
    {'Q', "1001051636454130 3010 2446"},
    {'R', "060030414233 3303 2346"},
    {'S', "41301001021333444536 361605"},
    {'T', "0040 2026"},
    {'U', "0005163645 4540"},
    {'V', "002640"},
    {'W', "0016233640"},
    {'X', "0046 4006"},
    {'Y', "0023 4023 2326"},
    {'Z', "00400646"},
    {'0', "1001051636454130 3010 1531"},
    {'1', "112026 1636"},
    {'2', "01103041420646"},
    {'3', "0040 4022 2232 32434536 361605"},
    {'4', "3630 300444"},
    {'5', "400003 03334445 453606"},
    {'6', "30100105163645443303"},
    {'7', "00402326"},
    {'8', "10010213334445361605041333 33424130 3010"},
    {'9', "43130201103041 41453616"},
};

const char* StrokesOf(char character) {
  const auto* const glyph = std::ranges::find(kGlyphs, character, &Glyph::character);
  return glyph == std::end(kGlyphs) ? "" : glyph->strokes;
}

}  // namespace

void ChartShapes::Fill(const std::vector<Point>& outline, LinearRgb colour) {
  struct Edge {
    Point start;
    double normalX, normalY;  // unit vector to the inside
  };
  std::vector<Edge> edges;
  Shape shape{outline[0].x, outline[0].y, outline[0].x, outline[0].y, colour, colour, {}};
  for (std::size_t n = 0; n < outline.size(); ++n) {
    const Point a = outline[n], b = outline[(n + 1) % outline.size()];
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    edges.push_back({a, -(b.y - a.y) / length, (b.x - a.x) / length});
    shape.left = std::min(shape.left, a.x);
    shape.top = std::min(shape.top, a.y);
    shape.right = std::max(shape.right, a.x);
    shape.bottom = std::max(shape.bottom, a.y);
  }
  shape.coverage = [edges = std::move(edges)](double x, double y) {
    double coverage = 1;
    for (const Edge& edge : edges)
      coverage *= EdgeCoverage((x - edge.start.x) * edge.normalX + (y - edge.start.y) * edge.normalY);
    return coverage;
  };
  shapes_.push_back(std::move(shape));
}

void ChartShapes::Rectangle(double left, double top, double width, double height, LinearRgb colour) {
  Gradient(left, top, width, height, colour, colour);
}

void ChartShapes::Gradient(double left, double top, double width, double height, LinearRgb from,
                           LinearRgb to) {
  // On whole pixels: neighbours then meet without a seam.
  const double right = std::round(left + width), bottom = std::round(top + height);
  const double begin = std::round(left), above = std::round(top);
  Fill({{begin, above}, {right, above}, {right, bottom}, {begin, bottom}}, from);
  shapes_.back().to = to;
}

void ChartShapes::Disc(Point centre, double radius, LinearRgb colour) {
  shapes_.push_back(
      {centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius, colour, colour,
       [=](double x, double y) { return EdgeCoverage(radius - std::hypot(x - centre.x, y - centre.y)); }});
}

void ChartShapes::Stroke(Point from, Point to, double thickness, LinearRgb colour) {
  const double half = thickness / 2;
  const double dx = to.x - from.x, dy = to.y - from.y;
  const double squared = std::max(dx * dx + dy * dy, 1e-9);
  shapes_.push_back(
      {std::min(from.x, to.x) - half, std::min(from.y, to.y) - half, std::max(from.x, to.x) + half,
       std::max(from.y, to.y) + half, colour, colour, [=](double x, double y) {
         const double along = std::clamp(((x - from.x) * dx + (y - from.y) * dy) / squared, 0.0, 1.0);
         return EdgeCoverage(half - std::hypot(x - from.x - along * dx, y - from.y - along * dy));
       }});
}

void ChartShapes::Star(Point centre, double radius, int wedges, LinearRgb colour) {
  shapes_.push_back({centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius, colour,
                     colour, [=](double x, double y) {
                       const double r = std::hypot(x - centre.x, y - centre.y);
                       const double turn = std::atan2(y - centre.y, x - centre.x) / (2 * std::numbers::pi);
                       const double part = turn * wedges - std::floor(turn * wedges);  // of a pair of wedges
                       const double toEdge = 0.25 - std::abs(part - 0.25 - (part > 0.75 ? 1 : 0));
                       const double arc = toEdge / wedges * 2 * std::numbers::pi * r;
                       return EdgeCoverage(arc) * EdgeCoverage(radius - r);
                     }});
}

void ChartShapes::Grating(int left, int top, int width, int height, int pitch, bool lying, LinearRgb colour) {
  const double right = left + width, bottom = top + height;
  shapes_.push_back({static_cast<double>(left), static_cast<double>(top), right, bottom, colour, colour,
                     [=](double x, double y) {
                       if (x < left || x > right || y < top || y > bottom) return 0.0;
                       const int along = static_cast<int>(lying ? y - top : x - left);
                       return along / pitch % 2 == 0 ? 1.0 : 0.0;
                     }});
}

double ChartShapes::TextWidth(double height, std::string_view text) {
  const double unit = height / kGlyphRows;
  return unit * (kGlyphAdvance * static_cast<double>(text.size()) - (kGlyphAdvance - kGlyphColumns));
}

double ChartShapes::Text(Point topLeft, double height, std::string_view text, LinearRgb colour) {
  const double unit = height / kGlyphRows;
  const double thickness = std::max(1.0, unit * 0.9);
  for (std::size_t n = 0; n < text.size(); ++n) {
    const double left = topLeft.x + unit * kGlyphAdvance * static_cast<double>(n);
    const auto point = [&](const char* pair) {
      return Point{left + unit * (pair[0] - '0'), topLeft.y + unit * (pair[1] - '0')};
    };
    for (const char* stroke = StrokesOf(text[n]); *stroke != 0;) {
      if (stroke[2] == 0) break;
      if (stroke[2] == ' ') {
        stroke += 3;
        continue;
      }
      Stroke(point(stroke), point(stroke + 2), thickness, colour);
      stroke += 2;
    }
  }
  return TextWidth(height, text);
}

void ChartShapes::RenderRow(int y, LinearRgb* row, int width) const {
  const double centreY = y + 0.5;
  for (const Shape& shape : shapes_) {
    if (centreY < shape.top - 0.5 || centreY > shape.bottom + 0.5) continue;
    const int begin = std::max(0, static_cast<int>(std::floor(shape.left - 0.5)));
    const int end = std::min(width, static_cast<int>(std::ceil(shape.right + 0.5)));
    for (int x = begin; x < end; ++x) {
      const double coverage = shape.coverage(x + 0.5, centreY);
      if (coverage <= 0) continue;
      const double place = std::clamp((x + 0.5 - shape.left) / (shape.right - shape.left), 0.0, 1.0);
      const auto mix = [&](std::uint16_t& under, std::uint16_t from, std::uint16_t to) {
        const double over = from + (to - from) * place;
        under = static_cast<std::uint16_t>(std::lround(under + (over - under) * coverage));
      };
      mix(row[x].r, shape.from.r, shape.to.r);
      mix(row[x].g, shape.from.g, shape.to.g);
      mix(row[x].b, shape.from.b, shape.to.b);
    }
  }
}

}  // namespace zel
