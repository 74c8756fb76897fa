#pragma once

#include <CLI/App.hpp>
#include <string>

#include "apps/lumiset/render/render.h"

namespace lumiset::app {

/// The input, the output and everything that tells how to render: what `render` takes, and commands that plan renders.
class RenderOptions {
public:
    explicit RenderOptions(CLI::App& command);

    /// The request, once the arguments have been read. Throws `UsageError`.
    [[nodiscard]] RenderRequest request() const;

private:
    EffectOptions m_effects;
    RenderRequest m_request;
    std::string m_size;
    std::string m_depth;
    std::string m_layout = "bgra";
    std::string m_start;
    std::string m_duration;
    std::string m_rate;
};

}  // namespace lumiset::app
