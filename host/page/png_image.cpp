#include "host/page/png_image.h"

#include <png.h>

#include "host/failure.h"

std::string EncodePng(const IndexedImage& image, const std::vector<Color>& palette) {
    png_image header = {};
    header.version = PNG_IMAGE_VERSION;
    header.width = static_cast<png_uint_32>(image.width);
    header.height = static_cast<png_uint_32>(image.height);
    header.format = PNG_FORMAT_RGB_COLORMAP;
    header.colormap_entries = static_cast<png_uint_32>(palette.size());
    std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(header), '\0');
    png_alloc_size_t size = bytes.size();
    static_assert(sizeof(Color) == 3);
    if (png_image_write_to_memory(&header, bytes.data(), &size, 0, image.pixels.data(), 0,
                                  palette.data()) == 0) {
        throw Failure(std::string("the picture cannot be encoded: ") + header.message);
    }
    bytes.resize(size);
    return bytes;
}
