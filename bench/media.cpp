// Where the time of rendering a clip goes beside its effects: decoding, conversion in, conversion out and encoding
// apart, in milliseconds a picture of processor time and in memcpys of a picture of four bytes a pixel.

#include <fmt/format.h>

#include <cstring>
#include <ctime>
#include <exception>
#include <string>
#include <vector>

#include "media/media.h"

namespace {

using namespace lumiset;

// Of the whole process, so that the libraries' own threads count too.
double seconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

struct Step {
    const char* name;
    double total = 0;
};

template <class Work>
auto timed(Step& step, Work work) {
    const double begin = seconds();
    const auto result = work();
    step.total += seconds() - begin;
    return result;
}

void run(const std::string& clip, const std::string& output) {
    media::SourceOptions reading;
    reading.threads = 1;
    media::SinkOptions writing;
    writing.threads = 1;
    const auto source = media::openSource(clip, reading);
    const auto sink = media::openSink(output, source->format(), writing);
    Step decode{"decoding"}, in{"conversion in"}, out{"conversion out"}, encode{"encoding"}, copy{"memcpy"};
    media::RawPicture raw;
    media::Picture picture;
    std::vector<std::uint8_t> copied;
    int count = 0;
    while (timed(decode, [&] { return source->fetch(raw); })) {
        timed(in, [&] { return source->convert(raw, picture), 0; });
        media::ReadyPicture ready;
        copied.resize(picture.data.size());
        timed(copy, [&] { return std::memcpy(copied.data(), picture.data.data(), copied.size()); });
        if (count++ == 0) {
            sink->write(picture);  // which opens the encoder
            continue;
        }
        if (timed(out, [&] { return sink->prepare(picture, ready); })) {
            timed(encode, [&] { return sink->write(ready), 0; });
        }
    }
    sink->finish();
    const double copies = copy.total / count;
    for (const Step& step : {decode, in, out, encode, copy}) {
        fmt::print("{:<16}{:>10.3f} ms{:>8.2f} memcpys\n", step.name, step.total / count * 1e3,
                   step.total / count / copies);
    }
    fmt::print("conversion both ways: {:.2f} memcpys, aim 12\n", (in.total + out.total) / count / copies);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fmt::print(stderr, "usage: lumiset_media_bench CLIP OUTPUT\n");
        return 2;
    }
    try {
        run(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "lumiset_media_bench: {}\n", error.what());
        return 1;
    }
}
