#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "imaging/COrvaneImageImpl32.h"
#include "imaging/ImageFile.h"
#include "imaging/PictureReader.h"

/// How near demosaicing comes to photographs: each is made a mosaic in all four phases and back.
///
///   zel_demosaic_quality PHOTO.jpg...                          a table of PSNRs in dB
///   zel_demosaic_quality --crop X Y SIZE OUT.jpg PHOTO.jpg     original and results side by side, enlarged
/// Instead of a photograph's path, "chart" is a drawn chart of 256 x 256: rings that get finer outwards, grey
/// above, coloured below.
namespace zel {
namespace {

constexpr int kBorder = 8;  // not compared: here every method invents neighbours

constexpr int kMethods = 3;
constexpr const char* kNames[kMethods] = {"ZELCam 5 x 5", "OpenCV bilinear", "OpenCV edge-aware"};

struct Phase {
  const char* cell;  // colours of the first 2 x 2 samples, by Bayer mode
  int bilinear, edgeAware;
};
constexpr Phase kPhases[] = {{"GRBG", cv::COLOR_BayerGRBG2BGR, cv::COLOR_BayerGRBG2BGR_EA},
                             {"BGGR", cv::COLOR_BayerBGGR2BGR, cv::COLOR_BayerBGGR2BGR_EA},
                             {"RGGB", cv::COLOR_BayerRGGB2BGR, cv::COLOR_BayerRGGB2BGR_EA},
                             {"GBRG", cv::COLOR_BayerGBRG2BGR, cv::COLOR_BayerGBRG2BGR_EA}};

cv::Mat DrawChart() {
  constexpr int kSize = 256;
  cv::Mat chart(kSize, kSize, CV_8UC3);
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      // At the corners a ring is two samples wide: the finest that a sensor sees.
      const double dx = x - kSize / 2.0, dy = y - kSize / 2.0;
      const double ring = std::cos(1.5 * (dx * dx + dy * dy) / kSize);
      const cv::Vec3d contrast = y < kSize / 2 ? cv::Vec3d(100, 100, 100) : cv::Vec3d(-30, 60, 110);
      for (int c = 0; c < 3; ++c)
        chart.at<cv::Vec3b>(y, x)[c] = cv::saturate_cast<std::uint8_t>(128 + contrast[c] * ring);
    }
  }
  return chart;
}

cv::Mat ReadPhoto(const std::filesystem::path& path) {
  if (path == "chart") return DrawChart();
  Picture picture;
  std::string error;
  if (!ReadPicture(path, &picture, &error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return {};
  }
  cv::Mat bgr;
  cv::cvtColor(cv::Mat(picture.height, picture.width, CV_8UC3, picture.rgb.data()), bgr, cv::COLOR_RGB2BGR);
  return bgr;
}

cv::Mat MakeMosaic(const cv::Mat& photo, const char* cell) {
  cv::Mat mosaic(photo.size(), CV_8UC1);
  for (int y = 0; y < photo.rows; ++y) {
    for (int x = 0; x < photo.cols; ++x) {
      const char color = cell[y % 2 * 2 + x % 2];
      mosaic.at<std::uint8_t>(y, x) = photo.at<cv::Vec3b>(y, x)[color == 'B' ? 0 : color == 'G' ? 1 : 2];
    }
  }
  return mosaic;
}

cv::Mat Develop(const cv::Mat& mosaic, int mode) {
  COrvaneImageImpl32 image(1);
  image.SetWidth(mosaic.cols);
  image.SetHeight(mosaic.rows);
  image.SetSourceWidth(mosaic.cols);
  image.SetSourceHeight(mosaic.rows);
  image.SetBayerMode(mode);
  image.AllocateBuffers();
  cv::Mat frame = mosaic.clone(), bgr;
  image.ProcessFrame(frame.data);
  cv::cvtColor(cv::Mat(mosaic.size(), CV_8UC4, image.GetBuffer()), bgr, cv::COLOR_BGRA2BGR);
  return bgr;
}

std::array<cv::Mat, kMethods> Results(const cv::Mat& photo, int mode) {
  const cv::Mat mosaic = MakeMosaic(photo, kPhases[mode].cell);
  std::array<cv::Mat, kMethods> results{Develop(mosaic, mode), {}, {}};
  cv::cvtColor(mosaic, results[1], kPhases[mode].bilinear);
  cv::cvtColor(mosaic, results[2], kPhases[mode].edgeAware);
  return results;
}

double MeanSquare(const cv::Mat& a, const cv::Mat& b) {
  const cv::Rect inside(kBorder, kBorder, a.cols - 2 * kBorder, a.rows - 2 * kBorder);
  const double norm = cv::norm(a(inside), b(inside), cv::NORM_L2);
  return norm * norm / (3.0 * inside.area());
}

int Table(const std::vector<std::string>& paths) {
  std::printf("| photograph | %s | %s | %s | over the better |\n|---|---|---|---|---|\n", kNames[0],
              kNames[1], kNames[2]);
  double sum = 0, worst = 1e9;
  int photos = 0;
  for (const std::string& path : paths) {
    const cv::Mat photo = ReadPhoto(path);
    if (photo.empty()) return 1;
    std::array<double, kMethods> error{}, psnr{};
    for (int mode = 0; mode < 4; ++mode) {
      const auto results = Results(photo, mode);
      for (std::size_t i = 0; i < kMethods; ++i) error[i] += MeanSquare(photo, results[i]) / 4;
    }
    for (std::size_t i = 0; i < kMethods; ++i) psnr[i] = 10 * std::log10(255 * 255 / error[i]);
    const double gain = psnr[0] - std::max(psnr[1], psnr[2]);
    const std::filesystem::path name = std::filesystem::path(path).parent_path().parent_path().parent_path();
    std::printf("| %s | %.2f | %.2f | %.2f | %+.2f |\n", name.filename().c_str(), psnr[0], psnr[1], psnr[2],
                gain);
    sum += gain;
    worst = std::min(worst, gain);
    ++photos;
  }
  std::printf("\n%d photographs, PSNR in dB over four phases: %+.2f on average, %+.2f at worst\n", photos,
              sum / photos, worst);
  return 0;
}

int Crop(int x, int y, int size, const std::string& out, const std::string& path) {
  constexpr int kEnlarge = 5;
  const cv::Mat photo = ReadPhoto(path);
  const cv::Rect part(x, y, size, size);
  if ((part & cv::Rect({}, photo.size())) != part) return std::fprintf(stderr, "the crop is outside\n"), 1;
  std::vector<cv::Mat> columns{photo};
  for (const cv::Mat& result : Results(photo, 2)) columns.push_back(result);
  for (cv::Mat& column : columns) {
    cv::resize(column(part).clone(), column, {}, kEnlarge, kEnlarge, cv::INTER_NEAREST);
  }
  cv::Mat all;
  cv::hconcat(columns, all);
  const std::u16string wide = std::filesystem::path(out).u16string();
  return SavePicture(wide.c_str(), all.data, all.cols, all.rows, 24, static_cast<LONG>(all.step), 1, 0) ? 0
                                                                                                        : 1;
}

}  // namespace
}  // namespace zel

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + 1, words + count);
  cv::setNumThreads(1);
  if (arguments.size() == 6 && arguments[0] == "--crop") {
    return zel::Crop(std::stoi(arguments[1]), std::stoi(arguments[2]), std::stoi(arguments[3]), arguments[4],
                     arguments[5]);
  }
  if (arguments.empty()) return std::fprintf(stderr, "name photographs, or --crop X Y SIZE OUT PHOTO\n"), 2;
  return zel::Table(arguments);
}
