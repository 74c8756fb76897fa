#include <fmt/format.h>

#include <opencv2/imgproc.hpp>

#include "bench/plane_cases.h"
#include "frame/frame_operations.h"

namespace lumiset::bench {
namespace {

constexpr double kMoveAim = 1.3;
constexpr double kFloatFactor = 3;

/// One kind of frame: its name, memcpy and pools.
struct Kind {
    const char* name;
    Base base;
    const Pool& a;
    const Pool& b;
    const Pool& out;
    double factor;  ///< on the aims of 8-bit frames
};

/// operation(src, dst).
template <class Operation>
void addMap(Cases& cases, std::string name, Base base, double aim, const Pool& src, const Pool& dst,
            const Operation& operation, const MatWork& opencv = nullptr) {
    cases.push_back({std::move(name), base,
                     [&src, &dst, operation](std::size_t n) { return operation(src[n], dst[n]); }, aim,
                     onMats(src, dst, opencv)});
}

cv::Mat ellipse(int size) {
    return cv::getStructuringElement(cv::MORPH_ELLIPSE, {size, size});
}

MatWork triangularBlur(int size) {
    return [size](const cv::Mat& from, cv::Mat& to) {
        cv::Mat taps(1, size, CV_32F);
        for (int i = 0; i < size; ++i) {
            taps.at<float>(i) = static_cast<float>(1 + std::min(i, size - 1 - i));
        }
        taps /= cv::sum(taps)[0];
        cv::sepFilter2D(from, to, -1, taps, taps, {-1, -1}, 0, cv::BORDER_REPLICATE);
    };
}

void addOnBothDepths(Cases& cases, const Kind& kind) {
    const auto add = [&](const char* name, double aim, auto operation, const MatWork& opencv = nullptr) {
        addMap(cases, std::string(name) + kind.name, kind.base, aim, kind.a, kind.out, operation, opencv);
    };
    add("FrameCopy", kMoveAim, FrameCopy, [](const cv::Mat& from, cv::Mat& to) { from.copyTo(to); });
    add("FrameCopyChannel", kMoveAim, [](const Frame& a, Frame& b) { return FrameCopyChannel(a, b, 1, 3); });
    add("FrameSwapChannelOrder", kMoveAim, FrameSwapChannelOrder);
    add("FrameFillColor", kMoveAim, [](const Frame&, Frame& b) { return FrameFillColor(b, 0xFF102030U); });
    add("FrameSetChannel", kMoveAim, [](const Frame&, Frame& b) { return FrameSetChannel(b, 3, 255); });
    add("FrameClampValues", kMoveAim, [](const Frame&, Frame& b) { return FrameClampValues(b, 0.1F, 0.9F); });
    add("FrameMultiplyColor", kMoveAim, [](const Frame& a, Frame& b) {
        constexpr float kColor[4] = {0.2F, 0.5F, 0.7F, 1.0F};
        return FrameMultiplyColor(a, b, kColor);
    });
    add("FrameInvert", kMoveAim, FrameInvert);
    add("FrameInvertChannel", kMoveAim, [](const Frame&, Frame& b) { return FrameInvertChannel(b, 1); });
    add("FrameRgbToHsv", 0, FrameRgbToHsv);
    add("FrameHsvToRgb", 0, FrameHsvToRgb);
    add("FramePremultiplyAlpha", kMoveAim * kind.factor, FramePremultiplyAlpha);
    add("FrameColorTransform", 1.4 * kind.factor, [](const Frame& a, Frame& b) {
        return FrameColorTransform(a, b, 0.5F, 0.55F, 0.4F, 0.6F, 0xFF8000U, 0.6F, nullptr);
    });
    for (const bool premultiplied : {false, true}) {
        cases.push_back({fmt::format("FrameAlphaOver{}{}", kind.name, premultiplied ? " premultiplied" : " straight"),
                         kind.base,
                         [&a = kind.a, &b = kind.b, &out = kind.out, premultiplied](std::size_t n) {
                             return FrameAlphaOver(a[n], b[n], out[n], premultiplied);
                         },
                         1.5 * kind.factor});
    }
    add("FrameFlipVertical", kMoveAim, [](const Frame&, Frame& b) { return FrameFlipVertical(b); });
    add("FrameFlipVerticalCopy", kMoveAim, FrameFlipVerticalCopy,
        [](const cv::Mat& from, cv::Mat& to) { cv::flip(from, to, 0); });
    add("FrameSharpen", 0, [](const Frame& a, Frame& b) { return FrameSharpen(a, b, nullptr); });
}

void addMoves(Cases& cases) {
    Frames& f = frames();
    addOnBothDepths(cases, {" 8", Base::kFrame8, f.a8, f.b8, f.out8, 1});
    addOnBothDepths(cases, {" float", Base::kFrameFloat, f.aF, f.bF, f.outF, kFloatFactor});
    addMap(cases, "FrameToLuma 8", Base::kFrame8, 0.7, f.a8, f.aMask8, FrameToLuma);
    addMap(cases, "FrameToLuma float", Base::kFrameFloat, 0.5 * kFloatFactor, f.aF, f.aMaskF, FrameToLuma);
    addMap(cases, "FrameConvertDepth to 8", Base::kFrameFloat, 0, f.aF, f.out8, FrameConvertDepth);
    addMap(cases, "FrameConvertDepth to float", Base::kFrameFloat, 0, f.a8, f.outF, FrameConvertDepth);
    addMap(cases, "FrameSpreadGrayToColor 8", Base::kFrame8, 0, f.aMask8, f.out8, FrameSpreadGrayToColor);
    addMap(cases, "FrameColorToYuv", Base::kFrameFloat, 0, f.argbF, f.argbOutF, FrameColorToYuv);
    addMap(cases, "FrameYuvToColor", Base::kFrameFloat, 0, f.argbF, f.argbOutF, FrameYuvToColor);
    addMap(
        cases, "FrameMinOf mask", Base::kMask8, 0, f.aMask8, f.bMask8,
        [](const Frame& a, Frame& b) { return FrameMinOf(a, b, b); },
        [](const cv::Mat& from, cv::Mat& to) { cv::min(from, to, to); });
}

void addBlurs(Cases& cases) {
    Frames& f = frames();
    for (const int size : {9, 51, 191}) {
        const auto blur = [size](const Frame& a, Frame& b) {
            return FrameBlur(a, b, static_cast<float>(size), static_cast<float>(size), nullptr, true);
        };
        addMap(cases, fmt::format("FrameBlur 8 {}", size), Base::kFrame8, 8, f.a8, f.out8, blur, triangularBlur(size));
        addMap(cases, fmt::format("FrameBlur float {}", size), Base::kFrame8, 30, f.aF, f.outF, blur,
               triangularBlur(size));
    }
}

void addMorphology(Cases& cases) {
    Frames& f = frames();
    struct Row {
        int size;
        double aim;
    };
    for (const Row& row : {Row{15, 2.5}, Row{97, 8}, Row{193, 16}}) {
        const int size = row.size;
        addMap(
            cases, fmt::format("FrameDilate mask {}", size), Base::kFrame8, row.aim, f.aMask8, f.bMask8,
            [size](const Frame& a, Frame& b) { return FrameDilate(a, b, size, size, nullptr); },
            [size](const cv::Mat& from, cv::Mat& to) { cv::dilate(from, to, ellipse(size)); });
        addMap(cases, fmt::format("FrameErode mask {}", size), Base::kFrame8, row.aim, f.aMask8, f.bMask8,
               [size](const Frame& a, Frame& b) { return FrameErode(a, b, size, size, nullptr); });
    }
    addMap(cases, "FrameDilate float mask 97", Base::kFrame8, 0, f.aMaskF, f.bMaskF,
           [](const Frame& a, Frame& b) { return FrameDilate(a, b, 97, 97, nullptr); });
}

}  // namespace

void addOperations(Cases& cases) {
    addMoves(cases);
    addBlurs(cases);
    addMorphology(cases);
}

}  // namespace lumiset::bench
