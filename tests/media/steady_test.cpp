// With the C library's own means to fill memory before it is used, which other systems do not have.

#include <malloc.h>

#include <fstream>
#include <iterator>

#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

using MediaSteady = MediaTest;

// Encoders that read memory which nobody has written make files that cannot be made again.
TEST_F(MediaSteady, GivesTheSameBytesWhateverWasInMemoryBefore) {
    std::vector<Picture> pictures = readAll("scene-full:320x180:1");
    pictures.resize(16);
    for (const char* name : {"a.mp4", "a.mkv", "a.mov", "a.webm"}) {
        std::string first;
        for (const int garbage : {0, 85, 165}) {
            mallopt(M_PERTURB, garbage);
            writePictures(path(name), openSource("scene-full:320x180:1")->format(), pictures);
            std::ifstream file(path(name), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            first = first.empty() ? bytes : first;
            EXPECT_TRUE(bytes == first) << name << " after " << garbage;
            std::filesystem::remove(path(name));
        }
        mallopt(M_PERTURB, 0);
    }
}

}  // namespace
}  // namespace lumiset::media
