#pragma once

#include <stdexcept>

namespace lumiset::app {

/// The command line cannot be understood; the text is a whole sentence.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace lumiset::app
