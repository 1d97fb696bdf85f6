#include <opencv2/imgproc.hpp>

#include "bench/scene.h"

/// The same work from OpenCV's calls, on one thread and with all pictures made beforehand.
namespace zel::bench {
namespace {

const bool kOneThread = (cv::setNumThreads(1), true);

cv::Mat View(const Bytes& bytes, int type) {
  return cv::Mat(kHeight, kWidth, type, const_cast<std::uint8_t*>(bytes.data()));
}

constexpr int kBilinear = cv::COLOR_BayerGRBG2BGR, kBilinearAlpha = cv::COLOR_BayerGRBG2BGRA;

void Bilinear(benchmark::State& state) {
  cv::Mat pixels(kHeight, kWidth, CV_8UC4);
  RunOnFreshCopy(state, Mosaic(), [&](std::uint8_t* frame) {
    cv::cvtColor(cv::Mat(kHeight, kWidth, CV_8UC1, frame), pixels, kBilinearAlpha);
  });
}
BENCHMARK(Bilinear)->Name("demosaic/OpenCV bilinear");

void EdgeAware(benchmark::State& state) {
  cv::Mat colors(kHeight, kWidth, CV_8UC3), pixels(kHeight, kWidth, CV_8UC4);
  RunOnFreshCopy(state, Mosaic(), [&](std::uint8_t* frame) {
    cv::cvtColor(cv::Mat(kHeight, kWidth, CV_8UC1, frame), colors, cv::COLOR_BayerGRBG2BGR_EA);
    cv::cvtColor(colors, pixels, cv::COLOR_BGR2BGRA);
  });
}
BENCHMARK(EdgeAware)->Name("demosaic/OpenCV edge-aware");

/// Sums of the four places of a mosaic's cell: two channels of every second row.
cv::Scalar Sums(const cv::Mat& mosaic) {
  cv::Scalar sums;
  for (int row = 0; row < 2; ++row) {
    const cv::Mat half(mosaic.rows / 2, mosaic.cols / 2, CV_8UC2, mosaic.data + row * mosaic.step,
                       2 * mosaic.step);
    const cv::Scalar sum = cv::sum(half);
    sums[2 * row] = sum[0];
    sums[2 * row + 1] = sum[1];
  }
  return sums;
}

void GreyWorldSums(benchmark::State& state) {
  const cv::Mat mosaic = View(Mosaic(), CV_8UC1);
  Run(state, [&] { benchmark::DoNotOptimize(Sums(mosaic)); });
}
BENCHMARK(GreyWorldSums)->Name("grey-world sums/OpenCV sums");

void MedianWithThreshold(benchmark::State& state) {
  cv::Mat median(kHeight, kWidth, CV_8UC1), difference = median.clone(), defect = median.clone();
  RunOnFreshCopy(state, Mosaic(), [&](std::uint8_t* frame) {
    cv::Mat mosaic(kHeight, kWidth, CV_8UC1, frame);
    cv::medianBlur(mosaic, median, 3);
    cv::absdiff(mosaic, median, difference);
    cv::compare(difference, 40, defect, cv::CMP_GE);
    median.copyTo(mosaic, defect);
  });
}
BENCHMARK(MedianWithThreshold)->Name("dot filter/OpenCV median and threshold");

void BoxAndAddWeighted(benchmark::State& state) {
  const cv::Mat pixels = View(Pixels(), CV_8UC4);
  cv::Mat blurred = pixels.clone(), sharp = pixels.clone();
  Run(state, [&] {
    cv::boxFilter(pixels, blurred, -1, cv::Size(4, 4));
    cv::addWeighted(pixels, 2, blurred, -1, 0, sharp);
  });
}
BENCHMARK(BoxAndAddWeighted)->Name("sharpness/OpenCV box filter and addWeighted");

/// Gains, colour matrix and gamma of the chain.
struct ChainTones {
  cv::Matx33f matrix{1.2f, -0.1f, -0.1f, -0.15f, 1.3f, -0.15f, -0.05f, -0.2f, 1.25f};
  cv::Mat gamma = cv::Mat(1, 256, CV_8UC1);
  ChainTones() {
    for (int i = 0; i < 256; ++i) {
      gamma.data[i] = cv::saturate_cast<std::uint8_t>(255 * std::pow(i / 255.0, 0.6));
    }
  }
};

/// Blue, green and red factors that make the mosaic grey.
cv::Vec3d Gains(const cv::Scalar& sums) {
  const double green = (sums[0] + sums[3]) / 2;
  return {green / sums[2], 1, green / sums[1]};
}

/// Step after step over whole pictures, as one writes it first.
void ChainStepByStep(benchmark::State& state) {
  const ChainTones tones;
  cv::Mat mosaic(kHeight, kWidth, CV_8UC1), colors(kHeight, kWidth, CV_8UC3),
      balanced = colors.clone(), mixed = colors.clone(), toned = colors.clone(), blurred = colors.clone(),
      sharp = colors.clone();
  cv::Mat pixels(kHeight, kWidth, CV_8UC4);
  RunOnFreshCopy(state, TenBitMosaic(), [&](std::uint8_t* frame) {
    const cv::Mat samples(kHeight, kWidth, CV_16UC1, frame);
    samples.convertTo(mosaic, CV_8U, 0.25);
    cv::cvtColor(mosaic, colors, kBilinear);
    const cv::Scalar means = cv::mean(colors);
    cv::multiply(colors, cv::Scalar(means[1] / means[0], 1, means[1] / means[2]), balanced);
    cv::transform(balanced, mixed, tones.matrix);
    cv::LUT(mixed, tones.gamma, toned);
    cv::boxFilter(toned, blurred, -1, cv::Size(4, 4));
    cv::addWeighted(toned, 2, blurred, -1, 0, sharp);
    cv::cvtColor(sharp, pixels, cv::COLOR_BGR2BGRA);
  });
}
BENCHMARK(ChainStepByStep)->Name("whole chain/OpenCV step by step");

/// The same with gains and matrix in one product, in strips of rows that stay in the cache.
void ChainInStrips(benchmark::State& state) {
  constexpr int kStrip = 32, kHalo = 4;
  const ChainTones tones;
  cv::Mat mosaic(kHeight, kWidth, CV_8UC1), pixels(kHeight, kWidth, CV_8UC4);
  cv::Mat colors(kStrip + 2 * kHalo, kWidth, CV_8UC3), mixed = colors.clone(), toned = colors.clone(),
                                                       blurred = colors.clone(), sharp = colors.clone();
  RunOnFreshCopy(state, TenBitMosaic(), [&](std::uint8_t* frame) {
    const cv::Mat samples(kHeight, kWidth, CV_16UC1, frame);
    cv::Scalar sums;
    for (int row = 0; row < kHeight; row += kStrip) {
      cv::Mat strip = mosaic.rowRange(row, row + kStrip);
      samples.rowRange(row, row + kStrip).convertTo(strip, CV_8U, 0.25);
      sums += Sums(strip);
    }
    const cv::Vec3d gains = Gains(sums);
    cv::Matx33f matrix = tones.matrix;
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) matrix(r, c) *= static_cast<float>(gains[c]);
    }
    for (int row = 0; row < kHeight; row += kStrip) {
      const int first = std::max(row - kHalo, 0), end = std::min(row + kStrip + kHalo, kHeight);
      const cv::Range rows(0, end - first), own(row - first, row - first + kStrip);
      cv::Mat c = colors.rowRange(rows), m = mixed.rowRange(rows), t = toned.rowRange(rows),
              b = blurred.rowRange(rows), s = sharp.rowRange(own);
      cv::cvtColor(mosaic.rowRange(first, end), c, kBilinear);
      cv::transform(c, m, matrix);
      cv::LUT(m, tones.gamma, t);
      cv::boxFilter(t, b, -1, cv::Size(4, 4));
      cv::addWeighted(t.rowRange(own), 2, b.rowRange(own), -1, 0, s);
      cv::Mat out = pixels.rowRange(row, row + kStrip);
      cv::cvtColor(s, out, cv::COLOR_BGR2BGRA);
    }
  });
}
BENCHMARK(ChainInStrips)->Name("whole chain/OpenCV in cache strips");

}  // namespace
}  // namespace zel::bench
