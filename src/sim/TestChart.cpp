#include "sim/TestChart.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "sim/ChartShapes.h"
#include "sim/FrameCode.h"

namespace zel {
namespace {

constexpr std::uint32_t kPatchColours[24] = {
    // sRGB
    0xC8302C, 0xF0C81E, 0x3C9A46, 0x1E96AA, 0x2846A0, 0xB43C8C,  // strong
    0xF0968C, 0xF5E68C, 0xA0D296, 0x96D2DC, 0x96AADC, 0xDCA0C8,  // pale
    0xC69682, 0x784E3C, 0x6E8246, 0x5A7896, 0xE0823C, 0x5A3C6E,  // natural
    0xFFFFFF, 0xC8C8C8, 0xA0A0A0, 0x787878, 0x505050, 0x282828,  // neutral
};
constexpr int kPatchColumns = 6, kPatchRows = 4;
constexpr int kGreySteps = 12;
constexpr int kStarWedges = 36;
constexpr double kEdgeTilt = 5.0 / 180 * 3.14159265358979;  // the usual angle for measuring sharpness

LinearRgb Light(std::uint32_t code) {
  const auto channel = [code](int shift) { return LightOfCode(static_cast<std::uint8_t>(code >> shift)); };
  return {channel(16), channel(8), channel(0)};
}

LinearRgb Grey(std::uint8_t code) {
  return Light(code * 0x010101u);
}

struct Box {
  double left, top, width, height;

  Point Centre() const { return {left + width / 2, top + height / 2}; }
  /// A part of the box, all four as parts of its width and height.
  Box Part(double x, double y, double w, double h) const {
    return {left + x * width, top + y * height, w * width, h * height};
  }
};

class TestChart : public Scene {
 public:
  TestChart(int width, int height)
      : Scene(width, height), background_(Grey(214)), ink_(Grey(24)), unit_(std::min(width, height) / 100.0) {
    const double margin = 3 * unit_;
    const double code = height / 40.0 + margin * 0.8;
    const Box content{margin, code, width - 2 * margin, height - 2 * code};
    DrawHeader(content.Part(0, 0, 1, 0.06));
    DrawPatches(content.Part(0, 0.085, 0.60, 0.475));
    DrawStar(content.Part(0.625, 0.085, 0.375, 0.475));
    DrawGreys(content.Part(0, 0.59, 1, 0.12));
    DrawEdges(content.Part(0, 0.74, 0.36, 0.17));
    DrawGratings(content.Part(0.385, 0.74, 0.30, 0.17));
    DrawDirections(content.Part(0.71, 0.74, 0.29, 0.17));
    DrawTrack(content.Part(0, 0.94, 1, 0.06));
  }

  void RenderRow(int y, LinearRgb* row) const override {
    std::fill(row, row + Width(), background_);
    shapes_.RenderRow(y, row, Width());
  }

  std::optional<Marker> MarkerAt(std::uint32_t frame) const override {
    constexpr std::uint32_t kFramesPerWalk = 120;
    const double place = frame % kFramesPerWalk / (kFramesPerWalk - 1.0);
    return Marker{track_.left + place * track_.width, track_.Centre().y, track_.height / 2, Light(0xDC3218)};
  }

  bool CarriesFrameCode() const override { return true; }
  bool HasHardEdges() const override { return true; }

 private:
  void Rectangle(const Box& box, LinearRgb colour) {
    shapes_.Rectangle(box.left, box.top, box.width, box.height, colour);
  }

  void Text(Point centre, double height, std::string_view text) {
    shapes_.Text({centre.x - ChartShapes::TextWidth(height, text) / 2, centre.y - height / 2}, height, text,
                 ink_);
  }

  /// A cross in a ring; the top left one is filled, so that no turn or mirror looks right.
  void CornerMark(Point centre, double radius, bool filled) {
    const double line = std::max(1.5, radius * 0.12);
    shapes_.Disc(centre, radius, ink_);
    if (!filled) shapes_.Disc(centre, radius - line, background_);
    const LinearRgb cross = filled ? background_ : ink_;
    shapes_.Stroke({centre.x - radius * 0.6, centre.y}, {centre.x + radius * 0.6, centre.y}, line, cross);
    shapes_.Stroke({centre.x, centre.y - radius * 0.6}, {centre.x, centre.y + radius * 0.6}, line, cross);
  }

  void DrawHeader(const Box& box) {
    static constexpr std::string_view kCorner = "TOP LEFT";
    const std::string title = "ZELCAM " + std::to_string(Width()) + " X " + std::to_string(Height());
    const double radius = std::min(box.height / 2, 3 * unit_);
    const double middle = box.Centre().y, right = box.left + box.width;
    CornerMark({box.left + radius, middle}, radius, true);
    CornerMark({right - radius, middle}, radius, false);

    const double letters = std::min(radius, (box.width - 6 * radius) / 30);
    const double cornerWidth = ChartShapes::TextWidth(letters * 0.8, kCorner);
    const double cornerLeft = box.left + 2.8 * radius;
    Text({cornerLeft + cornerWidth / 2, middle}, letters * 0.8, kCorner);
    Text({(cornerLeft + cornerWidth + right - 2.8 * radius) / 2, middle}, letters, title);
  }

