#include "media/av.h"

#include <mutex>

#include <fmt/format.h>

#include "platform/environment.h"

namespace lumiset::media {

std::string avErrorText(int error) {
    switch (error) {
        case AVERROR_INVALIDDATA:
            return "the data is damaged or of an unknown kind";
        case AVERROR_EOF:
            return "the file ends too early";
        case AVERROR(ENOMEM):
            throw std::bad_alloc();
        default: {
            char text[AV_ERROR_MAX_STRING_SIZE] = {};
            av_strerror(error, text, sizeof text);
            return text;
        }
    }
}

int avCheck(int result, const std::string& what) {
    if (result < 0) {
        throw MediaError(fmt::format("{}: {}.", what, avErrorText(result)));
    }
    return result;
}

void silenceLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        platform::setDefaultVariable("SVT_LOG", "0");  // SVT-AV1 writes to the terminal by itself
    });
}

}  // namespace lumiset::media
