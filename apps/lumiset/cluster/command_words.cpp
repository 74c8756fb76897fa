#include "apps/lumiset/cluster/command_words.h"

#include <map>

namespace lumiset::app {

std::vector<std::string> optionWords(const CLI::App& command, const std::set<std::string>& without) {
    std::vector<std::string> words;
    std::map<const CLI::Option*, std::size_t> used;
    for (const CLI::Option* option : command.parse_order()) {
        if (option->get_lnames().empty() || without.contains(option->get_lnames().front())) {
            continue;
        }
        // In one word, since a value may begin with a dash.
        const bool isFlag = option->get_items_expected_max() == 0;
        const std::string name = "--" + option->get_lnames().front();
        words.push_back(isFlag ? name : name + '=' + option->results()[used[option]++]);
    }
    return words;
}

}  // namespace lumiset::app