  void DrawPatches(const Box& box) {
    Rectangle(box, Grey(36));
    const double gap = unit_;
    const double width = (box.width - gap) / kPatchColumns, height = (box.height - gap) / kPatchRows;
    for (int n = 0; n < kPatchColumns * kPatchRows; ++n) {
      const int column = n % kPatchColumns, row = n / kPatchColumns;
      shapes_.Rectangle(box.left + gap + column * width, box.top + gap + row * height, width - gap,
                        height - gap, Light(kPatchColours[n]));
    }
  }

  void DrawStar(const Box& box) {
    const Point centre = box.Centre();
    const double radius = std::min(box.width, box.height) / 2;
    shapes_.Disc(centre, radius, ink_);
    shapes_.Disc(centre, radius - 0.6 * unit_, Grey(255));
    shapes_.Star(centre, radius - 1.6 * unit_, kStarWedges, ink_);
  }

  void DrawGreys(const Box& box) {
    const double step = box.width / kGreySteps;
    for (int n = 0; n < kGreySteps; ++n) {
      const auto light = static_cast<std::uint16_t>(65535 * n / (kGreySteps - 1));
      shapes_.Rectangle(box.left + n * step, box.top, step, box.height * 0.58, {light, light, light});
    }
    shapes_.Gradient(box.left, box.top + box.height * 0.58, box.width, box.height * 0.42, Grey(0), Grey(255));
  }

  void TiltedSquare(Point centre, double side, double tilt, LinearRgb colour) {
    const double c = std::cos(tilt) * side / 2, s = std::sin(tilt) * side / 2;
    const auto corner = [&](double a, double b) {
      return Point{centre.x + a * c - b * s, centre.y + a * s + b * c};
    };
    shapes_.Fill({corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)}, colour);
  }

  void DrawEdges(const Box& box) {
    Rectangle(box, Grey(245));
    const double side = std::min(box.width * 0.36, box.height * 0.72);
    TiltedSquare(box.Part(0, 0, 0.5, 1).Centre(), side, kEdgeTilt, ink_);
    TiltedSquare(box.Part(0.5, 0, 0.5, 1).Centre(), side, -kEdgeTilt, Grey(150));
  }

  void DrawGratings(const Box& box) {
    Rectangle(box, Grey(255));
    const int width = static_cast<int>(box.width / 4 * 0.8), height = static_cast<int>(box.height * 0.42);
    for (int n = 0; n < 4; ++n) {
      const int left = static_cast<int>(box.left + box.width / 4 * (n + 0.1));
      const int pitch = 5 - n;
      shapes_.Grating(left, static_cast<int>(box.top + box.height * 0.05), width, height, pitch, false, ink_);
      shapes_.Grating(left, static_cast<int>(box.top + box.height * 0.53), width, height, pitch, true, ink_);
    }
  }

  void Arrow(Point from, Point to, double head) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double x = (to.x - from.x) / length, y = (to.y - from.y) / length;
    const Point neck{to.x - x * head, to.y - y * head};
    shapes_.Stroke(from, neck, head * 0.4, ink_);
    shapes_.Fill({to,
                  {neck.x - y * head * 0.6, neck.y + x * head * 0.6},
                  {neck.x + y * head * 0.6, neck.y - x * head * 0.6}},
                 ink_);
  }

  void DrawDirections(const Box& box) {
    const double head = std::min(box.width, box.height) * 0.26;
    const double letters = std::min(box.height * 0.17, box.width * 0.085);
    const double shaftX = box.left + box.width * 0.14;
    Arrow({shaftX, box.top + box.height * 0.98}, {shaftX, box.top}, head);
    Text({box.left + box.width * 0.42, box.top + box.height * 0.2}, letters, "UP");
    const double shaftY = box.top + box.height * 0.86;
    Arrow({box.left + box.width * 0.34, shaftY}, {box.left + box.width, shaftY}, head);
    Text({box.left + box.width * 0.62, box.top + box.height * 0.56}, letters, "RIGHT");
  }

  void DrawTrack(const Box& box) {
    const double radius = std::min(box.height / 2, 3 * unit_);
    const Point centre = box.Centre();
    CornerMark({box.left + radius, centre.y}, radius, false);
    CornerMark({box.left + box.width - radius, centre.y}, radius, false);
    track_ = {box.left + 4.5 * radius, centre.y - radius * 0.7, box.width - 9 * radius, radius * 1.4};
    constexpr int kTicks = 10;
    for (int n = 0; n <= kTicks; ++n) {
      const double x = track_.left + track_.width * n / kTicks;
      shapes_.Stroke({x, centre.y - radius * 0.45}, {x, centre.y + radius * 0.45}, std::max(1.0, 0.2 * unit_),
                     ink_);
    }
    shapes_.Stroke({track_.left, centre.y}, {track_.left + track_.width, centre.y},
                   std::max(1.0, 0.3 * unit_), ink_);
  }

  LinearRgb background_, ink_;
  double unit_;  // pixels: a hundredth of the shorter side
  Box track_{};
  ChartShapes shapes_;
};

}  // namespace

std::unique_ptr<Scene> MakeTestChart(int width, int height) {
  return std::make_unique<TestChart>(width, height);
}

}  // namespace zel
