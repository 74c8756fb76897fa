#pragma once

#include <gtest/gtest.h>

#include "tests/openfx/pictures.h"

namespace lumiset::openfx::test {

inline const Bundle& bundle() {
    static const Bundle loaded(LUMISET_BUNDLE_FILE);
    return loaded;
}

/// The plug-in of an effect, by the effect's name.
inline Plugin& pluginOf(const std::string& effect) {
    std::string id = "org.lumiset.";
    for (const char c : effect) {
        id += c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    for (int i = 0; i < bundle().count(); ++i) {
        if (id == bundle().plugin(i).identifier) {
            return bundle().plugin(i);
        }
    }
    throw std::runtime_error("no plug-in " + id);
}

/// One effect in use in one host, with what renders it.
class Use {
public:
    explicit Use(const std::string& effect, Profile profile = {})
        : host(std::move(profile)),
          description(reference().catalogue.effect(effect)),
          values(description),
          plugin(pluginOf(effect)),
          descriptor(host.describe(plugin)),
          instance(host.create(plugin, *descriptor)) {
        context.durationSeconds = 0.04;
        context.pixelAspect = 1.0;
    }
    ~Use() {
        host.destroy(plugin, std::move(instance));
        EXPECT_EQ(heldPictures(), 0);
        EXPECT_EQ(complaints().take(), "");
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    void setLayouts(const Layout& in, const Layout& out) {
        sourceLayout = in;
        outputLayout = out;
        source = makePicture(in, 7);
        output = makePicture(out, 0);
        window = out.bounds;
        instance->clips["Source"].picture = source.get();
        instance->clips["Output"].picture = output.get();
    }

    /// Chooses a preset as a person does.
    void choosePreset(const std::string& name) {
        values = hostkit::ParameterStore(description);
        values.apply(description.preset(name));
        const Param& choice = instance->param("preset");
        for (std::size_t i = 0; i < choice.props.count("OfxParamPropChoiceOption"); ++i) {
            if (choice.props.get<std::string>("OfxParamPropChoiceOption", i) == name) {
                instance->param("preset").numbers[0] = static_cast<double>(i);
            }
        }
        host.changed(*instance, "preset");
    }

    Status render(double time = 18.0) {
        Arguments arguments;
        arguments.in.put("OfxPropTime", {time});
        arguments.in.put("OfxImageEffectPropFieldToRender", {fieldToRender});
        arguments.in.put("OfxImageEffectPropRenderWindow", {window.x1, window.y1, window.x2, window.y2});
        arguments.in.put("OfxImageEffectPropRenderScale", {1.0, 1.0});
        return host.call(plugin, "OfxImageEffectActionRender", instance.get(), &arguments);
    }

    /// The memory of an output that the kit's picture is in, where `wanted`; source and output have one size.
    [[nodiscard]] std::vector<std::uint8_t> expected(const std::function<bool(int x, int y)>& wanted = [](int, int) {
        return true;
    }) const {
        const bool bytes = sourceLayout.is("OfxBitDepthByte") && outputLayout.is("OfxBitDepthByte");
        const hostkit::FrameBuffer frame = frameOf(sourceLayout, *source, bytes);
        std::vector<std::uint8_t> memory(output->memory.size(), 0xA7);
        storeFrame(reference().render(values, frame.desc(), context), outputLayout, memory, wanted);
        return memory;
    }

    TestHost host;
    const hostkit::EffectDescription& description;
    hostkit::ParameterStore values;
    hostkit::FrameContext context{0.72, 0.04, 1.0, hostkit::FieldOrder::kProgressive};
    Plugin& plugin;
    std::unique_ptr<EffectObject> descriptor;
    std::unique_ptr<EffectObject> instance;
    Layout sourceLayout;
    Layout outputLayout;
    std::unique_ptr<Picture> source;
    std::unique_ptr<Picture> output;
    RectI window{};
    std::string fieldToRender = "OfxFieldNone";
};

}  // namespace lumiset::openfx::test
