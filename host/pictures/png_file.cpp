#include "host/pictures/png_file.h"

#include <png.h>

#include "host/shell/failure.h"

namespace kestrova {

std::string PngOf(const Pixels& pixels) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = png_uint_32(pixels.width);
  image.height = png_uint_32(pixels.height);
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string bytes(size, '\0');
  if (!png_image_write_to_memory(&image, bytes.data(), &size, /*convert_to_8_bit=*/0, pixels.rgb.data(),
                                 /*row_stride=*/0, /*colormap=*/nullptr))
    throw Failure(std::string("cannot make the PNG: ") + image.message);
  bytes.resize(size);
  return bytes;
}

}  // namespace kestrova
