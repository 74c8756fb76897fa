// Bad input, bad places to write to, and what is left behind: nothing.

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

class MediaFailures : public MediaTest {
protected:
    void writeText(const std::string& name, const std::string& text) {
        std::ofstream(path(name), std::ios::binary) << text;
    }

    // The sentence of the error that `action` ends with.
    template <class Action>
    std::string sentence(Action action) {
        try {
            action();
        } catch (const MediaError& error) {
            return error.what();
        }
        ADD_FAILURE() << "no error";
        return {};
    }
};

// One sentence that names the file and ends like one, without the libraries' jargon.
void expectClear(const std::string& text, const std::string& name) {
    EXPECT_NE(text.find(name), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with(".")) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    EXPECT_EQ(text.find("Error number"), std::string::npos) << text;
}

TEST_F(MediaFailures, OfReadingAreOneClearSentence) {
    writeText("text.png", "this is no picture");
    writeText("text.txt", std::string(5000, 'x'));
    writeText("empty.mp4", "");
    std::filesystem::create_directory(path("folder.png"));
    writeText("flat.y4m", "YUV4MPEG2 W0 H0\nFRAME\n");
    writeText("long.y4m", "YUV4MPEG2 " + std::string(900, 'W'));
    for (const char* name : {"flat.y4m", "long.y4m"}) {
        const std::string text = sentence([&] { readAll(path(name)); });
        EXPECT_NE(text.find("it is no picture or video, or it is damaged"), std::string::npos) << text;
    }
    for (const char* name : {"text.png", "text.txt", "empty.mp4", "folder.png", "none.mov", "none_%03d.png"}) {
        SCOPED_TRACE(name);
        expectClear(sentence([&] { readAll(path(name)); }), name);
    }
}

TEST_F(MediaFailures, OfFilesCutShortAreNoticedWhereverTheyAreCut) {
    const Picture picture = colorPatches(64, 48, false);
    VideoFormat format = formatOf(picture, false);
    for (const std::string name : {"a.png", "a.jpg", "a.tiff", "a.webp", "a.bmp", "a.mp4", "a.mov", "a.mkv", "a.webm",
                                   "a.y4m", "a.avi", "a.ts"}) {
        const bool still = name.size() > 5 ? name == "a.tiff" || name == "a.webp"
                                           : name == "a.png" || name == "a.jpg" || name == "a.bmp";
        writePictures(path(name), format, std::vector<Picture>(still ? 1 : 20, picture));
        ASSERT_EQ(readAll(path(name)).size(), still ? 1U : 20U);
        if (name == "a.avi" || name == "a.mkv") {
            const std::string longer = "longer" + name.substr(1);
            std::filesystem::copy_file(path(name), path(longer));
            std::ofstream(path(longer), std::ios::app) << "what a program left behind a whole film";
            EXPECT_EQ(readAll(path(longer)).size(), 20U) << name;
        }
        const auto size = std::filesystem::file_size(path(name));
        std::filesystem::create_directories(path("cut"));
        for (const int percent : {30, 70, 95}) {
            SCOPED_TRACE(name + " " + std::to_string(percent) + "%");
            const std::string cut = path("cut/" + name);
            std::filesystem::copy_file(path(name), cut, std::filesystem::copy_options::overwrite_existing);
            std::filesystem::resize_file(cut, size * static_cast<unsigned>(percent) / 100);
            expectClear(sentence([&] { readAll(cut); }), name);
        }
    }
}

