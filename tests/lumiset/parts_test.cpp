// A film in parts: what one run would have written, whatever the film and the output are like.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "media/av.h"
#include "media/media.h"
#include "tests/lumiset/cli_run.h"
#include "tests/media/media_clip.h"
#include "tests/media/media_fixture.h"

namespace lumiset::test {
namespace {

using Words = std::vector<std::string>;

/// Moves with keys and with time, so that a picture at a wrong time looks otherwise.
const Words kLook{"-q",        "-e", "Old TV",        "-p", "Snow",         "-e", "Outline", "-k",
                  "Width@0=0", "-k", "Width@100%=60", "-s", "Color=#FFD040"};

Words command(const Words& begin, const Words& options) {
    Words words = begin;
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

class Parts : public ::testing::Test {
protected:
    /// Makes a clip with ffmpeg, from test pictures unless `options` name another input.
    std::string clip(const std::string& name, const std::string& options) {
        const std::string file = folder / name;
        const std::string line =
            "ffmpeg -v error -f lavfi -i testsrc2=96x64:rate=30000/1001:duration=4 " + options + " -threads 1 " + file;
        EXPECT_EQ(std::system(line.c_str()), 0) << line;
        return file;
    }

    /// Renders in `count` parts, the later ones first, and joins them.
    RunResult inParts(const std::string& input, const std::string& output, Words options, int count) {
        options.insert(options.end(), kLook.begin(), kLook.end());
        Words join{"join", output, "-q"};
        const std::string stem =
            output.substr(0, output.find(".png") == std::string::npos ? output.npos : output.rfind(':'));
        for (int number = count; number >= 1; --number) {
            const RunResult part = runLumiset(
                command({"render", input, output, "--part", std::to_string(number) + "/" + std::to_string(count), "-j",
                         std::to_string(1 + number % 3)},
                        options));
            EXPECT_EQ(part.status, 0) << input << ' ' << number << '\n' << part.err;
        }
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().string().starts_with(stem + ".part")) {
                join.push_back(entry.path().string());
            }
        }
        EXPECT_EQ(join.size(), static_cast<std::size_t>(count) + 3) << output;
        return runLumiset(join);
    }

