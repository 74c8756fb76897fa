#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <vector>

#include "hostkit/look.h"
#include "hostkit/module.h"
#include "hostkit/picture.h"

int main() try {
    using namespace lumiset::hostkit;
    const Module module;  // beside the program, installed, or where LUMISET_MODULE says
    const EffectCatalogue effects(module.effectLibrary());

    Look look;
    look.effects = {{"Old TV", "Snow"}, {"Outline"}};
    look.effects[0].set(effects.effect("Old TV"), "Noise", "30");
    const std::vector<EffectStage> chain = buildChain(module.effectLibrary(), effects, {{look}}, 0.0);

    std::vector<std::uint8_t> pixels(std::size_t{3} * 320 * 180, 128);
    const PictureView picture = interleavedPicture(pixels.data(), 320, 180, SampleType::kUint8, "RGB");
    PictureRenderer(chain).render(picture, picture, {1.2});  // in place, at 1.2 seconds

    std::ofstream file("picture.ppm", std::ios::binary);
    file << "P6\n320 180\n255\n";
    file.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()));
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
