#pragma once

#include <stdexcept>

namespace lumiset::hostkit {

/// OpenGL cannot be used here; the text is a whole sentence.
class GLError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace lumiset::hostkit
