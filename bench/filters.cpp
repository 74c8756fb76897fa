#include <algorithm>
#include <memory>
#include <new>
#include <opencv2/imgproc.hpp>

#include "bench/plane_cases.h"
#include "frame/primitives/box.h"
#include "frame/primitives/convolve.h"
#include "frame/primitives/gauss.h"
#include "frame/primitives/morphology.h"
#include "frame/primitives/sharpen.h"

namespace lumiset::bench {
namespace {

/// Pixels around the region that filters work on here, so that they find valid ones on all sides.
constexpr std::int32_t kMargin = 32;
constexpr ImgSize kRegion{kWidth - 2 * kMargin, kHeight - 2 * kMargin};

Samples inner(const Pool& pool, std::size_t n) {
    return {pool[n].PixelAddress(kMargin, kMargin, 0)};
}

/// primitive(src, step, dst, step, region, arguments...).
template <class Primitive, class... Arguments>
void addFilter(Cases& cases, std::string name, Base base, double aim, const Pool& src, const Pool& dst,
               const MatWork& opencv, Primitive primitive, Arguments... arguments) {
    cases.push_back({std::move(name), base,
                     [&src, &dst, primitive, arguments...](std::size_t n) {
                         return primitive(inner(src, n), src.step(), inner(dst, n), dst.step(), kRegion,
                                          arguments...) == kImgOk;
                     },
                     aim, onMats(src, dst, opencv)});
}

template <class T>
struct Kernel {
    static constexpr std::int32_t kSize = 51;
    static constexpr std::int32_t kAnchor = kSize / 2;
    T taps[kSize];
    T sum;
};

template <class T>
const Kernel<T>& triangle() {
    static const Kernel<T> kernel = [] {
        Kernel<T> made{};
        for (std::int32_t i = 0; i < Kernel<T>::kSize; ++i) {
            made.taps[i] = static_cast<T>(1 + std::min(i, Kernel<T>::kSize - 1 - i));
            made.sum += made.taps[i];
        }
        return made;
    }();
    return kernel;
}

MatWork convolution(bool rows) {
    return [rows](const cv::Mat& from, cv::Mat& to) {
        const Kernel<float>& kernel = triangle<float>();
        cv::Mat taps(1, Kernel<float>::kSize, CV_32F);
        for (int i = 0; i < Kernel<float>::kSize; ++i) {
            taps.at<float>(i) = kernel.taps[i] / kernel.sum;
        }
        const cv::Mat one = cv::Mat::ones(1, 1, CV_32F);
        cv::sepFilter2D(from, to, -1, rows ? taps : one, rows ? one : taps, {-1, -1}, 0, cv::BORDER_REPLICATE);
    };
}

void addConvolutions(Cases& cases) {
    Frames& f = frames();
    constexpr std::int32_t kSize = Kernel<float>::kSize;
    constexpr std::int32_t kAnchor = Kernel<float>::kAnchor;
    const Kernel<std::int32_t>& whole = triangle<std::int32_t>();
    const Kernel<float>& real = triangle<float>();
    addFilter(cases, "ImgConvolveRows8C4 51", Base::kFrame8, 0, f.a8, f.out8, convolution(true), ImgConvolveRows8C4,
              whole.taps, kSize, kAnchor, whole.sum);
    addFilter(cases, "ImgConvolveColumns8C4 51", Base::kFrame8, 0, f.a8, f.out8, convolution(false),
              ImgConvolveColumns8C4, whole.taps, kSize, kAnchor, whole.sum);
    addFilter(cases, "ImgConvolveRowsFC4 51", Base::kFrameFloat, 0, f.aF, f.outF, convolution(true), ImgConvolveRowsFC4,
              real.taps, kSize, kAnchor);
    addFilter(cases, "ImgConvolveColumnsFC4 51", Base::kFrameFloat, 0, f.aF, f.outF, convolution(false),
              ImgConvolveColumnsFC4, real.taps, kSize, kAnchor);
}

void addBoxes(Cases& cases) {
    Frames& f = frames();
    constexpr ImgSize kMask{65, 65};
    const MatWork box = [](const cv::Mat& from, cv::Mat& to) {
        cv::blur(from, to, {65, 65}, {-1, -1}, cv::BORDER_REPLICATE);
    };
    addFilter(cases, "ImgBox8C1 65", Base::kFrame8, 2.5, f.aMask8, f.bMask8, box, ImgBox8C1, kMask, kMargin, kMargin);
    addFilter(cases, "ImgBoxFC1 65", Base::kFrame8, 0, f.aMaskF, f.bMaskF, box, ImgBoxFC1, kMask, kMargin, kMargin);
}

void addSmallKernels(Cases& cases) {
    Frames& f = frames();
    const auto gauss = [](int size) -> MatWork {
        return [size](const cv::Mat& from, cv::Mat& to) { cv::GaussianBlur(from, to, {size, size}, 0); };
    };
    const MatWork sharpen = [](const cv::Mat& from, cv::Mat& to) {
        const float weights[9] = {-0.125F, -0.125F, -0.125F, -0.125F, 2, -0.125F, -0.125F, -0.125F, -0.125F};
        cv::filter2D(from, to, -1, cv::Mat(3, 3, CV_32F, const_cast<float*>(weights)));
    };
    addFilter(cases, "ImgGauss8 3x3", Base::kMask8, 0, f.aMask8, f.bMask8, gauss(3), ImgGauss8, kImgMask3x3);
    addFilter(cases, "ImgGauss8 5x5", Base::kMask8, 0, f.aMask8, f.bMask8, gauss(5), ImgGauss8, kImgMask5x5);
    addFilter(cases, "ImgGaussF 5x5", Base::kMaskFloat, 0, f.aMaskF, f.bMaskF, gauss(5), ImgGaussF, kImgMask5x5);
    addFilter(cases, "ImgSharpen8A4", Base::kFrame8, 0, f.a8, f.out8, sharpen, ImgSharpen8A4);
    addFilter(cases, "ImgSharpenFA4", Base::kFrameFloat, 0, f.aF, f.outF, sharpen, ImgSharpenFA4);
}

void addMorphology(Cases& cases) {
    Frames& f = frames();
    constexpr std::int32_t kSide = 65;
    const std::vector<std::uint8_t> mask(kSide * kSide, 1);
    const auto stateOf = [&mask](auto init) {
        ImgMorphState* state = nullptr;
        if (init(kWidth, mask.data(), ImgSize{kSide, kSide}, kSide / 2, kSide / 2, &state) != kImgOk) {
            throw std::bad_alloc();
        }
        return std::shared_ptr<ImgMorphState>(state, ImgMorphFree);
    };
    const MatWork dilate = [](const cv::Mat& from, cv::Mat& to) {
        cv::dilate(from, to, cv::Mat::ones(kSide, kSide, CV_8U), {-1, -1}, 1, cv::BORDER_REPLICATE);
    };
    const auto add = [&](const char* name, Base base, const Pool& src, const Pool& dst, auto state, auto primitive) {
        cases.push_back({name, base,
                         [&src, &dst, state, primitive](std::size_t n) {
                             return primitive(Samples{src.bytes(n)}, src.step(), Samples{dst.bytes(n)}, dst.step(),
                                              dst.size(), state.get()) == kImgOk;
                         },
                         0, onMats(src, dst, dilate)});
    };
    add("ImgDilate8C1 rectangle 65", Base::kMask8, f.aMask8, f.bMask8, stateOf(ImgMorphInit8C1), ImgDilate8C1);
    add("ImgDilate8C4 rectangle 65", Base::kFrame8, f.a8, f.out8, stateOf(ImgMorphInit8C4), ImgDilate8C4);
    add("ImgDilateFC4 rectangle 65", Base::kFrameFloat, f.aF, f.outF, stateOf(ImgMorphInitFC4), ImgDilateFC4);
}

}  // namespace

void addFilterPrimitives(Cases& cases) {
    addConvolutions(cases);
    addBoxes(cases);
    addSmallKernels(cases);
    addMorphology(cases);
}

}  // namespace lumiset::bench
