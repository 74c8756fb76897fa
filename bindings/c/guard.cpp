#include "bindings/c/guard.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "hostkit/look.h"
#include "hostkit/module.h"
#include "hostkit/preset_file.h"
#include "hostkit/renderer.h"

namespace lumiset::bindings {
namespace {

/// Fixed memory: telling that there is none needs none.
thread_local char s_error[2048] = "";

lumiset_status failed(lumiset_status status, const char* sentence) {
    std::size_t size = std::min(std::strlen(sentence), sizeof s_error - 1);
    // What does not fit is cut between characters of UTF-8.
    while (size > 0 && sentence[size] != '\0' && (static_cast<unsigned char>(sentence[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    std::memcpy(s_error, sentence, size);
    s_error[size] = '\0';
    return status;
}

}  // namespace

lumiset_status statusOfException() noexcept {
    try {
        throw;
    } catch (const ArgumentError& error) {
        return failed(LUMISET_BAD_ARGUMENT, error.what());
    } catch (const std::invalid_argument& error) {
        return failed(LUMISET_BAD_ARGUMENT, error.what());
    } catch (const hostkit::ParameterError& error) {
        return failed(LUMISET_UNKNOWN_NAME, error.what());
    } catch (const hostkit::LookError& error) {
        return failed(LUMISET_BAD_FILE, error.what());
    } catch (const hostkit::PresetFileError& error) {
        return failed(LUMISET_BAD_FILE, error.what());
    } catch (const hostkit::ModuleError& error) {
        return failed(LUMISET_NO_MODULE, error.what());
    } catch (const hostkit::RenderError& error) {
        return failed(LUMISET_NOT_RENDERED, error.what());
    } catch (const std::bad_alloc&) {
        return failed(LUMISET_NO_MEMORY, "There is not enough memory.");
    } catch (const std::length_error&) {
        return failed(LUMISET_NO_MEMORY, "There is not enough memory.");
    } catch (const std::exception& error) {
        return failed(LUMISET_FAILED, error.what());
    } catch (...) {
        return failed(LUMISET_FAILED, "Something failed that has no name.");
    }
}

}  // namespace lumiset::bindings

const char* lumiset_error(void) {
    return lumiset::bindings::s_error;
}
