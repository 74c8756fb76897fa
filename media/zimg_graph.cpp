#include "media/zimg_graph.h"

#include <exception>

#include <fmt/format.h>

namespace lumiset::media {
namespace {

void check(int result) {
    if (result == ZIMG_ERROR_SUCCESS) {
        return;
    }
    if (result == ZIMG_ERROR_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    char reason[256] = {};
    zimg_get_last_error(reason, sizeof reason);
    throw MediaError(fmt::format("The pictures' colours cannot be converted: {}.", reason));
}

struct Callback {
    const ZimgGraph::Rows* rows;
    const ZimgGraph::Planes* planes;
    std::exception_ptr error;
};

int handOver(void* user, unsigned row, unsigned left, unsigned right) {
    auto* callback = static_cast<Callback*>(user);
    try {
        (*callback->rows)(static_cast<int>(row), static_cast<int>(left), static_cast<int>(right), *callback->planes);
        return 0;
    } catch (...) {
        callback->error = std::current_exception();
        return 1;
    }
}

// Matrices that mean something only together with a transfer curve and primaries.
bool needsTransfer(int matrix) {
    return matrix == ZIMG_MATRIX_BT2020_CL || matrix >= ZIMG_MATRIX_CHROMATICITY_DERIVED_NCL;
}

zimg_image_format formatOf(const ImageKind& kind, int yuvMatrix) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = static_cast<unsigned>(kind.width);
    format.height = static_cast<unsigned>(kind.height);
    format.pixel_type = kind.type == SampleType::kByte   ? ZIMG_PIXEL_BYTE
                        : kind.type == SampleType::kWord ? ZIMG_PIXEL_WORD
                                                         : ZIMG_PIXEL_FLOAT;
    format.subsample_w = static_cast<unsigned>(kind.log2ChromaW);
    format.subsample_h = static_cast<unsigned>(kind.log2ChromaH);
    format.color_family = kind.family == Family::kGrey  ? ZIMG_COLOR_GREY
                          : kind.family == Family::kRgb ? ZIMG_COLOR_RGB
                                                        : ZIMG_COLOR_YUV;
    if (kind.family != Family::kGrey) {
        format.matrix_coefficients =
            kind.family == Family::kRgb ? ZIMG_MATRIX_RGB : static_cast<zimg_matrix_coefficients_e>(yuvMatrix);
        if (needsTransfer(yuvMatrix)) {
            format.transfer_characteristics = static_cast<zimg_transfer_characteristics_e>(kind.color.transfer);
            format.color_primaries = static_cast<zimg_color_primaries_e>(kind.color.primaries);
        }
    }
    format.depth = static_cast<unsigned>(kind.depth);
    format.pixel_range = kind.color.range == ColorRange::kLimited ? ZIMG_RANGE_LIMITED : ZIMG_RANGE_FULL;
    format.field_parity = kind.field < 0    ? ZIMG_FIELD_PROGRESSIVE
                          : kind.field == 0 ? ZIMG_FIELD_TOP
                                            : ZIMG_FIELD_BOTTOM;
    if (kind.color.chromaPosition >= 0) {
        format.chroma_location = static_cast<zimg_chroma_location_e>(kind.color.chromaPosition);
    }
    if (kind.regionWidth > 0) {
        format.active_region = {0, 0, static_cast<double>(kind.regionWidth), static_cast<double>(kind.regionHeight)};
    }
    format.alpha = kind.color.alpha == AlphaKind::kNone       ? ZIMG_ALPHA_NONE
                   : kind.color.alpha == AlphaKind::kStraight ? ZIMG_ALPHA_STRAIGHT
                                                              : ZIMG_ALPHA_PREMULTIPLIED;
    return format;
}

}  // namespace

ZimgGraph::ZimgGraph(const ImageKind& from, const ImageKind& to, bool dither) {
    const int matrix = from.family == Family::kYuv ? from.color.matrix : to.color.matrix;
    const zimg_image_format source = formatOf(from, matrix);
    const zimg_image_format target = formatOf(to, matrix);
    zimg_graph_builder_params settings;
    zimg_graph_builder_params_default(&settings, ZIMG_API_VERSION);
    settings.resample_filter = ZIMG_RESIZE_LANCZOS;
    settings.filter_param_a = 3;
    // Keys' cubic at its sharpest sensible setting: of the filters of four taps it comes nearest to undoing itself when
    // halved chroma goes up and down again.
    settings.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    settings.filter_param_a_uv = 0;
    settings.filter_param_b_uv = 0.75;
    settings.dither_type = dither ? ZIMG_DITHER_ORDERED : ZIMG_DITHER_NONE;
    settings.cpu_type = ZIMG_CPU_AUTO_64B;
    m_graph.reset(zimg_filter_graph_build(&source, &target, &settings));
    if (m_graph == nullptr) {
        check(zimg_get_last_error(nullptr, 0));
    }
    std::size_t scratch = 0;
    check(zimg_filter_graph_get_tmp_size(m_graph.get(), &scratch));
    m_scratch.resize(scratch);
    unsigned inputRows = 0;
    unsigned outputRows = 0;
    check(zimg_filter_graph_get_input_buffering(m_graph.get(), &inputRows));
    check(zimg_filter_graph_get_output_buffering(m_graph.get(), &outputRows));
    m_input = makeRing(from, inputRows);
    m_output = makeRing(to, outputRows);
}

ZimgGraph::Ring ZimgGraph::makeRing(const ImageKind& kind, unsigned rows) {
    Ring ring;
    ring.planes.version = ZIMG_API_VERSION;
    const unsigned mask = zimg_select_buffer_mask(rows);
    const std::size_t height = mask == ZIMG_BUFFER_MAX ? static_cast<std::size_t>(kind.height) : mask + 1;
    const std::size_t bytes = static_cast<std::size_t>(kind.width) * static_cast<std::size_t>(bytesOf(kind.type));
    const std::size_t stride = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    // Chroma planes take the room of whole ones, which costs little in so few rows.
    ring.memory.resize(4 * stride * height);
    for (std::size_t i = 0; i < 4; i++) {
        ring.planes.plane[i] = {ring.memory.data() + i * stride * height, static_cast<std::ptrdiff_t>(stride), mask};
    }
    return ring;
}

void ZimgGraph::run(const Image& from, const Image& to) {
    const Planes& input = from.rows ? m_input.planes : from.planes;
    const Planes& output = to.rows ? m_output.planes : to.planes;
    zimg_image_buffer_const source{};
    source.version = ZIMG_API_VERSION;
    for (int i = 0; i < 4; i++) {
        source.plane[i] = {input.plane[i].data, input.plane[i].stride, input.plane[i].mask};
    }
    Callback fetch{&from.rows, &input, nullptr};
    Callback store{&to.rows, &output, nullptr};
    const int result =
        zimg_filter_graph_process(m_graph.get(), &source, &output, m_scratch.data(), from.rows ? &handOver : nullptr,
                                  &fetch, to.rows ? &handOver : nullptr, &store);
    for (const std::exception_ptr& error : {fetch.error, store.error}) {
        if (error) {
            std::rethrow_exception(error);
        }
    }
    check(result);
}

}  // namespace lumiset::media