    TemporaryFolder folder;
};

struct Packet {
    std::int64_t pts, dts, duration;
    int flags;
    std::string bytes;
};

std::vector<Packet> packetsOf(const std::string& file) {
    AVFormatContext* context = nullptr;
    std::vector<Packet> packets;
    if (avformat_open_input(&context, file.c_str(), nullptr, nullptr) < 0) {
        return packets;
    }
    const media::AvInput input(context);
    avformat_find_stream_info(context, nullptr);
    const int video = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const media::AvPacket packet(av_packet_alloc());
    while (av_read_frame(context, packet.get()) >= 0) {
        if (packet->stream_index == video) {
            packets.push_back(
                {packet->pts, packet->dts, packet->duration, packet->flags & AV_PKT_FLAG_KEY,
                 std::string(reinterpret_cast<char*>(packet->data), static_cast<std::size_t>(packet->size))});
        }
        av_packet_unref(packet.get());
    }
    return packets;
}

TEST_F(Parts, MakeTheFilmThatOneRunMakes) {
    const std::string longGop = "-c:v libx264 -bf 3 -g 250 -sc_threshold 0";
    const std::string variable =
        "-vf \"setpts=PTS+floor(N/7)*0.013/TB+gte(N\\,60)*2.6/TB\" -vsync vfr -enc_time_base 1:90000 ";
    const struct {
        std::string input;
        std::string output;
        Words options;
        int count;
        bool sameBytes;  ///< of the packets: the codec knows no other pictures
    } kCases[] = {
        {"scene:64x48:1:24000/1001", "scene.mkv", {"--codec", "ffv1"}, 5, true},
        {"scene:64x48:0.3:10", "few.mkv", {"--codec", "ffv1"}, 7, true},
        {clip("open.mp4", longGop + " -x264-params open-gop=1:keyint=40:min-keyint=40 -b_strategy 0"),
         "open.mkv",
         {"--codec", "ffv1"},
         4,
         true},
        {clip("long.mkv", longGop + " -output_ts_offset 5"), "late.mov", {"--codec", "prores"}, 3, true},
        {clip("hevc.mp4", "-c:v libx265 -x265-params log-level=none:keyint=50:open-gop=1"),
         "hevc.mkv",
         {"--codec", "ffv1", "--depth", "float"},
         3,
         true},
        {clip("fields.ts", "-vf tinterlace=interleave_top -c:v mpeg2video -flags +ilme+ildct -bf 2 -g 40"),
         "fields.mkv",
         {"--codec", "ffv1"},
         5,
         true},
        {clip("cut.mp4", longGop + " -ss 1.1"),
         "range.mkv",
         {"--codec", "ffv1", "--start", "0.7", "--duration", "1.9"},
         4,
         true},
        {clip("variable.mkv", variable + longGop), "variable.mkv.mkv", {"--codec", "ffv1"}, 6, true},
        {folder / "variable.mkv", "variable.mp4", {}, 4, false},
        {folder / "variable.mkv", "variable.ts", {"--codec", "mpeg2"}, 4, false},
        {folder / "variable.mkv", "paced.mp4", {"--fps", "12.5", "--start", "1"}, 5, false},
        {folder / "fields.ts", "small.mkv", {"--codec", "ffv1", "--size", "80x"}, 3, true},
        {folder / "open.mp4", "full.mov", {}, 3, false},
        {folder / "open.mp4", "full.y4m", {}, 3, true},
        {folder / "variable.mkv", "held.y4m", {}, 5, true},
        {"scene:64x48:1:25", "alpha.webm", {}, 2, false},
        {folder / "open.mp4", "ten.mkv", {"--codec", "hevc", "--bits", "10"}, 2, false},
    };
    for (const auto& each : kCases) {
        SCOPED_TRACE(each.output);
        const std::string whole = folder / ("one_" + each.output);
        const std::string joined = folder / each.output;
        const RunResult one = runLumiset(command(command({"render", each.input, whole}, each.options), kLook));
        ASSERT_EQ(one.status, 0) << one.err;
        const RunResult join = inParts(each.input, joined, each.options, each.count);
        ASSERT_EQ(join.status, 0) << join.err;
        const std::vector<Packet> expected = packetsOf(whole);
        const std::vector<Packet> found = packetsOf(joined);
        ASSERT_GT(expected.size(), 2U);
        ASSERT_EQ(found.size(), expected.size());
        std::vector<std::int64_t> expectedTimes;
        std::vector<std::int64_t> times;
        for (std::size_t i = 0; i < found.size(); ++i) {
            expectedTimes.push_back(expected[i].pts);
            times.push_back(found[i].pts);
            EXPECT_EQ(found[i].dts, expected[i].dts) << i;
            EXPECT_TRUE(!each.sameBytes || found[i].bytes == expected[i].bytes) << i;
            if (expected.front().dts != AV_NOPTS_VALUE) {  // Matroska tells none
                EXPECT_TRUE(i == 0 || found[i].dts > found[i - 1].dts) << i;
                EXPECT_LE(found[i].dts, found[i].pts) << i;
            }
        }
        std::sort(times.begin(), times.end());
        std::sort(expectedTimes.begin(), expectedTimes.end());
        EXPECT_EQ(times, expectedTimes);
        const std::vector<media::Picture> pictures = media::readAll(joined);
        const std::vector<media::Picture> wanted = media::readAll(whole);
        ASSERT_EQ(pictures.size(), wanted.size());
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            EXPECT_EQ(pictures[i].pts, wanted[i].pts) << i;
            EXPECT_EQ(pictures[i].interlaced, wanted[i].interlaced) << i;
            EXPECT_EQ(pictures[i].topFieldFirst, wanted[i].topFieldFirst) << i;
            const auto samplesOf = [](const media::Picture& picture) {
                return [&picture](int x, int y, int c) { return media::sampleOf(picture, x, y, c); };
            };
            const double psnr =
                differenceOf(wanted[i].width, wanted[i].height, 4, samplesOf(pictures[i]), samplesOf(wanted[i])).psnr;
            EXPECT_GE(psnr, each.sameBytes ? 999.0 : 20.0) << i;
        }
    }
}

