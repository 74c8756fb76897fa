#pragma once

// Cases of primitives that take planes and end with their size.

#include <opencv2/core.hpp>
#include <string>
#include <utility>

#include "bench/bench_case.h"
#include "bench/frames.h"

namespace lumiset::bench {

/// The first sample of a frame, as whichever pointer a primitive asks for.
struct Samples {
    std::uint8_t* data;
    operator std::uint8_t*() const { return data; }
    operator float*() const { return reinterpret_cast<float*>(data); }
};

using MatWork = std::function<void(const cv::Mat& from, cv::Mat& to)>;

inline std::function<void(std::size_t)> onMats(const Pool& src, const Pool& dst, const MatWork& work) {
    if (!work) {
        return nullptr;
    }
    return [&src, &dst, work](std::size_t n) {
        cv::Mat to = dst.mat(n);
        work(src.mat(n), to);
    };
}

/// primitive(src, step, dst, step, arguments..., size).
template <class Primitive, class... Arguments>
void addMap(Cases& cases, std::string name, Base base, double aim, const Pool& src, const Pool& dst,
            const MatWork& opencv, Primitive primitive, Arguments... arguments) {
    cases.push_back({std::move(name), base,
                     [&src, &dst, primitive, arguments...](std::size_t n) {
                         return primitive(Samples{src.bytes(n)}, src.step(), Samples{dst.bytes(n)}, dst.step(),
                                          arguments..., dst.size()) == kImgOk;
                     },
                     aim, onMats(src, dst, opencv)});
}

/// primitive(plane, step, arguments..., size), on rows of `samplesPerPixel` times as many samples.
template <class Primitive, class... Arguments>
void addInPlace(Cases& cases, std::string name, Base base, double aim, const Pool& plane, std::int32_t samplesPerPixel,
                const MatWork& opencv, Primitive primitive, Arguments... arguments) {
    cases.push_back({std::move(name), base,
                     [&plane, samplesPerPixel, primitive, arguments...](std::size_t n) {
                         const ImgSize size{plane.size().width * samplesPerPixel, plane.size().height};
                         return primitive(Samples{plane.bytes(n)}, plane.step(), arguments..., size) == kImgOk;
                     },
                     aim, onMats(plane, plane, opencv)});
}

}  // namespace lumiset::bench
