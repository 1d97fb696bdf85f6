#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <fstream>

#include "tools/Verb.h"
#include "tools/support/Development.h"
#include "tools/support/Output.h"
#include "tools/support/PictureFile.h"
#include "tools/support/RawDescription.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

// Far beyond every sensor, and its square in bytes fits everywhere.
constexpr LONG kLargestSide = 65535;

struct DevelopOptions {
  DevelopRequest request;
  std::optional<LONG> width, height, inputFormat, bits;  ///< go before the description's
  std::string input, output;
  bool force = false;
};

template <class Value>
void FillIn(std::optional<Value>& value, const std::optional<Value>& described) {
  if (!value) value = described;
}

/// What the command line says and, where it says nothing, the description beside the raw file.
DevelopRequest Complete(const DevelopOptions& options) {
  DevelopRequest request = options.request;
  const std::filesystem::path raw = ToPath(options.input);
  const std::optional<RawDescription> beside = ReadDescription(raw);
  const bool sized = options.width && options.height;
  if (!beside && !sized) {
    throw ToolError(kExitUsage, fmt::format("--{} is required", options.width ? "height" : "width"),
                    fmt::format("'{}', which snap and grab write beside a raw file, is not there",
                                ToText(DescriptionOf(raw))));
  }
  const RawDescription described = beside.value_or(RawDescription{});
  request.width = options.width.value_or(described.width);
  request.height = options.height.value_or(described.height);
  request.inputFormat = options.inputFormat.value_or(described.inputFormat);
  request.bits = options.bits.value_or(described.bits);
  if (!beside) return request;
  FillIn(request.sourceWidth, std::optional(described.width));
  FillIn(request.sourceHeight, std::optional(described.height));
  // A class that was asked for has its own format.
  if (!request.imageClass) FillIn(request.outputFormat, described.outputFormat);
  FillIn(request.whitePixel, described.whitePixel);
  FillIn(request.whiteThreshold, described.whiteThreshold);
  if (request.colorMatrix.empty()) request.colorMatrix = described.colorMatrix;
  for (std::size_t n = 0; n < request.settings.size(); ++n) {
    FillIn(request.settings[n], described.settings[n]);
  }
  return request;
}

std::vector<std::uint8_t> ReadFrame(const std::string& name, const DevelopRequest& request) {
  std::ifstream file(ToPath(name), std::ios::binary | std::ios::ate);
  const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
  if (size < 0) throw ToolError(kExitUsage, fmt::format("'{}' can't be read", name));
  if (static_cast<std::uint64_t>(size) != request.FrameBytes()) {
    throw ToolError(kExitUsage, fmt::format("{} has {} bytes, {} needs {}", name, size, request.FrameText(),
                                            request.FrameBytes()));
  }
  std::vector<std::uint8_t> frame(static_cast<std::size_t>(size));
  file.seekg(0);
  if (!file.read(reinterpret_cast<char*>(frame.data()), size)) {
    throw ToolError(kExitFailed, fmt::format("'{}' can't be read", name));
  }
  return frame;
}

Json Result(COrvaneImageImpl& image, const DevelopRequest& request, const std::string& file) {
  Json json;
  json["file"] = file;
  json["width"] = image.GetWidth();
  json["height"] = image.GetHeight();
  json["source_width"] = request.SourceWidth();
  json["source_height"] = request.SourceHeight();
  json["input_format"] = image.GetInputFormat();
  json["output_format"] = image.GetOutputFormat();
  json["stride"] = image.GetStride();
  json["raw_stride"] = image.GetRawStride();
  json["raw_size"] = image.GetRawSize();
  json["gain_r"] = image.GetColorGainR();
  json["gain_g"] = image.GetColorGainG();
  json["gain_b"] = image.GetColorGainB();
  // Raw samples have no luminance.
  const bool isPicture = BitCountOf(image.GetOutputFormat()) != 0;
  json["mean_luminance"] = isPicture ? Json(image.GetMeanLuminance()) : Json(nullptr);
  return json;
}