TEST_F(Parts, AreCarriedWithWhatTheFilmHas) {
    media::writeFullClip(folder / "full.mkv");
    const Words range{"--start", "0.4", "--codec", "ffv1"};
    ASSERT_EQ(runLumiset(command(command({"render", folder / "full.mkv", folder / "one.mkv"}, range), kLook)).status,
              0);
    const RunResult join = inParts(folder / "full.mkv", folder / "joined.mkv", range, 3);
    ASSERT_EQ(join.status, 0) << join.err;
    const media::Contents one = media::contentsOf(folder / "one.mkv");
    const media::Contents joined = media::contentsOf(folder / "joined.mkv");
    EXPECT_EQ(joined.chapters, one.chapters);
    EXPECT_EQ(joined.timecode, "01:00:00:10");
    EXPECT_EQ(joined.attachments, one.attachments);
    EXPECT_EQ(joined.cover, one.cover);
    EXPECT_EQ(joined.subtitle, "Hello");
    EXPECT_NEAR(joined.subtitleSeconds, 0.6, 0.001);

    media::writeFlashAndBeep(folder / "beep.mkv");
    ASSERT_EQ(inParts(folder / "beep.mkv", folder / "beep.mp4", {"--start", "0.5"}, 3).status, 0);
    EXPECT_NEAR(media::firstLoudSecond(folder / "beep.mp4"), 0.5, 0.03);
    EXPECT_EQ(media::contentsOf(folder / "beep.mp4").sounds, 2);
}

TEST_F(Parts, NumberThePicturesOfASequenceAsOneRunDoes) {
    const std::string input =
        clip("in.mkv", "-vf \"setpts=PTS+floor(N/5)*0.02/TB\" -vsync vfr -c:v libx264 -bf 3 -t 1");
    std::filesystem::create_directory(folder / "one");
    ASSERT_EQ(runLumiset(command({"render", input, folder / "one/p_%03d.png:7"}, kLook)).status, 0);
    const RunResult join = inParts(input, folder / "p_%03d.png:7", {}, 4);
    EXPECT_EQ(join.status, 0) << join.err;
    Words all{"join", folder / "p_%03d.png:7"};
    for (int number = 1; number <= 4; ++number) {
        all.push_back(folder / ("p_%03d.png.part" + std::to_string(number) + "of4"));
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "one")) {
        ++count;
        EXPECT_TRUE(contentsOf(entry.path().string()) == contentsOf(folder / entry.path().filename().string()))
            << entry;
    }
    EXPECT_GT(count, 20);

    std::filesystem::remove(folder / "p_010.png");
    const RunResult lost = runLumiset(all);
    EXPECT_EQ(lost.status, 1);
    EXPECT_NE(lost.err.find("p_010.png"), std::string::npos) << lost.err;
    const Words again = command({"render", input, folder / "p_%03d.png:7", "--part", "1/4"}, kLook);
    EXPECT_EQ(runLumiset(again).status, 0) << "a part that has lost a picture is rendered again";
    EXPECT_EQ(runLumiset(all).status, 0);
    std::filesystem::remove(folder / "p_%03d.png.part2of4");
    const RunResult foreign = runLumiset(command({"render", input, folder / "p_%03d.png:7", "--part", "2/4"}, kLook));
    EXPECT_EQ(foreign.status, 1) << "pictures that no part is known to have made";
    EXPECT_NE(foreign.err.find("--overwrite"), std::string::npos) << foreign.err;
}

