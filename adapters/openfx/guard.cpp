#include "adapters/openfx/guard.h"

#include <exception>
#include <new>

#include "adapters/openfx/image.h"
#include "adapters/openfx/messages.h"
#include "hostkit/report.h"

namespace lumiset::openfx {

Status guarded(const HostInfo* host, EffectHandle effect, const std::function<Status()>& work) noexcept {
    const auto failed = [&](Status status, const char* sentence) {
        if (host != nullptr && effect != nullptr) {
            complainOfFrame(*host, effect, sentence);
        } else {
            hostkit::report(sentence);
        }
        return status;
    };
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return failed(kErrMemory, "There is not enough memory for a picture.");
    } catch (const ImageFormatError& error) {
        return failed(kErrImageFormat, error.what());
    } catch (const HostError& error) {
        return failed(kErrMissingHostFeature, error.what());
    } catch (const std::exception& error) {
        return failed(kFailed, error.what());
    }
}

}  // namespace lumiset::openfx