TEST_F(MediaFailures, OfWritingAreOneClearSentenceAndLeaveNothing) {
    const VideoFormat format = formatOf(flatPicture(16, 16, 0, 0, 0), false);
    std::filesystem::create_directory(path("folder.mp4"));
    const auto before = files();
    for (const char* name : {"a.unknown", "noextension", "a.mp3", "nowhere/a.png", "nowhere/a.mkv", "folder.mp4"}) {
        SCOPED_TRACE(name);
        expectClear(sentence([&] { openSink(path(name), format); }), name);
    }
    EXPECT_NE(sentence([&] { openSink(path("a.unknown"), format); }).find("mp4"), std::string::npos);
    SinkOptions options;
    options.codec = "prores";
    expectClear(sentence([&] { openSink(path("a.webm"), format, options); }), "prores");
    options.codec = "libx265";
    const VideoFormat tiny = formatOf(flatPicture(2, 2, 0, 0, 0), false);
    const std::string refused =
        sentence([&] { openSink(path("a.mp4"), tiny, options)->write(flatPicture(2, 2, 0, 0, 0)); });
    EXPECT_NE(refused.find("pictures of 2x2"), std::string::npos) << refused;
    expectClear(sentence([&] { openSink(path("none.mkv"), format)->finish(); }), "none.mkv");
    expectClear(sentence([&] { openSink(path("none.png"), format)->finish(); }), "none.png");
    expectClear(sentence([&] {
                    const auto sink = openSink(path("two.png"), format);
                    sink->write(flatPicture(16, 16, 0, 0, 0));
                    sink->write(flatPicture(16, 16, 0, 0, 0));
                }),
                "two_%04d.png");
    EXPECT_EQ(files(), before);
}

TEST_F(MediaFailures, LeaveTheOldFileUntilTheNewOneIsComplete) {
    const Picture picture = flatPicture(16, 16, 1, 2, 3);
    const VideoFormat format = formatOf(picture, false);
    for (const char* name : {"a.mkv", "a.png"}) {
        writeText(name, "old");
        {
            const auto sink = openSink(path(name), format);
            sink->write(picture);
            // Destroyed without finish, as by an interrupted run.
        }
        EXPECT_EQ(std::filesystem::file_size(path(name)), 3U) << name;
    }
    EXPECT_EQ(files(), (std::vector<std::string>{"a.mkv", "a.png"}));

    // Reading from the file that is being replaced.
    writePictures(path("a.mkv"), format, {picture, picture});
    {
        const auto source = openSource(path("a.mkv"));
        const auto sink = openSink(path("a.mkv"), source->format(), {}, source.get());
        for (const Picture& read : readAll(*source)) {
            sink->write(read);
        }
        sink->finish();
    }
    EXPECT_EQ(readAll(path("a.mkv")).size(), 2U);

    // A link is followed, not replaced.
    std::filesystem::create_symlink("a.mkv", path("link.mkv"));
    writePictures(path("link.mkv"), format, {picture});
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.mkv")));
    EXPECT_EQ(readAll(path("a.mkv")).size(), 1U);
}

// A limit on the size of files makes writes fail as a full disk does.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int) = SIG_DFL;
};

TEST_F(MediaFailures, OfAFullDiskAreNoticed) {
    Picture noise;
    noise.allocate(256, 256, Depth::kEightBit);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : noise.data) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    for (const char* name : {"a.mkv", "a.mp4", "a.mov", "a.y4m", "a.png", "a_%02d.png"}) {
        SCOPED_TRACE(name);
        const std::string text = sentence([&] {
            const FileSizeLimit limit(20000);
            writePictures(path(name), formatOf(noise, false), {noise});
        });
        EXPECT_NE(text.find("File too large"), std::string::npos) << text;
        EXPECT_TRUE(files().empty());
    }
}

TEST_F(MediaFailures, OfStandardInputAreNoticedToo) {
    const Picture picture = colorPatches(64, 48, false);
    writePictures(path("a.y4m"), formatOf(picture, false), {picture, picture});
    const int kept = dup(STDIN_FILENO);
    const auto readFromStdin = [&] {
        FILE* file = fopen(path("a.y4m").c_str(), "rb");
        dup2(fileno(file), STDIN_FILENO);
        fclose(file);
        return readAll("-");
    };
    EXPECT_EQ(readFromStdin().size(), 2U);
    std::filesystem::resize_file(path("a.y4m"), std::filesystem::file_size(path("a.y4m")) - 100);
    expectClear(sentence(readFromStdin), "standard input");
    dup2(kept, STDIN_FILENO);
    close(kept);
}

}  // namespace
}  // namespace lumiset::media