/// Parts of one film and of others that resemble it.
class PartsThatDoNotFit : public Parts {
protected:
    void SetUp() override {
        const std::string options = "-c:v libx264 -g 20 -t 1";
        clip("a.mp4", options);
        clip("b.mp4", "-vf negate " + options);
        std::filesystem::copy_file(folder / "a.mp4", folder / "copy.mp4");
        for (const char* number : {"1/3", "2/3", "3/3"}) {
            ASSERT_EQ(part("film.mkv", number).status, 0);
        }
    }

    RunResult part(const std::string& output, const std::string& number, const Words& more = {},
                   const std::string& input = "a.mp4") {
        return runLumiset(command(
            command({"render", folder / input, folder / output, "--codec", "ffv1", "--part", number}, kLook), more));
    }

    RunResult join(const Words& parts) {
        Words words{"join", folder / "film.mkv", "-y"};
        for (const std::string& each : parts) {
            words.push_back(folder / each);
        }
        return runLumiset(words);
    }
};

TEST_F(PartsThatDoNotFit, AreRefusedBySentencesThatNameThem) {
    const std::string first = "film.mkv.part1of3";
    const std::string second = "film.mkv.part2of3";
    const std::string third = "film.mkv.part3of3";
    EXPECT_EQ(join({third, first, second}).status, 0) << "in any order";

    const std::string bytes = contentsOf(folder / second);
    writeFile(folder / "cut", bytes.substr(0, bytes.size() - 1));
    writeFile(folder / "half", bytes.substr(0, bytes.size() / 2));
    writeFile(folder / "begun", bytes.substr(0, 15));
    for (const std::size_t at : {std::size_t{20}, bytes.size() / 2, bytes.size() - 200, bytes.size() - 50}) {
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ 0x20);
        writeFile(folder / ("changed" + std::to_string(at)), changed);
    }
    ASSERT_EQ(part("look.mkv", "2/3", {"-s", "Color=#00FF00"}).status, 0);
    ASSERT_EQ(part("depth.mkv", "2/3", {"--depth", "float"}).status, 0);
    ASSERT_EQ(part("start.mkv", "2/3", {"--start", "0.1"}).status, 0);
    ASSERT_EQ(part("count.mkv", "2/4").status, 0);
    ASSERT_EQ(runLumiset(command({"render", folder / "a.mp4", folder / "kind.mov", "--part", "2/3"}, kLook)).status, 0);
    ASSERT_EQ(part("source.mkv", "2/3", {}, "b.mp4").status, 0);
    ASSERT_EQ(part("copied.mkv", "2/3", {}, "copy.mp4").status, 0);
    const struct {
        Words parts;
        const char* says;
    } kCases[] = {
        {{first, third}, "missing: 2"},
        {{first, second}, "missing: 3"},
        {{second, third, first, second}, "twice"},
        {{first, second, third, "a.mp4"}, "a.mp4' is no part"},
        {{first, "gone", third}, "gone'"},
        {{first, "cut", third}, "cut'"},
        {{first, "half", third}, "half'"},
        {{first, "begun", third}, "begun'"},
        {{first, "changed20", third}, "damaged"},
        {{first, "changed" + std::to_string(bytes.size() / 2), third}, "damaged"},
        {{first, "changed" + std::to_string(bytes.size() - 200), third}, "damaged"},
        {{first, "changed" + std::to_string(bytes.size() - 50), third}, "damaged"},
        {{first, "look.mkv.part2of3", third}, "look.mkv.part2of3' was made with another look"},
        {{first, "depth.mkv.part2of3", third}, "another --depth"},
        {{first, "start.mkv.part2of3", third}, "another --start"},
        {{first, "count.mkv.part2of4", third}, "another number of parts"},
        {{first, "kind.mov.part2of3", third}, "another kind of file"},
        {{first, "source.mkv.part2of3", third}, "another input"},
    };
    const std::string film = contentsOf(folder / "film.mkv");
    for (const auto& each : kCases) {
        const RunResult run = join(each.parts);
        EXPECT_EQ(run.status, 1) << each.says;
        EXPECT_NE(run.err.find(each.says), std::string::npos) << each.says << '\n' << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_TRUE(contentsOf(folder / "film.mkv") == film) << each.says;
    }
    EXPECT_EQ(join({first, "copied.mkv.part2of3", third}).status, 0) << "a copy of the input, on another disk";

    std::filesystem::last_write_time(folder / "a.mp4", std::filesystem::file_time_type::clock::now());
    ASSERT_EQ(part("later.mkv", "2/3").status, 0);
    EXPECT_NE(join({first, "later.mkv.part2of3", third}).err.find("another state of the input"), std::string::npos);

    // The input in its place is another one now, of the same size even.
    std::string input = contentsOf(folder / "a.mp4");
    input[input.size() / 2] = static_cast<char>(input[input.size() / 2] ^ 1);
    writeFile(folder / "a.mp4", input);
    const RunResult changed = join({first, second, third});
    EXPECT_EQ(changed.status, 1);
    EXPECT_NE(changed.err.find("a.mp4' is not what the parts were made of"), std::string::npos) << changed.err;
    std::filesystem::remove(folder / "a.mp4");
    EXPECT_EQ(join({first, second, third, "-i", folder / "copy.mp4"}).status, 1) << "a part by that name";
    EXPECT_EQ(runLumiset({"join", folder / "film.mkv", "-y", "-i", folder / "copy.mp4", folder / first, folder / second,
                          folder / third})
                  .status,
              0);
}

