// With the C library's own means to fill memory before it is used and to run out of threads, which other systems do not
// have.

#include <malloc.h>
#include <pthread.h>

#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

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

TEST_F(MediaSteady, DrawsTheSceneWhereTheSystemHasNoMoreThreads) {
    const std::vector<Picture> usual = readAll("scene:160x90:0.1:10");
    pthread_attr_t before;
    pthread_attr_t vast;  // with stacks that there is no room for
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    ASSERT_EQ(pthread_getattr_default_np(&vast), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&vast, std::size_t{1} << 47U), 0);
    ASSERT_EQ(pthread_setattr_default_np(&vast), 0);
    EXPECT_THROW(std::jthread([] {}), std::system_error);
    std::vector<Picture> alone;
    EXPECT_NO_THROW(alone = readAll("scene:160x90:0.1:10"));
    pthread_setattr_default_np(&before);
    ASSERT_EQ(alone.size(), usual.size());
    EXPECT_EQ(worstDifference(alone.at(0), usual.at(0)), 0);
}

}  // namespace
}  // namespace lumiset::media
