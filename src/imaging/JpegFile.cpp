#include "imaging/JpegFile.h"

#include <csetjmp>

// Needs <cstdio> before it.
#include <jpeglib.h>

#include <jerror.h>

namespace zel {

static_assert(kMaxJpegSide == JPEG_MAX_DIMENSION);

namespace {

// Takes the place of the library's own error handling, which ends the process and writes to standard error.
// C code lies between the error and whoever asked, so the way back is a jump: a function that sets one holds
// no object with a destructor.
struct ErrorTrap {
  jpeg_error_mgr manager;
  std::jmp_buf escape;
  bool incomplete;  ///< data ended or went wrong, and the library filled in the rest
  char text[JMSG_LENGTH_MAX];
};

ErrorTrap& TrapOf(j_common_ptr codec) {
  return *reinterpret_cast<ErrorTrap*>(codec->err);
}

jpeg_error_mgr* Arm(ErrorTrap* trap) {
  jpeg_error_mgr* manager = jpeg_std_error(&trap->manager);
  trap->incomplete = false;
  trap->text[0] = '\0';
  manager->error_exit = [](j_common_ptr codec) {
    ErrorTrap& own = TrapOf(codec);
    own.manager.format_message(codec, own.text);
    std::longjmp(own.escape, 1);
  };
  manager->emit_message = [](j_common_ptr codec, int) {
    ErrorTrap& own = TrapOf(codec);
    const int code = own.manager.msg_code;
    own.incomplete |= code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER;
  };
  manager->output_message = [](j_common_ptr) {};
  return manager;
}

// One compressor or decompressor.
template <class Codec>
struct Guarded {
  Codec codec{};
  ErrorTrap trap;

  Guarded() { codec.err = Arm(&trap); }
  ~Guarded() { jpeg_destroy(reinterpret_cast<j_common_ptr>(&codec)); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  /// False, with the reason in the trap, when the library gave up inside the step.
  template <class Step>
  bool Do(Step step) {
    if (setjmp(trap.escape) != 0) return false;
    step(&codec);
    return true;
  }
};

struct Source {
  const std::uint8_t* pixels;
  std::ptrdiff_t strideBytes;
  int bytesPerPixel;
};

void Compress(jpeg_compress_struct* codec, std::FILE* file, const Source& source, int width, int height) {
  jpeg_create_compress(codec);
  jpeg_stdio_dest(codec, file);
  codec->image_width = static_cast<JDIMENSION>(width);
  codec->image_height = static_cast<JDIMENSION>(height);
  codec->input_components = source.bytesPerPixel;
  codec->in_color_space = source.bytesPerPixel == 4 ? JCS_EXT_BGRX : JCS_EXT_BGR;
  jpeg_set_defaults(codec);
  jpeg_start_compress(codec, TRUE);
  while (codec->next_scanline < codec->image_height) {
    auto* row = const_cast<JSAMPLE*>(source.pixels + codec->next_scanline * source.strideBytes);
    jpeg_write_scanlines(codec, &row, 1);
  }
  jpeg_finish_compress(codec);
}

void ReadHeader(jpeg_decompress_struct* codec, std::FILE* file) {
  jpeg_create_decompress(codec);
  jpeg_stdio_src(codec, file);
  jpeg_read_header(codec, TRUE);
  codec->out_color_space = JCS_RGB;
}

void ReadRows(jpeg_decompress_struct* codec, std::uint8_t* rgb) {
  jpeg_start_decompress(codec);
  while (codec->output_scanline < codec->output_height) {
    JSAMPROW line = rgb + std::size_t{codec->output_scanline} * codec->output_width * 3;
    jpeg_read_scanlines(codec, &line, 1);
  }
  jpeg_finish_decompress(codec);
}

}  // namespace

bool WriteJpeg(std::FILE* file, const std::uint8_t* pixels, int width, int height, std::ptrdiff_t strideBytes,
               int bytesPerPixel) {
  const Source source{pixels, strideBytes, bytesPerPixel};
  Guarded<jpeg_compress_struct> writer;
  return writer.Do([&](jpeg_compress_struct* codec) { Compress(codec, file, source, width, height); });
}

bool ReadJpeg(std::FILE* file, Picture* picture, std::string* error) {
  Guarded<jpeg_decompress_struct> reader;
  if (!reader.Do([&](jpeg_decompress_struct* codec) { ReadHeader(codec, file); })) {
    *error = reader.trap.text;
    return false;
  }
  if (!picture->Resize(reader.codec.image_width, reader.codec.image_height, error)) return false;
  std::uint8_t* rgb = picture->rgb.data();
  if (!reader.Do([&](jpeg_decompress_struct* codec) { ReadRows(codec, rgb); })) {
    *error = reader.trap.text;
    return false;
  }
  if (reader.trap.incomplete) {
    *error = "the JPEG ends too early or is damaged";
    return false;
  }
  return true;
}

}  // namespace zel