ExitCode RunDevelop(const DevelopOptions& options, const Globals& globals) {
  const FilePattern target(options.output, {FileFormat::Bitmap, FileFormat::Jpeg, FileFormat::Bgra});
  if (target.IsNumbered()) throw ToolError(kExitUsage, "-o needs the name of one file");
  const DevelopRequest request = Complete(options);
  std::vector<std::uint8_t> frame = ReadFrame(options.input, request);
  target.CheckWritable(1, options.force);
  const auto image = Develop(request, frame);
  const PictureView picture{.pixels = image->GetBuffer(),
                            .width = image->GetWidth(),
                            .height = image->GetHeight(),
                            .strideBytes = image->GetStride(),
                            .bitCount = BitCountOf(image->GetOutputFormat()),
                            .raw = {}};
  WritePicture(picture, target.Format(), target.PathOf(1));
  if (globals.json) {
    PrintJson(Result(*image, request, options.output));
  } else {
    PrintLine(fmt::format("{}  {}x{}", options.output, image->GetWidth(), image->GetHeight()));
  }
  return kExitDone;
}

template <class Number>
CLI::Option* AddNumber(CLI::App& command, const char* name, Number& value, LONG minimum, LONG maximum,
                       const std::string& text) {
  const auto check = [minimum, maximum](const std::string& word) {
    const auto number = ParseNumber(word);
    if (number && *number >= minimum && *number <= maximum) return std::string();
    return fmt::format("{} is not in {}..{}", word, minimum, maximum);
  };
  return command.add_option(name, value, text)
      ->check(CLI::Validator(check, fmt::format("{}..{}", minimum, maximum)));
}

}  // namespace

Action DefineDevelop(CLI::App& command, const Globals& globals) {
  auto options = std::make_shared<DevelopOptions>();
  DevelopRequest& request = options->request;
  command
      .add_option("IN.raw", options->input,
                  "One frame as a camera sent it; IN.raw.json beside it describes it")
      ->required();
  command.add_option("-o,--output", options->output, "The picture: .bmp, .jpg, or .bgra for the bare pixels")
      ->required();
  command.add_flag("--force", options->force, "Overwrite an existing file");
  AddNumber(command, "--width", options->width, 1, kLargestSide, "Of the picture");
  AddNumber(command, "--height", options->height, 1, kLargestSide, "Of the picture");
  AddNumber(command, "--source-width", request.sourceWidth, 1, kLargestSide, "Pixels in a row of the frame");
  AddNumber(command, "--source-height", request.sourceHeight, 1, kLargestSide, "Rows of the frame");
  command
      .add_option("--input-format", options->inputFormat, "0 mosaic or grey, 4 packed 24-bit, 6 YUV 4:2:2")
      ->check(CLI::IsMember({0, 4, 6}));
  command.add_option("--output-format", request.outputFormat, "0 raw, 1 and 5 32-bit, 4 24-bit pixels")
      ->check(CLI::IsMember({0, 1, 4, 5}));
  command.add_option("--image-class", request.imageClass, "24 or 32; by default that of the output format")
      ->check(CLI::IsMember({24, 32}));
  command.add_option("--bits", options->bits, "Of a transferred sample: 8 or 16")
      ->check(CLI::IsMember({8, 16}));
  command.add_flag("--complementary", request.complementary, "Mosaic of complementary colours");
  command
      .add_option("--color-matrix", request.colorMatrix,
                  "16 numbers, row by row; the last row holds the offsets")
      ->expected(16);
  AddNumber(command, "--white-pixel", request.whitePixel, 0, 1, "Removes bright defect pixels")
      ->expected(0, 1);
  AddNumber(command, "--white-threshold", request.whiteThreshold, 0, 255, "Least deviation of a bright one");
  request.settings.resize(DevelopSettings().size());
  for (std::size_t n = 0; n < request.settings.size(); ++n) {
    const DevelopSetting& setting = DevelopSettings()[n];
    const auto [minimum, maximum] = LimitsOf(setting);
    auto* const option =
        AddNumber(command, setting.option, request.settings[n], minimum, maximum, TextOf(setting));
    if (setting.isSwitch) option->expected(0, 1);
  }
  return [options, &globals] { return RunDevelop(*options, globals); };
}

}  // namespace zel::tool
