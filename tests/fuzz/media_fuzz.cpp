// Whatever bytes a picture or a video begins with: opening it fails with a sentence that names the file, or gives
// pictures of the size that was announced.

#include <cstdint>
#include <new>
#include <string>

#include "media/media.h"
#include "tests/fuzz/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumiset;
    using fuzz::require;
    static const fuzz::MemoryFile s_file;
    // The first byte says what is asked for.
    const unsigned choice = size > 0 ? data[0] : 0;
    s_file.write({reinterpret_cast<const char*>(data) + (size > 0 ? 1 : 0), size > 0 ? size - 1 : 0});
    media::SourceOptions options;
    options.depth = choice % 2 == 0 ? media::Depth::kEightBit : media::Depth::kFloat;
    options.threads = 1;
    try {
        const auto source = media::openSource(s_file.path(), options);
        const media::VideoFormat format = source->format();
        require(format.width > 0 && format.height > 0);
        media::Picture picture;
        for (int i = 0; i < 3 && source->read(picture); ++i) {
            require(picture.width == format.width && picture.height == format.height);
        }
        if (choice % 4 > 1) {
            source->restart(0.1);
            source->read(picture);
        }
    } catch (const media::MediaError& error) {
        require(std::string(error.what()).find(s_file.path()) != std::string::npos);
    } catch (const std::bad_alloc&) {  // a picture of a size that no memory holds
    }
    return 0;
}
