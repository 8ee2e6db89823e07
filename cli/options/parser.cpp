// SPDX-License-Identifier: MIT
#include "cli/options/parser.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/failure.h"
#include "cli/text/escape.h"
#include "cli/text/suggest.h"

namespace cli {

Parser::Parser() : app_(std::make_unique<CLI::App>("", "vorn-openfiles")) {
    app_->set_help_flag("");
    app_->allow_extras();
}

Parser::~Parser() = default;

void Parser::AddFlag(const std::string& names, std::function<void()> take) {
    app_->add_flag_callback(names, std::move(take));
}

void Parser::AddFlag(const std::string& names, bool& flag) {
    AddFlag(names, [&flag] { flag = true; });
}

// Texts reach take as they were written; CLI11's own conversions know lists in brackets.
void Parser::AddValue(const std::string& name, const std::string& value, Take take) {
    // Mistakes are told by the long name.
    values_[name.substr(name.rfind(',') + 1)] = value;
    app_->add_option(name,
                     [take = std::move(take)](const CLI::results_t& texts) {
                         std::for_each(texts.begin(), texts.end(), take);
                         return true;
                     })
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::vector<std::string> Parser::Parse(std::vector<std::string> arguments) {
    const auto mark = std::find(arguments.begin(), arguments.end(), "--");
    const std::vector<std::string> behindMark(mark == arguments.end() ? mark : mark + 1,
                                              arguments.end());
    arguments.erase(mark, arguments.end());
    ParseOptions(std::move(arguments));
    std::vector<std::string> operands = app_->remaining();
    for (const std::string& word : operands) {
        if (word.size() > 1 && word[0] == '-') {
            const std::string name = word.substr(0, word.find('='));
            throw UsageError(fmt::format("there is no option '{}'{}", Escaped(name, true),
                                         DidYouMean(name, Names())));
        }
    }
    // cppcheck-suppress invalidContainer ; behindMark holds copies
    operands.insert(operands.end(), behindMark.begin(), behindMark.end());
    return operands;
}

void Parser::ParseOptions(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());
    try {
        app_->parse(std::move(arguments));
    } catch (const CLI::ArgumentMismatch& error) {
        // "--where: 1 required TEXT missing"
        const std::string text = error.what();
        const auto value = values_.find(text.substr(0, text.find(':')));
        throw UsageError(value == values_.end()
                             ? Escaped(text, true)
                             : fmt::format("{} needs {} behind it", value->first, value->second));
    } catch (const CLI::ParseError& error) {
        throw UsageError(Escaped(error.what(), true));
    }
}

std::vector<std::string> Parser::Names() const {
    std::vector<std::string> names;
    for (const CLI::Option* option : app_->get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
        for (const std::string& name : option->get_snames()) {
            names.push_back("-" + name);
        }
    }
    return names;
}

}  // namespace cli
