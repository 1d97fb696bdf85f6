#pragma once

#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "sim/Scene.h"

namespace zel {

struct Point {
  double x = 0, y = 0;
};

/// Shapes over one another with smooth edges, in pixels with (0, 0) at the outer corner of the first one.
class ChartShapes {
 public:
  void Fill(const std::vector<Point>& convexOutline, LinearRgb colour);  ///< corners clockwise on the picture
  void Rectangle(double left, double top, double width, double height, LinearRgb colour);
  /// From one colour at the left edge to another at the right one.
  void Gradient(double left, double top, double width, double height, LinearRgb from, LinearRgb to);
  void Disc(Point centre, double radius, LinearRgb colour);
  void Stroke(Point from, Point to, double thickness, LinearRgb colour);
  /// Wedges around a centre, as many coloured ones as ones left out.
  void Star(Point centre, double radius, int wedges, LinearRgb colour);
  /// Bars of `pitch` pixels and gaps as wide, across x, or across y when `lying`. On whole pixels.
  void Grating(int left, int top, int width, int height, int pitch, bool lying, LinearRgb colour);
  /// Capital letters, figures and blanks; others are skipped. Returns the width.
  double Text(Point topLeft, double height, std::string_view text, LinearRgb colour);
  static double TextWidth(double height, std::string_view text);

  /// Draws what the shapes have in row `y` over `row`.
  void RenderRow(int y, LinearRgb* row, int width) const;

 private:
  using Coverage = std::function<double(double x, double y)>;  // 0..1 of the pixel with that centre

  struct Shape {
    double left, top, right, bottom;
    LinearRgb from, to;
    Coverage coverage;
  };

  std::vector<Shape> shapes_;
};

}  // namespace zel
