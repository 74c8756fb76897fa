#include <algorithm>
#include <array>
#include <numeric>
#include <opencv2/imgproc.hpp>

#include "bench/plane_cases.h"
#include "frame/primitives/alpha.h"
#include "frame/primitives/arithmetic.h"
#include "frame/primitives/color.h"
#include "frame/primitives/convert.h"
#include "frame/primitives/copy.h"
#include "frame/primitives/fill.h"
#include "frame/primitives/limits.h"
#include "frame/primitives/lookup.h"
#include "frame/yuv422.h"

namespace lumiset::bench {
namespace {

constexpr double kMoveAim = 1.3;
/// What float frames may take of their own memcpy, compared with 8-bit ones of theirs.
constexpr double kFloatFactor = 3;

constexpr std::uint8_t kBytes[4] = {10, 200, 77, 255};
constexpr float kFloats[4] = {0.25F, 0.5F, 0.75F, 1.0F};
constexpr std::uint32_t kReversed[4] = {3, 2, 1, 0};
constexpr float kLuma[3] = {0.114F, 0.587F, 0.299F};
constexpr float kTwist[12] = {0.9F, 0.1F, 0, 0, 0.05F, 0.9F, 0.05F, 0, 0, 0.2F, 0.8F, 0};

const std::uint8_t* gammaTable() {
    static const auto table = [] {
        std::array<std::uint8_t, 256> values{};
        std::iota(values.begin(), values.end(), std::uint8_t{0});
        std::reverse(values.begin() + 64, values.end());
        return values;
    }();
    return table.data();
}

void mixChannels(const cv::Mat& from, cv::Mat& to, std::initializer_list<int> pairs) {
    cv::mixChannels(&from, 1, &to, 1, pairs.begin(), pairs.size() / 2);
}

void addCopies(Cases& cases) {
    Frames& f = frames();
    const MatWork copy = [](const cv::Mat& from, cv::Mat& to) { from.copyTo(to); };
    const MatWork oneToThree = [](const cv::Mat& from, cv::Mat& to) { mixChannels(from, to, {1, 3}); };
    const MatWork extract = [](const cv::Mat& from, cv::Mat& to) { cv::extractChannel(from, to, 0); };
    const MatWork insert = [](const cv::Mat& from, cv::Mat& to) { cv::insertChannel(from, to, 0); };
    const MatWork reverse = [](const cv::Mat& from, cv::Mat& to) { mixChannels(from, to, {0, 3, 1, 2, 2, 1, 3, 0}); };
    addMap(cases, "ImgCopy8C4", Base::kFrame8, kMoveAim, f.a8, f.out8, copy, ImgCopy8C4);
    addMap(cases, "ImgCopyFC4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, copy, ImgCopyFC4);
    addMap(cases, "ImgCopy8A4", Base::kFrame8, kMoveAim, f.a8, f.out8, nullptr, ImgCopy8A4);
    addMap(cases, "ImgCopyFA4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, nullptr, ImgCopyFA4);
    addMap(cases, "ImgCopyChannel8C4", Base::kFrame8, kMoveAim, f.a8, f.out8, oneToThree, ImgCopyChannel8C4);
    addMap(cases, "ImgCopyChannelFC4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, oneToThree, ImgCopyChannelFC4);
    // Aims by what has to move through memory: five bytes a pixel, or nine, where a memcpy moves eight.
    addMap(cases, "ImgExtractChannel8", Base::kFrame8, 0.7, f.a8, f.aMask8, extract, ImgExtractChannel8);
    addMap(cases, "ImgExtractChannelF", Base::kFrameFloat, 0.4 * kFloatFactor, f.aF, f.aMaskF, extract,
           ImgExtractChannelF);
    addMap(cases, "ImgInsertChannel8", Base::kFrame8, 0.9, f.aMask8, f.out8, insert, ImgInsertChannel8);
    addMap(cases, "ImgInsertChannelF", Base::kFrameFloat, 0.4 * kFloatFactor, f.aMaskF, f.outF, insert,
           ImgInsertChannelF);
    addInPlace(cases, "ImgSwapChannels8C4", Base::kFrame8, kMoveAim, f.b8, 1, nullptr, ImgSwapChannels8C4, kReversed);
    addMap(cases, "ImgReorderChannels8C4", Base::kFrame8, kMoveAim, f.a8, f.out8, reverse, ImgReorderChannels8C4,
           kReversed);
}

void addFills(Cases& cases) {
    Frames& f = frames();
    const MatWork set = [](const cv::Mat&, cv::Mat& to) { to.setTo(cv::Scalar(0.25, 0.5, 0.75, 1)); };
    addInPlace(cases, "ImgSet8C4", Base::kFrame8, kMoveAim, f.b8, 1, set, ImgSet8C4, kBytes);
    addInPlace(cases, "ImgSetFC4", Base::kFrameFloat, kMoveAim, f.bF, 1, set, ImgSetFC4, kFloats);
    addInPlace(cases, "ImgSet8A4", Base::kFrame8, kMoveAim, f.b8, 1, nullptr, ImgSet8A4, kBytes);
    addInPlace(cases, "ImgSetChannel8C4", Base::kFrame8, kMoveAim, f.b8, 1, nullptr, ImgSetChannel8C4, std::uint8_t{9});
    addInPlace(cases, "ImgSetChannelFC4", Base::kFrameFloat, kMoveAim, f.bF, 1, nullptr, ImgSetChannelFC4, 0.5F);
}

void addArithmetic(Cases& cases) {
    Frames& f = frames();
    const MatWork multiply = [](const cv::Mat& from, cv::Mat& to) {
        cv::multiply(from, cv::Scalar(0.1, 0.8, 0.3, 1), to);
    };
    const MatWork clamp = [](const cv::Mat& from, cv::Mat& to) {
        cv::max(from, 0.2, to);
        cv::min(to, 0.8, to);
    };
    const MatWork invert = [](const cv::Mat& from, cv::Mat& to) { cv::bitwise_not(from, to); };
    const MatWork look = [](const cv::Mat& from, cv::Mat& to) {
        cv::LUT(from, cv::Mat(1, 256, CV_8U, const_cast<std::uint8_t*>(gammaTable())), to);
    };
    addMap(cases, "ImgScaleByColor8C4", Base::kFrame8, kMoveAim, f.a8, f.out8, multiply, ImgScaleByColor8C4, kBytes);
    addMap(cases, "ImgScaleByColorFC4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, multiply, ImgScaleByColorFC4,
           kFloats);
    addMap(cases, "ImgAddFA4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, nullptr, ImgAddFA4, kFloats);
    addMap(cases, "ImgMulFA4", Base::kFrameFloat, kMoveAim, f.aF, f.outF, nullptr, ImgMulFA4, kFloats);
    addInPlace(cases, "ImgMulScaled8C1 of four channels", Base::kFrame8, kMoveAim, f.b8, 4, nullptr, ImgMulScaled8C1,
               std::uint8_t{255}, 8);
    addInPlace(cases, "ImgClampRange8C1 of four channels", Base::kFrame8, kMoveAim, f.b8, 4, clamp, ImgClampRange8C1,
               std::uint8_t{20}, std::uint8_t{200});
    addInPlace(cases, "ImgClampRangeFC1 of four channels", Base::kFrameFloat, kMoveAim, f.bF, 4, clamp,
               ImgClampRangeFC1, 0.2F, 0.8F);
    addInPlace(cases, "ImgThresholdLess8C1 of four channels", Base::kFrame8, kMoveAim, f.b8, 4, nullptr,
               ImgThresholdLess8C1, std::uint8_t{253}, std::uint8_t{0});
    addMap(cases, "ImgInvert8C1", Base::kMask8, kMoveAim, f.aMask8, f.bMask8, invert, ImgInvert8C1);
    static const std::uint8_t* const kTables[3] = {gammaTable(), gammaTable(), gammaTable()};
    addMap(cases, "ImgLookup8A4", Base::kFrame8, 3, f.a8, f.out8, look, ImgLookup8A4, kTables);
}

void addConversions(Cases& cases) {
    Frames& f = frames();
    const MatWork toByte = [](const cv::Mat& from, cv::Mat& to) { from.convertTo(to, CV_8U, 255); };
    const MatWork toFloat = [](const cv::Mat& from, cv::Mat& to) { from.convertTo(to, CV_32F, 1 / 255.0); };
    const MatWork gray = [](const cv::Mat& from, cv::Mat& to) { cv::cvtColor(from, to, cv::COLOR_BGRA2GRAY); };
    const MatWork twist = [](const cv::Mat& from, cv::Mat& to) {
        const cv::Matx44f matrix(0.9F, 0.1F, 0, 0, 0.05F, 0.9F, 0.05F, 0, 0, 0.2F, 0.8F, 0, 0, 0, 0, 1);
        cv::transform(from, to, matrix);
    };
    static cv::Mat threeChannels;
    const MatWork hsv = [](const cv::Mat& from, cv::Mat&) {
        cv::cvtColor(from, threeChannels, from.depth() == CV_8U ? cv::COLOR_BGR2HSV_FULL : cv::COLOR_BGR2HSV);
    };
    addMap(cases, "ImgFloatToByteC4", Base::kFrameFloat, 0, f.aF, f.out8, toByte, ImgFloatToByteC4, 0.0F, 1.0F);
    addMap(cases, "ImgByteToFloatC4", Base::kFrameFloat, 0, f.a8, f.outF, toFloat, ImgByteToFloatC4, 0.0F, 1.0F);
    addMap(cases, "ImgLuma8A4", Base::kFrame8, 0.7, f.a8, f.aMask8, gray, ImgLuma8A4, kLuma);
    addMap(cases, "ImgLumaFA4", Base::kFrameFloat, 0.5 * kFloatFactor, f.aF, f.aMaskF, gray, ImgLumaFA4, kLuma);
    addMap(cases, "ImgColorTwist8A4", Base::kFrame8, 1.4, f.a8, f.out8, twist, ImgColorTwist8A4, kTwist);
    addMap(cases, "ImgColorTwistFA4", Base::kFrameFloat, 1.4 * kFloatFactor, f.aF, f.outF, twist, ImgColorTwistFA4,
           kTwist);
    addMap(cases, "ImgRgbToHsv8A4", Base::kFrame8, 0, f.a8, f.out8, hsv, ImgRgbToHsv8A4, ImgColorOrder::kBgr);
    addMap(cases, "ImgHsvToRgb8A4", Base::kFrame8, 0, f.a8, f.out8, nullptr, ImgHsvToRgb8A4, ImgColorOrder::kBgr);
    addMap(cases, "ImgRgbToHsvFA4", Base::kFrameFloat, 0, f.aF, f.outF, hsv, ImgRgbToHsvFA4, ImgColorOrder::kBgr);
    addMap(cases, "ImgHsvToRgbFA4", Base::kFrameFloat, 0, f.aF, f.outF, nullptr, ImgHsvToRgbFA4, ImgColorOrder::kBgr);
}

void addYuv422(Cases& cases) {
    Frames& f = frames();
    cases.push_back({"ImgYuv422ToBgra", Base::kFrame8,
                     [&f](std::size_t n) {
                         return ImgYuv422ToBgra(f.yuv422.bytes(n), f.yuv422.step(), f.out8.bytes(n), f.out8.step(), 255,
                                                false, f.out8.size()) == kImgOk;
                     },
                     0.8,
                     [&f](std::size_t n) {
                         const cv::Mat packed(kHeight, kWidth, CV_8UC2, f.yuv422.bytes(n),
                                              static_cast<std::size_t>(f.yuv422.step()));
                         cv::Mat to = f.out8.mat(n);
                         cv::cvtColor(packed, to, cv::COLOR_YUV2BGRA_YUY2);
                     }});
    cases.push_back({"ImgBgraToYuv422", Base::kFrame8, [&f](std::size_t n) {
                         return ImgBgraToYuv422(f.a8.bytes(n), f.a8.step(), f.yuv422.bytes(n), f.yuv422.step(), false,
                                                f.a8.size()) == kImgOk;
                     }});
}

void addAlpha(Cases& cases) {
    Frames& f = frames();
    addMap(
        cases, "ImgPremultiply8A4", Base::kFrame8, kMoveAim, f.a8, f.out8,
        [](const cv::Mat& from, cv::Mat& to) { cv::cvtColor(from, to, cv::COLOR_RGBA2mRGBA); }, ImgPremultiply8A4);
    addMap(cases, "ImgPremultiplyFC4", Base::kFrameFloat, 0, f.aF, f.outF, nullptr, ImgPremultiplyFC4, 3);
    for (const std::int32_t mode : {kImgOverStraight, kImgOverPremultiplied}) {
        const std::string suffix = mode == kImgOverStraight ? " straight" : " premultiplied";
        cases.push_back({"ImgAlphaOver8A4" + suffix, Base::kFrame8,
                         [&f, mode](std::size_t n) {
                             return ImgAlphaOver8A4(f.a8.bytes(n), f.a8.step(), f.b8.bytes(n), f.b8.step(),
                                                    f.out8.bytes(n), f.out8.step(), mode, f.out8.size()) == kImgOk;
                         },
                         1.5});
        cases.push_back({"ImgAlphaOverFC4" + suffix, Base::kFrameFloat,
                         [&f, mode](std::size_t n) {
                             return ImgAlphaOverFC4(f.aF.floats(n), f.aF.step(), f.bF.floats(n), f.bF.step(),
                                                    f.outF.floats(n), f.outF.step(), mode, 3, f.outF.size()) == kImgOk;
                         },
                         1.5 * kFloatFactor});
    }
}

}  // namespace

void addPixelPrimitives(Cases& cases) {
    addCopies(cases);
    addFills(cases);
    addArithmetic(cases);
    addConversions(cases);
    addYuv422(cases);
    addAlpha(cases);
}

}  // namespace lumiset::bench
