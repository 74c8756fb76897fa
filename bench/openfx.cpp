// What the OpenFX plug-ins add to a frame: hosts' pictures are read into the effects' frames and back.

#include "adapters/openfx/transfer.h"
#include "bench/bench_case.h"
#include "bench/frames.h"

namespace lumiset::bench {
namespace {

using openfx::Alpha;
using openfx::Depth;

VideoFrameDesc describe(Frame& frame) {
    VideoFrameDesc desc{};
    desc.data = frame.Data();
    desc.width = kWidth;
    desc.height = kHeight;
    desc.stride = frame.Stride();
    desc.bytesPerPixel = frame.BytesPerPixel();
    desc.format = static_cast<std::uint32_t>(frame.Format());
    return desc;
}

void add(Cases& cases, const std::string& name, Base base, Depth depth, Alpha alpha, Pool& host, Pool& ours) {
    const auto pixels = [depth, alpha, &host](std::size_t n) {
        return openfx::Pixels{host.bytes(n), {0, 0, kWidth, kHeight}, host.step(), depth, 4, false, alpha};
    };
    constexpr openfx::RectI kAll{0, 0, kWidth, kHeight};
    const auto goOn = [] { return true; };
    cases.push_back({"OpenFX, read " + name, base, [=, &ours](std::size_t n) {
                         return openfx::readPixels(pixels(n), kAll, describe(ours[n]), goOn);
                     }});
    cases.push_back({"OpenFX, write " + name, base, [=, &ours](std::size_t n) {
                         openfx::writePixels(describe(ours[n]), kAll, pixels(n), kAll, openfx::Rows::kAll, goOn);
                         return true;
                     }});
}

}  // namespace

void addOpenFX(Cases& cases) {
    Frames& f = frames();
    add(cases, "bytes", Base::kFrame8, Depth::kByte, Alpha::kStraight, f.a8, f.out8);
    add(cases, "premultiplied bytes", Base::kFrame8, Depth::kByte, Alpha::kPremultiplied, f.a8, f.out8);
    add(cases, "floats", Base::kFrameFloat, Depth::kFloat, Alpha::kStraight, f.aF, f.outF);
    add(cases, "premultiplied floats", Base::kFrameFloat, Depth::kFloat, Alpha::kPremultiplied, f.aF, f.outF);
}

}  // namespace lumiset::bench
