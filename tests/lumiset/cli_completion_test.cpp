// What shells are offered for the end of a command line, and the manual page.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "apps/lumiset/shell/shell_line.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

constexpr const char* kBashBreaks = " \t\n\"'@><=;|&(:";

TEST(Completion, OffersWhatMayStandAtTheEnd) {
    struct Case {
        const char* line;
        const char* kind;
        std::vector<std::string> offered;  // among others, where the last is "..."
    };
    const std::vector<Case> cases{
        {"lumiset ren", "words", {"render"}},
        {"lumiset preset s", "words", {"save"}},
        {"lumiset compl", "words", {"completions"}},
        {"lumiset render a b --preset-", "words", {"--preset-file"}},
        {"lumiset render a b ", "words", {"--help", "..."}},
        {"lumiset render ", "files", {}},
        {"lumiset render a b --preset-file ", "files", {}},
        {"lumiset join out.mp4 one ", "files", {}},
        {"lumiset --module ", "files", {}},
        {"lumiset render a b --depth ", "words", {"8", "float"}},
        {"lumiset render a b --codec ", "words", {}},
        {"lumiset show old", "words", {"Old TV"}},
        {"lumiset render a b --effect=Outl", "words", {"--effect=Outline"}},
        {"lumiset render a b -e Outline -p In", "words", {"Inked Lines"}},
        {"lumiset render -e Outline a b -e 'Old TV' -p In", "words", {}},
        {"lumiset render a b -e \"Old TV\" -p Gra", "words", {"Grandpa's TV"}},
        {"lumiset render a b -e Nonsense -p ", "words", {}},
        {"lumiset gallery Outline a -p In", "words", {"Inked Lines"}},
        {"lumiset render a b -e Viewfinder -s C", "beginnings", {"Counter="}},
        {"lumiset render a b -e Viewfinder -k C", "beginnings", {"Counter@"}},
        {"lumiset render a b -e Viewfinder -k Counter@1.5=", "words", {"Counter@1.5=on", "Counter@1.5=off"}},
        {"lumiset render a b -e Viewfinder -s Hour=", "words", {}},
        {"lumiset render a b -e Selective\\ Tint -s \"blend mode=C",
         "words",
         {"blend mode=Color Dodge", "blend mode=Color Burn"}},
        {"lumiset render a b -e 'Selective Tint' -s Inner\\ Tint/B", "beginnings", {"Inner Tint/Blend="}},
        {"lumiset options 'Forced CPU' ", "words", {"yes", "no"}},
        {"lumiset options Forced", "words", {"Forced CPU"}},
    };
    for (const Case& each : cases) {
        const RunResult run = runLumiset({"complete", "zsh", each.line});
        ASSERT_EQ(run.status, 0) << each.line << run.err;
        std::istringstream lines(run.out);
        std::string line;
        std::getline(lines, line);
        EXPECT_EQ(line, each.kind) << each.line;
        std::vector<std::string> offered;
        while (std::getline(lines, line)) {
            offered.push_back(line.substr(0, line.find('\t')));
        }
        std::vector<std::string> expected = each.offered;
        if (!expected.empty() && expected.back() == "...") {
            ASSERT_GT(offered.size(), expected.size()) << each.line;
            expected.pop_back();
            offered.resize(expected.size());
        }
        EXPECT_EQ(offered, expected) << each.line;
    }
}

/// What stands in the line is replaced from the last break or from the open quote on, as readline does it.
TEST(Completion, QuotesForBashWhatReadlineReplaces) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Old\\ TV -p Gra", "Grandpa\\'s\\ TV"},
        {"\"Old TV\" -p \"Gra", "Grandpa's TV"},
        {"'Old TV' -p 'Gra", "Grandpa'\\''s TV"},
        {"\"Old TV\" -s \\#3", "\\#3="},
        {"Selective\\ Tint -s Blend\\ Mode=Color\\ D", "Color\\ Dodge"},
        {"Selective\\ Tint -s \"Blend Mode=Color D", "Blend Mode=Color Dodge"},
        {"Selective\\ Tint -s \"Blend Mode\"=Sc", "Screen"},
        {"Selective\\ Tint -s \"Blend Mode=\"Sc", "Blend\\ Mode=Screen"},
        {"Viewfinder -k Battery@2=of", "off"},
    };
    for (const auto& [typed, replacement] : cases) {
        const RunResult run = runLumiset({"complete", "bash", "lumiset render a b -e " + typed, kBashBreaks});
        EXPECT_EQ(run.out.substr(run.out.find('\n') + 1), replacement + '\n') << typed;
    }
}

/// A module may call its presets as it likes.
TEST(Completion, QuotesWhatTheShellWouldTakeForItsOwn) {
    const std::string name = "a\\b $c\"'";
    EXPECT_EQ(app::bashReplacement({}, name), "a\\\\b\\ \\$c\\\"\\'");
    EXPECT_EQ(app::bashReplacement({"", '"', 0}, name), "a\\\\b \\$c\\\"'");
    EXPECT_EQ(app::bashReplacement({"", '\'', 0}, name), "a\\b $c\"'\\''");
}

TEST(Completion, SaysNothingWithoutAModule) {
    const RunResult run = runLumiset({"complete", "bash", "lumiset --module /nowhere show O", kBashBreaks});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
}

/// A text line that starts like a request would vanish from the page.
TEST(ManualPage, HasEveryCommandAndEffectAndNoStrayRequests) {
    const RunResult page = runLumiset({"man"});
    ASSERT_EQ(page.status, 0) << page.err;
    const std::set<std::string> requests{".TH", ".SH", ".SS", ".PP", ".TP", ".RS", ".RE",
                                         ".nf", ".fi", ".B",  ".I",  ".BR", ".br"};
    std::istringstream lines(page.out);
    int depth = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string first = line.substr(0, line.find(' '));
        EXPECT_TRUE(line.empty() || line.front() != '.' || requests.contains(first)) << line;
        EXPECT_TRUE(line.empty() || line.front() != '\'') << line;
        depth += first == ".RS" ? 1 : first == ".RE" ? -1 : 0;
        EXPECT_TRUE(depth == 0 || depth == 1) << line;
    }
    EXPECT_EQ(depth, 0);
    for (const nlohmann::json& effect : nlohmann::json::parse(runLumiset({"list", "--json"}).out)) {
        EXPECT_NE(page.out.find("\n.B " + effect["name"].get<std::string>() + "\n"), std::string::npos) << effect;
    }
    const std::string help = runLumiset({"--help"}).out;
    std::istringstream commands(help.substr(help.find("\nCommands:\n") + 11));
    for (std::string line; std::getline(commands, line) && line.rfind("  ", 0) == 0;) {
        const std::string name = line.substr(2, line.find(' ', 2) - 2);
        EXPECT_NE(page.out.find(".SS \"lumiset " + name), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace lumiset::test
