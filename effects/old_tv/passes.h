#pragma once

#include "effects/effect.h"
#include "effects/old_tv/plan.h"
#include "effects/picture_passes.h"

namespace lumiset {

/// The steps in OpenGL. Two more temporaries hold the alpha while it is softened.
class OldTVPasses : public PicturePasses {
public:
    /// Places of the programs.
    enum Program : std::size_t {
        kColor,
        kGhost,
        kStatic,
        kScanLines,
        kTear,
        kRoll,
        kBand,
        kTube,
        kBoxAlpha,
        kSetAlpha,
        kSurround,
        kProgramCount
    };

    using PicturePasses::PicturePasses;

    void addStatic(const OldTVSettings& settings, float time);
    void tear(const TearEvent& tear, float severity);
    void bendTube(float curvature);
    void softenEdge(float amount, const FrameFacts& facts);

private:
    bool m_isFloat = isFloatFormat(m_frame.source().format);
};

}  // namespace lumiset
