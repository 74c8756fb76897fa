#include <opencv2/imgproc.hpp>

#include "bench/bench_case.h"
#include "bench/frames.h"
#include "frame/operations/geometry.h"
#include "frame/primitives/border.h"
#include "frame/primitives/noise.h"
#include "frame/primitives/warp.h"

namespace lumiset::bench {
namespace {

struct ResizeRow {
    const char* name;
    std::int32_t mode;
    int opencv;
    double aim;
};

void addResizes(Cases& cases) {
    Frames& f = frames();
    for (const ResizeRow& row : {ResizeRow{"nearest", kResizeNearest, cv::INTER_NEAREST, 2},
                                 {"linear", kResizeLinear, cv::INTER_LINEAR, 4},
                                 {"cubic", kResizeCubic, cv::INTER_CUBIC, 14},
                                 {"Lanczos", kResizeLanczos, cv::INTER_LANCZOS4, 30}}) {
        const auto add = [&](const char* type, const Pool& from, const Pool& to, Base base, double aim) {
            cases.push_back(
                {std::string("FrameResizeInto ") + type + " 853x480 " + row.name, base,
                 [&from, &to, mode = row.mode](std::size_t n) { return FrameResizeInto(from[n], to[n], mode); }, aim,
                 [&from, &to, code = row.opencv](std::size_t n) {
                     cv::Mat out = to.mat(n);
                     cv::resize(from.mat(n), out, out.size(), 0, 0, code);
                 }});
        };
        add("8C4", f.small8, f.out8, Base::kFrame8, row.aim);
        add("FC4", f.smallF, f.outF, Base::kFrameFloat, 0);
        add("8C1", f.smallMask8, f.aMask8, Base::kFrame8, 0);
    }
    cases.push_back({"FrameResizeInto 8C4 to 853x480 linear", Base::kFrame8,
                     [&f](std::size_t n) { return FrameResizeInto(f.a8[n], f.small8[n], kResizeLinear); }, 0,
                     [&f](std::size_t n) {
                         cv::Mat out = f.small8.mat(n);
                         cv::resize(f.a8.mat(n), out, out.size(), 0, 0, cv::INTER_LINEAR);
                     }});
}

void addWarps(Cases& cases) {
    Frames& f = frames();
    static constexpr double kTurn[2][3] = {{0.96, -0.28, 200}, {0.28, 0.96, -150}};
    cases.push_back({"ImgWarpAffine8C4 linear, smooth edge", Base::kFrame8,
                     [&f](std::size_t n) {
                         return ImgWarpAffine8C4(f.a8.bytes(n), f.a8.step(), f.a8.size(), f.out8.bytes(n),
                                                 f.out8.step(), kTurn, kImgLinear | kImgSmoothEdge,
                                                 f.out8.size()) == kImgOk;
                     },
                     0,
                     [&f](std::size_t n) {
                         const cv::Matx23d turn(&kTurn[0][0]);
                         cv::Mat out = f.out8.mat(n);
                         cv::warpAffine(f.a8.mat(n), out, turn, out.size(), cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
                     }});
}

void addNoises(Cases& cases) {
    Frames& f = frames();
    cases.push_back({"ImgAddUniform8C1", Base::kFrame8,
                     [&f](std::size_t n) {
                         auto seed = static_cast<std::uint32_t>(n);
                         return ImgAddUniform8C1(f.aMask8.bytes(n), f.aMask8.step(), -64, 64, &seed, f.aMask8.size()) ==
                                kImgOk;
                     },
                     0,
                     [&f](std::size_t n) {
                         cv::Mat out = f.bMask8.mat(n);
                         cv::theRNG().fill(out, cv::RNG::UNIFORM, 0, 128);
                     }});
    cases.push_back({"ImgAddGauss8C1", Base::kFrame8,
                     [&f](std::size_t n) {
                         auto seed = static_cast<std::uint32_t>(n);
                         return ImgAddGauss8C1(f.aMask8.bytes(n), f.aMask8.step(), 0, 127, &seed, f.aMask8.size()) ==
                                kImgOk;
                     },
                     2,
                     [&f](std::size_t n) {
                         cv::Mat out = f.bMask8.mat(n);
                         cv::theRNG().fill(out, cv::RNG::NORMAL, 127, 127);
                     }});
    cases.push_back({"ImgAddGaussF", Base::kFrame8,
                     [&f](std::size_t n) {
                         auto seed = static_cast<std::uint32_t>(n);
                         return ImgAddGaussF(f.aMaskF.floats(n), f.aMaskF.step(), 0, 0, &seed, f.aMaskF.size()) ==
                                kImgOk;
                     },
                     0,
                     [&f](std::size_t n) {
                         cv::Mat out = f.bMaskF.mat(n);
                         cv::theRNG().fill(out, cv::RNG::NORMAL, 0, 1);
                     }});
}

void addBorders(Cases& cases) {
    Frames& f = frames();
    const auto add = [&](const char* name, const Pool& from, const Pool& to, Base base) {
        cases.push_back({name, base,
                         [&from, &to](std::size_t n) { return FrameReplicateBorder(from[n], to[n], 20, 20); }, 1.3,
                         [&from, &to](std::size_t n) {
                             cv::Mat out = to.mat(n);
                             const cv::Rect inner(20, 20, kWidth - 40, kHeight - 40);
                             cv::copyMakeBorder(from.mat(n)(inner), out, 20, 20, 20, 20,
                                                cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
                         }});
    };
    add("FrameReplicateBorder 8C4", f.a8, f.out8, Base::kFrame8);
    add("FrameReplicateBorder FC4", f.aF, f.outF, Base::kFrameFloat);
}

}  // namespace

void addGeometryPrimitives(Cases& cases) {
    addResizes(cases);
    addBorders(cases);
    addWarps(cases);
    addNoises(cases);
}

}  // namespace lumiset::bench
