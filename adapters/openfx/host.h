#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/openfx/properties.h"

namespace lumiset::openfx {

/// The host lacks what no plug-in can do without; the text is a whole sentence.
class HostError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a host offers, read once when it loads the plug-in.
class HostInfo {
public:
    /// Throws `HostError` when the host lacks a suite that is not optional.
    explicit HostInfo(const Host& host);

    // Always there.
    const PropertySuite* property = nullptr;
    const ImageEffectSuite* effect = nullptr;
    const ParameterSuite* parameter = nullptr;
    // Null where the host does not have them. Their members may be null too.
    const MultiThreadSuite* multiThread = nullptr;
    const MessageSuite* message = nullptr;
    bool persistentMessages = false;  ///< `message` is version 2 and known to work
    const InteractSuite* interact = nullptr;
    const DrawSuite* draw = nullptr;

    std::string name;
    std::vector<std::string> depths;  ///< that the host names; empty where it names none
    bool overlays = false;

    /// There a preset has to take effect within a render: the host tells of no change.
    [[nodiscard]] bool tellsNoChanges() const { return name == "MLT"; }
    /// There positions are points of the picture, with a cross on the screen. These hosts are known to turn a default
    /// in shares of the picture into a position; others hand it out as it is, or put it into a corner.
    [[nodiscard]] bool hasPositions() const { return name == "fr.inria.Natron" || name == "uk.co.thefoundry.nuke"; }

    [[nodiscard]] Properties properties(Props handle) const { return {*property, handle}; }

private:
    void readProperties(const Properties& properties);
};

}  // namespace lumiset::openfx