TEST_F(PartsThatDoNotFit, AreRenderedAgainOnlyWhereTheyHaveTo) {
    const std::string file = folder / "film.mkv.part2of3";
    const auto written = [&] { return std::filesystem::last_write_time(file); };
    const auto before = written();
    const RunResult done = part("film.mkv", "2/3");
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(written(), before) << "it was finished";
    const RunResult other = part("film.mkv", "2/3", {"-s", "Color=#00FF00"});
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("another look"), std::string::npos) << other.err;
    EXPECT_EQ(written(), before);
    EXPECT_EQ(part("film.mkv", "2/3", {"-y"}).status, 0);
    EXPECT_NE(written(), before);
    const std::string bytes = contentsOf(file);
    writeFile(file, bytes.substr(0, bytes.size() / 2) + 'x' + bytes.substr(bytes.size() / 2 + 1));
    EXPECT_EQ(part("film.mkv", "2/3").status, 0) << "damaged";
    EXPECT_TRUE(contentsOf(file) == bytes);
    writeFile(file, "letters");
    EXPECT_EQ(part("film.mkv", "2/3").status, 1) << "somebody's";
    EXPECT_EQ(contentsOf(file), "letters");

    const struct {
        Words words;
        int status;
    } kRefused[] = {
        {{"render", folder / "a.mp4", folder / "x.mkv", "--part", "0/3"}, 2},
        {{"render", folder / "a.mp4", folder / "x.mkv", "--part", "4/3"}, 2},
        {{"render", folder / "a.mp4", folder / "x.mkv", "--part", "1"}, 2},
        {{"render", folder / "a.mp4", "-", "--part", "1/3"}, 1},
        {{"render", folder / "a.mp4", folder / "x.gif", "--part", "1/3"}, 1},
        {{"render", folder / "a.mp4", folder / "x.png", "--part", "1/3"}, 1},
        {{"render", "-", folder / "x.mkv", "--part", "1/3"}, 2},
    };
    const auto entries = folder.entries();
    for (const auto& each : kRefused) {
        const RunResult run = runLumiset(command(each.words, kLook));
        EXPECT_EQ(run.status, each.status) << each.words[2] << ' ' << each.words[4] << '\n' << run.err;
        EXPECT_EQ(folder.entries(), entries);
    }
}

}  // namespace
}  // namespace lumiset::test
