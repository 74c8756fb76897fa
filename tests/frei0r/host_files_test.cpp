// The files for Kdenlive and MLT, held against what the plug-ins themselves tell and render.

#include <tinyxml.h>

#include <map>

#include "adapters/frei0r/parameter_list.h"
#include "hostkit/parameter_text.h"
#include "tests/frei0r/frei0r_host.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::frei0r {
namespace {

std::filesystem::path shareFolder() {
    return LUMISET_SHARE_FOLDER;
}

double numberOf(const std::string& text) {
    double number = -1.0;
    EXPECT_TRUE(hostkit::parseNumber(text, number)) << text;
    return number;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

Frei0rColor colorOf(const std::string& text) {
    const unsigned long rgb = text.size() == 7 && text[0] == '#' ? std::stoul(text.substr(1), nullptr, 16) : 1UL << 24U;
    EXPECT_LT(rgb, 1UL << 24U) << text;
    const auto channel = [&](unsigned shift) { return static_cast<float>(rgb >> shift & 0xFFU) / 255.0F; };
    return {channel(16), channel(8), channel(0)};
}

/// One of Kdenlive's files, with the parameters as attributes by name.
struct PanelFile {
    explicit PanelFile(const std::filesystem::path& path) {
        EXPECT_TRUE(document.LoadFile(path.string())) << path << ": " << document.ErrorDesc();
        effect = document.RootElement();
        if (effect == nullptr) {
            throw std::runtime_error("no XML: " + path.string());
        }
        for (const TiXmlElement* each = effect->FirstChildElement("parameter"); each != nullptr;
             each = each->NextSiblingElement("parameter")) {
            EXPECT_TRUE(parameters.emplace(static_cast<int>(numberOf(attribute(*each, "name"))), each).second);
        }
    }
    static std::string attribute(const TiXmlElement& element, const char* name) {
        const char* text = element.Attribute(name);
        return text != nullptr ? text : "";
    }
    [[nodiscard]] std::string name() const { return effect->FirstChildElement("name")->GetText(); }
    [[nodiscard]] std::string attribute(const char* attributeName) const { return attribute(*effect, attributeName); }

    TiXmlDocument document;
    const TiXmlElement* effect = nullptr;
    std::map<int, const TiXmlElement*> parameters;
};

void expectSamePanel(const TiXmlElement& panel, const PluginFile& plugin, const Use& use, int index) {
    const Frei0rParamInfo info = plugin.parameter(index);
    SCOPED_TRACE(info.name);
    EXPECT_EQ(std::string(panel.FirstChildElement("name")->GetText()).rfind(info.name, 0), 0U);
    const std::string type = PanelFile::attribute(panel, "type");
    const std::string standard = PanelFile::attribute(panel, "default");
    if (info.type == kFrei0rColor) {
        EXPECT_EQ(type, "color");
        const Frei0rColor own = use.color(index);
        const Frei0rColor told = colorOf(standard);
        EXPECT_FLOAT_EQ(told.red, own.red);
        EXPECT_FLOAT_EQ(told.green, own.green);
        EXPECT_FLOAT_EQ(told.blue, own.blue);
        return;
    }
    EXPECT_NEAR(numberOf(standard), use.number(index), 1e-6);
    if (info.type == kFrei0rBool) {
        EXPECT_EQ(type, "bool");
    } else if (type == "list") {
        const std::vector<std::string> numbers = split(PanelFile::attribute(panel, "paramlist"), ';');
        const std::vector<std::string> items = split(panel.FirstChildElement("paramlistdisplay")->GetText(), ',');
        ASSERT_EQ(items.size(), numbers.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            EXPECT_NEAR(numberOf(numbers[i]), numberOfItem(i, items.size()), 1e-4);
            EXPECT_NE(std::string(info.explanation).find(' ' + items[i]), std::string::npos) << items[i];
        }
    } else {
        EXPECT_EQ(type, "animated");
        const double factor = numberOf(PanelFile::attribute(panel, "factor"));
        const double maximum = numberOf(PanelFile::attribute(panel, "max"));
        EXPECT_EQ(PanelFile::attribute(panel, "min"), "0");
        EXPECT_LE(maximum, factor);
        EXPECT_GT(maximum, factor - 1.0);
    }
}

TEST(HostFiles, DescribeTheParametersThatThePluginsHave) {
    for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
        SCOPED_TRACE(effect.name);
        const PluginFile plugin(pluginPath(pluginName(effect.name)));
        const Use use(plugin, 8, 8);
        const int count = plugin.info().parameterCount;
        const PanelFile panel(shareFolder() / "kdenlive/effects" / (pluginName(effect.name) + ".xml"));
        EXPECT_EQ(panel.attribute("tag"), std::string("frei0r.") + plugin.info().name);
        EXPECT_EQ(panel.attribute("id"), panel.attribute("tag"));
        EXPECT_EQ(panel.parameters.size() + 2, static_cast<std::size_t>(count)) << "all but the preset and the padding";
        for (const auto& [index, parameter] : panel.parameters) {
            ASSERT_LT(index, count);
            expectSamePanel(*parameter, plugin, use, index);
        }
        const std::string yaml = test::contentsOf(
            (shareFolder() / "mlt-7/frei0r" / ("filter_frei0r." + pluginName(effect.name) + ".yml")).string());
        for (int i = 0; i < count; ++i) {
            const Frei0rParamInfo info = plugin.parameter(i);
            std::string entry = "\n  - identifier: " + std::to_string(i) + "\n    title: \"" + info.name +
                                "\"\n    description: \"" + info.explanation + "\"\n    default: ";
            if (const auto shown = panel.parameters.find(i); shown != panel.parameters.end()) {
                const std::string standard = PanelFile::attribute(*shown->second, "default");
                // Without quotes a color would be a comment.
                entry += info.type == kFrei0rColor ? '"' + standard + "\"\n" : standard + '\n';
            }
            EXPECT_NE(yaml.find(entry), std::string::npos) << entry;
        }
    }
}

/// Sets the plug-in to a template's values, as Kdenlive does by way of MLT.
void apply(const PanelFile& panel, const PluginFile& plugin, const Use& use) {
    for (const auto& [index, parameter] : panel.parameters) {
        const std::string text = PanelFile::attribute(*parameter, "value");
        if (plugin.parameter(index).type == kFrei0rColor) {
            Frei0rColor color = colorOf(text);
            plugin.setParamValue(use.instance(), &color, index);
        } else {
            double number = numberOf(text);
            plugin.setParamValue(use.instance(), &number, index);
        }
    }
}

TEST(HostFiles, HaveATemplateForEveryPresetThatRendersIt) {
    constexpr int kWidth = 40;
    constexpr int kHeight = 30;
    constexpr double kTime = 1.48;
    const Pixels picture = testPicture(kWidth, kHeight);
    const std::filesystem::path folder = shareFolder() / "kdenlive/effect-templates";
    std::size_t presets = 0;
    for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
        const PluginFile plugin(pluginPath(pluginName(effect.name)));
        for (const hostkit::PresetDescription& preset : effect.presets) {
            ++presets;
            const std::string name = effect.name + ": " + preset.uniqueName;
            SCOPED_TRACE(name);
            const PanelFile panel(folder / (pluginName(effect.name + ' ' + preset.uniqueName) + ".xml"));
            EXPECT_EQ(panel.name(), name);
            EXPECT_EQ(panel.attribute("type"), "customVideo");
            EXPECT_EQ(panel.attribute("tag"), "frei0r." + pluginName(effect.name));
            hostkit::ParameterStore values(effect);
            values.apply(preset);
            Use use(plugin, kWidth, kHeight);
            apply(panel, plugin, use);
            EXPECT_TRUE(use.render(picture, kTime) == reference().render(values, picture, kWidth, at(kTime)));
        }
    }
    const auto files = std::distance(std::filesystem::directory_iterator(folder), {});
    EXPECT_EQ(static_cast<std::size_t>(files), presets);
}

}  // namespace
}  // namespace lumiset::frei0r
