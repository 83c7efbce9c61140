// JPEG files from RGB buffers through libjpeg.
#include "JpegWriter.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>  // before jpeglib.h, which uses FILE without including it
#include <cstring>

#include <jpeglib.h>

namespace {

// libjpeg's default error handler calls exit(); this one jumps back to the encoder with the text.
struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX];
};

void OnError(j_common_ptr info) {
  auto* errors = reinterpret_cast<ErrorManager*>(info->err);
  (*info->err->format_message)(info, errors->message);
  std::longjmp(errors->jump, 1);
}

void IgnoreMessage(j_common_ptr) {}

// The encoding itself, kept free of objects with destructors because libjpeg errors leave it by
// longjmp. Returns false with `message` filled on failure.
bool Encode(std::FILE* file, const unsigned char* rgb, int width, int height, int quality, char* message) {
  jpeg_compress_struct info;
  ErrorManager errors;
  info.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = OnError;
  errors.base.output_message = IgnoreMessage;
  if (setjmp(errors.jump) != 0) {
    jpeg_destroy_compress(&info);
    std::strncpy(message, errors.message, JMSG_LENGTH_MAX);
    return false;
  }
  jpeg_create_compress(&info);
  jpeg_stdio_dest(&info, file);
  info.image_width = static_cast<JDIMENSION>(width);
  info.image_height = static_cast<JDIMENSION>(height);
  info.input_components = 3;
  info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, quality, TRUE);
  // Full-resolution chroma: thin coloured lines blur badly with the default 2x2 subsampling.
  for (int c = 0; c < info.num_components; ++c) {
    info.comp_info[c].h_samp_factor = 1;
    info.comp_info[c].v_samp_factor = 1;
  }
  jpeg_start_compress(&info, TRUE);
  const JDIMENSION stride = static_cast<JDIMENSION>(width) * 3;
  while (info.next_scanline < info.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(rgb + static_cast<size_t>(info.next_scanline) * stride);
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  return true;
}

}  // namespace

std::string WriteJpeg(const std::string& path, const unsigned char* rgb, int width, int height, int quality) {
  if (width <= 0 || height <= 0 || width > JPEG_MAX_DIMENSION || height > JPEG_MAX_DIMENSION) {
    return "a JPEG image cannot be " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
  }
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return "cannot write " + path + ": " + std::strerror(errno);
  char message[JMSG_LENGTH_MAX] = {};
  const bool encoded = Encode(file, rgb, width, height,
                              quality < 1     ? 1
                              : quality > 100 ? 100
                                              : quality,
                              message);
  const bool closed = std::fclose(file) == 0;
  if (!encoded) {
    std::remove(path.c_str());
    return std::string("JPEG encoding failed: ") + message;
  }
  if (!closed) {
    std::remove(path.c_str());
    return "cannot finish writing " + path;
  }
  return "";
}
